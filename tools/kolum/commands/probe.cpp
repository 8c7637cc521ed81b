#include <memory>

#include "commands/probe.h"
#include "files/diagnosis.h"
#include "files/media_files.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  MediaFileArguments files;
  ProbeOptions probe;
};

struct Prober {
  int kind;
  unsigned bit;
  const char* word;  // to force it on the command line
  Description (*describe)(const MediaPath&, const ProbeOptions&);
};

constexpr Prober kProbers[] = {
    {MEDIA_KIND_VIDEO, MEDIA_KIND_BIT_VIDEO, "video", describeVideo},
    {MEDIA_KIND_MUSIC, MEDIA_KIND_BIT_MUSIC, "audio", describeAudio},
    {MEDIA_KIND_PHOTO, MEDIA_KIND_BIT_PHOTO, "photo", describePhoto},
};

Words proberWords() {
  Words words;
  for (const Prober& prober : kProbers) words.emplace_back(prober.word);
  return words;
}

// The prober forced by the first operand; a single operand is always a file.
const Prober* forcedProber(FileArguments& files) {
  const bool moreNames = files.operands.size() > 1 || !files.listFile.empty();
  if (!moreNames || files.operands.empty()) return nullptr;
  for (const Prober& prober : kProbers) {
    if (files.operands.front() != prober.word) continue;
    files.operands.erase(files.operands.begin());
    return &prober;
  }
  return nullptr;
}

const Prober* proberOf(int kind) {
  for (const Prober& prober : kProbers) {
    if (prober.kind == kind) return &prober;
  }
  return nullptr;
}

// For a file whose kind has no prober.
Failure kindFailure(int kind, bool byContent, const MediaPath& path) {
  if (auto failure = readingFailure(path.full())) return *failure;
  if (kind == MEDIA_KIND_PLAYLIST) return {Cause::kPlaylist, "a playlist has nothing to probe"};
  if (byContent) return diagnose(path, Wanted::kStreams);
  return {Cause::kUnknownName,
          "not a media file by its name; --all decides by its content, and \"kolum probe "
          "video|audio|photo FILE\" forces a kind"};
}

void run(Context& context, Options& options) {
  const Prober* forced = forcedProber(options.files.names);
  const unsigned kinds = forced != nullptr
                             ? forced->bit
                             : MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC | MEDIA_KIND_BIT_PHOTO;
  forEachMediaFile(context, options.files, kinds, [&](const MediaFile& file) {
    const int kind = forced != nullptr ? forced->kind : file.kind;
    const Description description =
        describe(kind, options.files.byContent, file.path, options.probe);
    if (const auto* failure = std::get_if<Failure>(&description))
      return context.fail(file.path.given, *failure);
    context.printer.block(std::get<Result>(description));
  });
}

}  // namespace

Description describe(int kind, bool byContent, const MediaPath& path, const ProbeOptions& options) {
  const Prober* prober = proberOf(kind);
  if (prober == nullptr) return kindFailure(kind, byContent, path);
  return prober->describe(path, options);
}

Action defineProbe(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addMediaFileArguments(syntax, options->files, proberWords);
  addAudioStreamOption(syntax, options->probe.audioStream);
  syntax.help(
      "Describes media files. A folder stands for the media in it; one with a DVD\n"
      "(VIDEO_TS.IFO) or a Blu-ray disc (index.bdmv) is one video. The kind of a file follows "
      "from\n"
      "its name; \"video\", \"audio\" or \"photo\" before the names forces it for all of "
      "them.\n"
      "--all decides by each file's content instead.\n"
      "\nExamples:\n"
      "  kolum probe Movies/ holiday.mp4\n"
      "  kolum probe video recording.dat\n"
      "  kolum probe --all --exclude Trailers --exclude '*.tmp' /share\n"
      "  find /share -name '*.mkv' -print0 | kolum probe --json -");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
