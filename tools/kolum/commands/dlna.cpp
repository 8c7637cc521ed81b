#include <kolum/dlna.h>

#include <memory>
#include <optional>
#include <utility>

#include "base/trace.h"
#include "commands/probe.h"
#include "describe/diagnosis.h"
#include "files/descriptions.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

struct Options {
  MediaFileArguments files;
  int audioStream = 0;
  bool explain = false;
};

Result testObject(const DlnaTest& test) {
  Result object;
  object.data("wanted", test.wanted);
  object.data("actual", test.actual);
  object.data("held", test.held);
  return object;
}

// A candidate's block: one test per line, with the file's value.
Result candidateResult(const DlnaCandidate& candidate) {
  Result result = Result::titled(candidate.name + (candidate.taken ? ": fits" : ": does not fit"));
  result.data("name", candidate.name);
  result.data("taken", candidate.taken);
  std::vector<Result> tests;
  for (const DlnaTest& test : candidate.tests) {
    tests.push_back(testObject(test));
    result.show((test.held ? "ok    " : "FAIL  ") + test.wanted, "has " + test.actual);
  }
  result.data("tests", tests);
  return result;
}

void addNext(Result& result, const DlnaCandidate& candidate) {
  std::vector<Result> missing;
  std::string label = "For " + candidate.name;
  for (const DlnaTest& test : candidate.tests) {
    if (test.held) continue;
    missing.push_back(testObject(test));
    result.show(std::exchange(label, ""), "needs " + test.wanted + ", has " + test.actual);
  }
  Result next;
  next.data("name", candidate.name);
  next.data("missing", missing);
  result.data("next", next);
}

void addExplanation(Result& result, const DlnaNaming& naming) {
  Result details;
  for (const DlnaDetail& detail : naming.details) {
    details.data(detail.label, detail.value);
    result.show(capitalized(detail.label), detail.value);
  }
  result.data("details", details);
  result.texts("remarks", "Remark", naming.remarks);
  if (naming.next >= 0) addNext(result, naming.candidates[static_cast<std::size_t>(naming.next)]);
  std::vector<Result> candidates;
  for (const DlnaCandidate& candidate : naming.candidates) {
    candidates.push_back(candidateResult(candidate));
  }
  result.list("candidates", std::move(candidates));
}

// Only videos' names can be explained.
std::optional<DlnaNaming> nameSong(const describe::MediaPath& path) {
  const describe::Document document =
      documentOf(path, {.kind = MEDIA_KIND_MUSIC, .wantsDetails = false});
  write(document.trace);
  if (!document.song) return std::nullopt;
  DlnaNaming naming;
  naming.profile = document.song->dlnaProfile;
  if (document.type != nullptr) naming.mimeType = document.type->mimeType;
  naming.remarks = {
      "songs are named by their codec, container and numbers; kolum probe shows them"};
  return naming;
}

std::optional<DlnaNaming> nameVideo(const describe::MediaPath& path, int audioStream) {
  DlnaNaming naming;
  const bool isNamed =
      ExplainDlnaProfile(path.folder.c_str(), path.name.c_str(), audioStream, &naming) == 0;
  return isNamed ? std::optional(naming) : std::nullopt;
}

Description namingOf(const MediaFile& file, const Options& options) {
  const describe::MediaPath& path = file.path;
  const bool isSong = file.kind == MEDIA_KIND_MUSIC;
  const auto found = isSong ? nameSong(path) : nameVideo(path, options.audioStream);
  if (!found)
    return describe::diagnose(path, isSong ? describe::Wanted::kSong : describe::Wanted::kVideo);
  const DlnaNaming& naming = *found;
  Result result = Result::ofFile(path.given);
  if (!naming.profile.empty()) result.data("dlnaProfile", naming.profile);
  result.show("DLNA profile", naming.profile.empty() ? "(none)" : naming.profile);
  if (!naming.mimeType.empty()) result.data("mimeType", naming.mimeType);
  result.show("MIME type", naming.mimeType.empty() ? "(none)" : naming.mimeType);
  if (options.explain) addExplanation(result, naming);
  return result;
}

void run(Context& context, const Options& options) {
  describeMediaFiles(context, options.files, MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC,
                     [&](const MediaFile& file) { return namingOf(file, options); });
}

}  // namespace

Action defineDlna(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addMediaFileArguments(syntax, options->files);
  syntax.flag("--explain", options->explain, "Explains how the profile was found, or why none was");
  addAudioStreamOption(syntax, options->audioStream);
  syntax.help(
      "Names the DLNA media format profile and MIME type of videos and songs. With --explain it "
      "also\n"
      "lists the properties of a video that counted, every name considered, each test with the\n"
      "file's value, and what would have to change for the next better name.\n"
      "\nExample:\n  kolum dlna --explain movie.mp4");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
