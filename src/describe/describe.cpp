#include "describe/describe.h"

#include <kolum/identifiers.h>
#include <sys/stat.h>

#include <utility>

#include "describe/content.h"
#include "describe/diagnosis.h"
#include "describe/disc.h"
#include "describe/file_kind.h"
#include "describe/place.h"
#include "isolation/isolation.h"
#include "media/pixel_formats.h"
#include "probe/video.h"
#include "read/disc/disc.h"

namespace kolum::describe {

namespace {

FileStatus statusOf(const struct stat& status) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return {.size = status.st_size,
          .modifiedNs = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

// FFmpeg reads HEIF since its release 7; the boxes say as much of the picture, but for its pixels.
std::optional<probe::PhotoFacts> pictureOfBoxes(const read::Findings& found) {
  const auto size = found.photoTags ? found.photoTags->storedSize : std::nullopt;
  if (!size || !isHeif(found.content.type)) return std::nullopt;
  return probe::PhotoFacts{.width = size->width,
                           .height = size->height,
                           .pixelFormat = media::kUnknownPixelFormat,
                           .pixelFormatName = {}};
}

Failure kindFailure(int kind, bool byContent, const MediaPath& path) {
  if (auto failure = readingFailure(path.full())) return *failure;
  if (kind == MEDIA_KIND_PLAYLIST) return {Cause::kPlaylist, "a playlist has nothing to probe"};
  if (byContent) return diagnose(path, Wanted::kStreams);
  return {Cause::kUnknownName, "not a media file by its name",
          "--all decides by its content, and \"kolum probe video|audio|photo FILE\" forces a kind"};
}

// What the details of a kind need beyond its probe. Those of photos need more than can be asked for
// while the kind is open: the container is not read for them.
read::Query alsoOf(int kind) {
  switch (kind) {
    case MEDIA_KIND_VIDEO:
      return {.details = true};
    case MEDIA_KIND_MUSIC:
      return {.details = true, .songTags = true};
    default:
      return {};
  }
}

// One description, step by step.
class Description {
 public:
  Description(const MediaPath& path, const Options& options) : path_(path), options_(options) {
    document_.path = path;
    document_.hasDetails = options.wantsDetails;
  }

  Document run() && {
    open();
    chooseKind();
    switch (document_.kind) {
      case MEDIA_KIND_VIDEO:
        video();
        break;
      case MEDIA_KIND_MUSIC:
        song();
        break;
      case MEDIA_KIND_PHOTO:
        photo();
        break;
      default:
        document_.failure = kindFailure(document_.kind, options_.byContent, path_);
    }
    if (options_.places != nullptr && !document_.failure) addPlace(document_, *options_.places);
    return std::move(document_);
  }

 private:
  void open();
  void chooseKind();
  void video();
  bool image();
  void titles(const std::string& mainFile);
  void song();
  void addHeader(probe::SongResult& result, const probe::Reading& reading) const;
  void photo();
  void keep(read::Findings found);
  void fail(const std::optional<read::Failure>& failure, read::Findings found, Wanted wanted);
  const media::Source* source() const {
    if (options_.opened != nullptr) return options_.opened;
    return opened_ ? &*opened_ : nullptr;
  }
  // With what every kind of file is asked for.
  read::Query withCommon(read::Query also) const;
  // The file for a probe, and what is wanted of it besides.
  probe::Reading reading(read::Query also) const;

  const MediaPath& path_;
  const Options& options_;
  Document document_;
  std::optional<media::Source> opened_;
  read::Query asked_;
  std::optional<read::Findings> byContent_;  // answers to what was asked
};

void Description::open() {
  document_.isDisc = disc::kindOf(path_.name) != disc::Kind::kNone;
  if (source() == nullptr && !document_.isDisc)
    if (auto opened = media::Source::open(path_.full())) opened_.emplace(std::move(*opened));
  struct stat status = {};
  const bool isKnown = source() != nullptr ? fstat(source()->descriptor(), &status) == 0
                                           : stat(path_.full().c_str(), &status) == 0;
  if (isKnown) document_.status = statusOf(status);
}

void Description::chooseKind() {
  const FileKind byName = fileKind(path_.name);
  document_.kind = options_.kind.value_or(byName.kind);
  if (!options_.kind && options_.byContent && source() != nullptr) {
    asked_ = read::both(kEverything, withCommon(alsoOf(document_.kind)));
    byContent_ = isolation::look(*source(), asked_);
    const int kind = kindOf(contentOf(*byContent_));
    if (kind != MEDIA_KIND_NONE) document_.kind = kind;
  }
  document_.type =
      document_.kind == byName.kind ? byName.type : typeOfKind(path_.name, document_.kind);
}

read::Query Description::withCommon(read::Query also) const {
  if (!options_.wantsDetails) also = {};
  also.content = options_.wantsDetails;
  also.fingerprint = options_.wantsFingerprint;
  return also;
}

probe::Reading Description::reading(read::Query also) const {
  also = withCommon(also);
  const bool isKnown = byContent_ && asked_ == read::both(kEverything, also);
  return {.source = source(), .also = also, .found = isKnown ? &*byContent_ : nullptr};
}

void Description::keep(read::Findings found) {
  document_.found = std::move(found);
}

// What the file is remains known.
void Description::fail(const std::optional<read::Failure>& failure, read::Findings found,
                       Wanted wanted) {
  document_.found.content = std::move(found.content);
  document_.found.fingerprint = std::move(found.fingerprint);
  document_.failure = failure ? readerFailure(*failure) : diagnose(path_, wanted);
}

// Reads an image of a disc without mounting it. False if that is impossible.
bool Description::image() {
  if (source() == nullptr)
    if (auto opened = media::Source::open(path_.full())) opened_.emplace(std::move(*opened));
  if (source() == nullptr) return false;
  read::Findings found =
      isolation::look(*source(), {.fingerprint = options_.wantsFingerprint, .discImage = true});
  if (found.failure) {
    const auto failure = found.failure;
    fail(failure, std::move(found), Wanted::kVideo);
    return true;
  }
  if (!found.disc || found.disc->kind == media::DiscKind::kNone) return false;
  const bool isDvd = found.disc->kind == media::DiscKind::kDvd;
  document_.video.emplace().containerFormat = isDvd ? FORMAT_DVDISO : FORMAT_BDISO;
  if (options_.wantsDetails) document_.disc = media::discOf(std::move(*found.disc));
  document_.found.fingerprint = std::move(found.fingerprint);
  return true;
}

// The titles of a disc's folder.
void Description::titles(const std::string& mainFile) {
  const disc::Kind kind = disc::kindOf(path_.name);
  if (kind == disc::Kind::kDvdFolder) document_.disc = dvdOfFolder(path_.folder, mainFile);
  if (kind == disc::Kind::kBlurayFolder) document_.disc = blurayOfFolder(path_.folder, mainFile);
}

void Description::video() {
  const bool isImage = disc::kindOf(path_.name) == disc::Kind::kImage;
  if (isImage && image()) return;
  if (isImage && !options_.mountsImages) {
    document_.failure =
        readingFailure(path_.full())
            .value_or(Failure{Cause::kDiscImage, "a disc image that only mounting can open"});
    return;
  }
  probe::ProbeResult result = probe::probeVideo({.folder = path_.folder,
                                                 .fileName = path_.name,
                                                 .audioStreamIndex = options_.audioStream,
                                                 .wantsAspect = true,
                                                 .reading = reading(alsoOf(MEDIA_KIND_VIDEO))},
                                                probe::kDocumentPolicy);
  document_.trace = std::move(result.trace);
  if (!result.succeeded || result.failure)
    return fail(result.failure, std::move(result.found), Wanted::kVideo);
  document_.video = std::move(result.facts);
  keep(std::move(result.found));
  if (options_.wantsDetails) titles(result.mainFile);
}

void Description::song() {
  const probe::Reading wanted = reading(alsoOf(MEDIA_KIND_MUSIC));
  // The tool would read the file of that name, which may be another than the caller's open one.
  const char* tools = options_.opened == nullptr ? options_.toolFolder : nullptr;
  probe::SongResult result = probe::probeSong(path_.full(), path_.name, tools, wanted);
  if (isDsdName(path_.name)) addHeader(result, wanted);
  document_.trace = std::move(result.trace);
  document_.song = songOf(result);
  if (!document_.song || result.failure)
    return fail(result.failure, std::move(result.found), Wanted::kSong);
  keep(std::move(result.found));
}

// The probe of DSD songs leaves everything to their tool, which may be missing, and knows neither
// tags nor streams.
void Description::addHeader(probe::SongResult& result, const probe::Reading& reading) const {
  auto found = probe::findingsOf(path_.full(), {.container = ffmpeg::Depth::kStreams}, reading);
  if (!found) return;
  result.failure = found->failure;
  result.found = std::move(*found);
}

void Description::photo() {
  probe::PhotoResult result = probe::probePhoto(path_.full(), reading({.photoTags = true}));
  const bool isKnown = result.picture && !result.picture->pixelFormatName.empty();
  if (!isKnown) result.picture = pictureOfBoxes(result.found);
  if (!result.picture || result.failure)
    return fail(result.failure, std::move(result.found), Wanted::kPicture);
  document_.photo = std::move(result.picture);
  keep(std::move(result.found));
}

}  // namespace

Document describe(const MediaPath& path, const Options& options) {
  return Description(path, options).run();
}

int kindByContent(const MediaPath& path) {
  const int kind = kindOf(contentOf(path.full()));
  return kind != MEDIA_KIND_NONE ? kind : fileKind(path.name).kind;
}

}  // namespace kolum::describe
