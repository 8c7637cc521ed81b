#include "report/television.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <string_view>

#include "base/text.h"
#include "dlna/naming.h"
#include "media/container.h"
#include "media/identifiers.h"
#include "report/values.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kDemuxers[] = {
    media::kDemuxerMp4,    media::kDemuxerAsf,    media::kDemuxerAvi, media::kDemuxerFlv,
    media::kDemuxerMpegPs, media::kDemuxerMpegTs, media::kDemuxerRm,  media::kDemuxerMatroska};
// FFmpeg's largest number of a profile that rules know is smaller.
constexpr int kProfiles = 4096;
constexpr std::int64_t kFrameRateTerm = 1000;

int number(const Json& document, const char* pointer, int unknown) {
  const auto value = integerAt(document, pointer).value_or(unknown);
  return value >= INT_MIN && value <= INT_MAX ? static_cast<int>(value) : unknown;
}

std::string_view demuxerOf(int format) {
  const auto* const found =
      std::find_if(std::begin(kDemuxers), std::end(kDemuxers), [&](std::string_view demuxer) {
        return static_cast<int>(media::containerType(demuxer).videoFormat) == format;
      });
  return found != std::end(kDemuxers) ? *found : "";
}

// The document has the library's number of a profile, the rules take FFmpeg's.
int ffmpegProfile(int codec, const Json& document) {
  const auto wanted = integerAt(document, "/videoProfile/id");
  if (!wanted) return media::kUnknownLevel;
  // From above: small numbers mean something for every codec, and those of its own come first.
  for (int profile = kProfiles; profile >= 0; --profile)
    if (media::profileOfFfmpeg(codec, profile) == *wanted) return profile;
  return media::kUnknownLevel;
}

media::Rational frameRateOf(const Json& document) {
  const double rate = numberAt(document, "/frameRate").value_or(0);
  if (!(rate > 0 && rate < 1e5)) return {};
  return {static_cast<int>(std::lround(rate * kFrameRateTerm)), static_cast<int>(kFrameRateTerm)};
}

std::string nameAt(const Json& document, const char* pointer, std::string_view prefix) {
  return without(prefix, textAt(document, pointer));
}

NamelessReason remark(const std::string& text) {
  return {"", {}, printable(text)};
}

NamelessReason song(const Json& document) {
  const std::string codec = nameAt(document, "/audioCodec/name", "CODEC_ID_");
  const std::string format = nameAt(document, "/containerFormat/name", "FORMAT_");
  const std::string container = format.empty() ? "this container" : format;
  return remark(codec.empty() ? "songs in " + container + " have no DLNA names"
                              : codec + " in " + container + ", as it is here, has no DLNA name");
}

// What the rules say; the packets of transport streams are not in documents, and their size only
// matters for names that files would have.
NamelessReason byRules(const Json& document, const std::string& path, int codec,
                       std::string_view demuxer) {
  const dlna::DlnaFacts facts = {
      .codec = codec,
      .demuxer = demuxer,
      .width = number(document, "/width", 0),
      .height = number(document, "/height", 0),
      .streamBitRate = integerAt(document, "/videoBitRate").value_or(0),
      .containerBitRate = integerAt(document, "/bitRate").value_or(0),
      .profile = ffmpegProfile(codec, document),
      .level = number(document, "/videoLevel", media::kUnknownLevel),
      .audioClass = static_cast<unsigned>(number(document, "/audioClass/id", 0)),
      .realFrameRate = frameRateOf(document),
      .path = path,
  };
  dlna::DlnaExplanation explanation;
  const dlna::DlnaName name = nameDlnaProfile(
      facts,
      [] {
        return dlna::TransportPackets{188, false};
      },
      &explanation);
  if (!name.profile.empty()) return remark("\"kolum dlna --explain\" says why");
  const int next = dlna::nextBetter(explanation.candidates);
  if (next < 0) {
    const std::string why = joined(explanation.remarks);
    return remark(nameAt(document, "/videoCodec/name", "CODEC_ID_") + ": " +
                  (why.empty() ? "\"kolum dlna --explain\" says why" : why));
  }
  const DlnaCandidate& candidate = explanation.candidates[static_cast<std::size_t>(next)];
  NamelessReason reason = {candidate.name, {}, ""};
  for (const DlnaTest& test : candidate.tests)
    if (!test.held) reason.missing.push_back(test.wanted);
  return reason;
}

NamelessReason video(const Json& document, const std::string& path) {
  const auto codec = integerAt(document, "/videoCodec/id");
  if (!codec || *codec < 0 || *codec > INT_MAX)
    return remark("the codec of the pictures is not known");
  const auto format = integerAt(document, "/containerFormat/id").value_or(0);
  const std::string_view demuxer =
      demuxerOf(static_cast<int>(static_cast<std::uint64_t>(format) & media::kFormatMask));
  const bool isMov = demuxer == media::kDemuxerMp4 && endsWithIgnoringCase(path, ".mov");
  if (demuxer.empty() || isMov || media::containerType(demuxer).mimeTypeDecides) {
    const std::string container = nameAt(document, "/containerFormat/name", "FORMAT_");
    return remark("files in " +
                  (isMov               ? "QuickTime (.mov)"
                   : container.empty() ? "this container"
                                       : container) +
                  " have no DLNA names, whatever is in them");
  }
  return byRules(document, path, static_cast<int>(*codec), demuxer);
}

}  // namespace

std::optional<NamelessReason> namelessReason(const Json& document, const std::string& path) {
  const std::string kind = textAt(document, "/kind/name");
  if (!textAt(document, "/dlnaProfile").empty()) return std::nullopt;
  if (kind == "video") return video(document, path);
  if (kind == "music") return song(document);
  return std::nullopt;
}

}  // namespace kolum::tool
