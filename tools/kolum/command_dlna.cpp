#include <kolum/dlna.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "arguments.h"
#include "commands.h"
#include "context.h"
#include "media_files.h"

namespace kolum::tool {

namespace {

struct Options {
  FileArguments files;
  int audioStream = 0;
  bool explain = false;
};

nlohmann::ordered_json testJson(const DlnaTest& test) {
  return {{"wanted", test.wanted}, {"actual", test.actual}, {"held", test.held}};
}

// A candidate's block: its tests, one a line, with what the file has.
Result candidateResult(const DlnaCandidate& candidate) {
  Result result = Result::titled(candidate.name + (candidate.taken ? ": fits" : ": does not fit"));
  result.data("name", candidate.name);
  result.data("taken", candidate.taken);
  nlohmann::ordered_json tests = nlohmann::ordered_json::array();
  for (const DlnaTest& test : candidate.tests) {
    tests.push_back(testJson(test));
    result.show((test.held ? "ok    " : "FAIL  ") + test.wanted, "has " + test.actual);
  }
  result.data("tests", std::move(tests));
  return result;
}

std::ptrdiff_t failures(const DlnaCandidate& candidate) {
  return std::count_if(candidate.tests.begin(), candidate.tests.end(),
                       [](const DlnaTest& test) { return !test.held; });
}

// The refused name that the least would have to change for; of equals the one tried first, which is
// the better one. Null when none was refused.
const DlnaCandidate* nearest(const DlnaNaming& naming) {
  const DlnaCandidate* best = nullptr;
  for (const DlnaCandidate& candidate : naming.candidates) {
    if (candidate.taken) continue;
    if (best == nullptr || failures(candidate) < failures(*best)) best = &candidate;
  }
  return best;
}

void addNearest(Result& result, const DlnaCandidate& candidate) {
  nlohmann::ordered_json missing = nlohmann::ordered_json::array();
  std::string label = "For " + candidate.name;
  for (const DlnaTest& test : candidate.tests) {
    if (test.held) continue;
    missing.push_back(testJson(test));
    result.show(std::exchange(label, ""), "needs " + test.wanted + ", has " + test.actual);
  }
  result.data("nearest", {{"name", candidate.name}, {"missing", std::move(missing)}});
}

// Why no rule was put to work; empty when some were.
std::string untouchedReason(const DlnaNaming& naming) {
  if (!naming.wasAsked && naming.mimeType.empty()) return "disc images get no profile";
  if (!naming.wasAsked) return "files of this container get a MIME type only";
  if (naming.candidates.empty() && naming.profile.empty()) {
    return "no profile is known for this codec in this container";
  }
  return "";
}

void addExplanation(Result& result, const DlnaNaming& naming) {
  const std::string reason = untouchedReason(naming);
  result.text("reason", "Reason", reason);
  if (const DlnaCandidate* other = nearest(naming)) addNearest(result, *other);
  std::vector<Result> candidates;
  for (const DlnaCandidate& candidate : naming.candidates) {
    candidates.push_back(candidateResult(candidate));
  }
  result.list("candidates", std::move(candidates));
}

void printNaming(Context& context, const MediaPath& path, const Options& options) {
  DlnaNaming naming;
  if (ExplainDlnaProfile(path.folder.c_str(), path.name.c_str(), options.audioStream, &naming) !=
      0) {
    return context.fail(path.full(), refusalReason(path, "no video that can be probed"));
  }
  Result result = Result::ofFile(path.full());
  if (!naming.profile.empty()) result.data("dlnaProfile", naming.profile);
  result.show("DLNA profile", naming.profile.empty() ? "(none)" : naming.profile);
  if (!naming.mimeType.empty()) result.data("mimeType", naming.mimeType);
  result.show("MIME type", naming.mimeType.empty() ? "(none)" : naming.mimeType);
  if (options.explain) addExplanation(result, naming);
  context.printer.block(result);
}

void run(Context& context, const Options& options) {
  const std::vector<std::string> names = fileNames(context, options.files);
  forEachMediaFile(context, names, kVideoBit,
                   [&](const MediaFile& file) { printNaming(context, file.path, options); });
}

}  // namespace

Action defineDlna(CLI::App& command) {
  auto options = std::make_shared<Options>();
  addFileArguments(command, options->files);
  command.add_flag("--explain", options->explain,
                   "Tells how the profile was found, or why none was");
  command
      .add_option("--audio-stream", options->audioStream, "The audio stream that counts, from 0")
      ->type_name("N");
  command.footer(
      "Names the DLNA media format profile and MIME type of videos. With --explain it also tells\n"
      "every name that was considered, each test with what the file has, and what would have to\n"
      "change for the nearest other name.\n"
      "\nExample:\n  kolum dlna --explain movie.mp4");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
