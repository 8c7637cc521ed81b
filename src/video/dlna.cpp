#include "video/dlna.h"

#include <kolum/identifiers.h>

#include <array>

#include "support/text.h"
#include "video/dlna_rules.h"

namespace kolum::video {

namespace {

struct AudioClassName {
  unsigned audioClass;
  const char* name;
};

// What people call the classes.
constexpr auto kAudioClassNames = std::to_array<AudioClassName>({
    {kAudioClassNone, "none or other"},
    {kAudioClassMp3, "MP3"},
    {kAudioClassAc3, "AC-3 or DTS"},
    {kAudioClassWmaBase, "WMA up to 193 kbit/s"},
    {kAudioClassWmaFull, "WMA up to 385 kbit/s"},
    {kAudioClassWmaPro, "WMA Pro"},
    {kAudioClassMp2, "MP2"},
    {kAudioClassPcm, "PCM"},
    {kAudioClassAacStereo, "AAC-LC stereo"},
    {kAudioClassAacMultichannel, "AAC-LC multichannel"},
    {kAudioClassAmr, "AMR"},
    {kAudioClassAacOther, "other AAC"},
});

std::string audioName(unsigned audioClass) {
  for (const AudioClassName& row : kAudioClassNames)
    if (row.audioClass == audioClass) return row.name;
  return std::to_string(audioClass);
}

// Joins what may stand in a test's text: "a, b or c".
template <typename List, typename ToText>
std::string alternatives(const List& list, ToText toText) {
  std::string text;
  std::size_t left = list.size();
  for (const auto& item : list) {
    text += toText(item);
    --left;
    if (left > 1) text += ", ";
    if (left == 1) text += " or ";
  }
  return text;
}

using Rules = void (*)(Naming&);

struct CodecRules {
  int codec;
  Rules rules;
};

void nameMsMpeg4(Naming& naming) {
  naming.name.mimeType = "video/x-msvideo";
}

// Every other codec has no profile.
constexpr auto kCodecRules = std::to_array<CodecRules>({
    {CODEC_ID_MSMPEG4V3, nameMsMpeg4},
    {CODEC_ID_MPEG2VIDEO, nameMpeg2},
    {CODEC_ID_H264, nameH264},
    {CODEC_ID_MPEG4, nameMpeg4Part2},
    {CODEC_ID_MPEG1VIDEO, nameMpeg1},
    {CODEC_ID_VC1, nameWindowsMedia},
    {CODEC_ID_WMV3, nameWindowsMedia},
});

constexpr auto kWmvHighTestStreams = std::to_array<std::string_view>({
    "O-WVH_F-02_CBR_17M_193_48_2_16",
    "O-WVH_F-02_VBR_17M_193_48_2_16",
    "O-WVH_F-04_CBR_15M_193_44_2_16",
    "O-WVH_F-04_VBR_15M_193_44_2_16",
});

struct MimeRow {
  std::string_view demuxer;
  bool isPrefix;
  std::string_view mimeType;
};

constexpr auto kFallbackMimeTypes = std::to_array<MimeRow>({
    {av::kDemuxerAvi, false, "video/x-msvideo"},
    {"mpeg", true, "video/mpeg"},
    {av::kDemuxerAsf, false, "video/x-ms-wmv"},
    {av::kDemuxerMp4, false, "video/mp4"},
    {"matroska", true, "video/x-matroska"},
    {av::kDemuxerFlv, false, "video/x-flv"},
});

}  // namespace

Tests& Tests::limited(bool held, const char* fact, const char* relation, std::int64_t wanted,
                      std::int64_t actual) {
  held_ = held_ && held;
  if (explanation_ != nullptr)
    explanation_->back().tests.push_back(
        {held, fact + std::string(relation) + std::to_string(wanted), std::to_string(actual)});
  return *this;
}

Tests& Tests::oneOf(const char* fact, std::int64_t actual,
                    std::initializer_list<std::int64_t> allowed) {
  const bool held = std::find(allowed.begin(), allowed.end(), actual) != allowed.end();
  held_ = held_ && held;
  if (explanation_ != nullptr) {
    const auto toText = [](std::int64_t number) { return std::to_string(number); };
    explanation_->back().tests.push_back(
        {held, fact + std::string(" ") + alternatives(allowed, toText), toText(actual)});
  }
  return *this;
}

Tests& Tests::audio(unsigned actual, std::initializer_list<unsigned> allowed) {
  const bool held = std::find(allowed.begin(), allowed.end(), actual) != allowed.end();
  held_ = held_ && held;
  if (explanation_ != nullptr)
    explanation_->back().tests.push_back(
        {held, "audio " + alternatives(allowed, audioName), audioName(actual)});
  return *this;
}

Tests& Tests::that(bool held, const char* wanted, std::string_view actual) {
  held_ = held_ && held;
  if (explanation_ != nullptr)
    explanation_->back().tests.push_back({held, wanted, std::string(actual)});
  return *this;
}

bool Tests::hold() {
  if (explanation_ != nullptr) explanation_->back().taken = held_;
  return held_;
}

DlnaName nameDlnaProfile(const DlnaFacts& facts, const PacketReader& readPackets,
                         DlnaExplanation* explanation) {
  Naming naming = {.facts = facts, .readPackets = readPackets, .explanation = explanation};
  for (const CodecRules& row : kCodecRules)
    if (row.codec == facts.codec) row.rules(naming);
  return naming.name;
}

bool isWmvHighTestStream(std::string_view fileName) {
  return std::any_of(
      kWmvHighTestStreams.begin(), kWmvHighTestStreams.end(),
      [&](std::string_view name) { return fileName.find(name) != std::string_view::npos; });
}

std::string_view fallbackMimeType(std::string_view demuxer, std::string_view path) {
  if (demuxer == av::kDemuxerMp4 && endsWithIgnoringCase(path, ".mov")) return "video/quicktime";
  for (const MimeRow& row : kFallbackMimeTypes)
    if (row.isPrefix ? demuxer.starts_with(row.demuxer) : demuxer == row.demuxer)
      return row.mimeType;
  return "";
}

}  // namespace kolum::video
