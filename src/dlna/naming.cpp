#include "dlna/naming.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "dlna/rules.h"
#include "media/container.h"
#include "media/identifiers.h"

namespace kolum::dlna {

namespace {

using Rules = void (*)(Naming&);

struct CodecRules {
  int codec;
  Rules rules;
};

void nameMsMpeg4(Naming& naming) {
  naming.name.mimeType = "video/x-msvideo";
  naming.remark("MPEG-4 of this kind gets a MIME type only");
}

// All other codecs have no profile.
constexpr auto kCodecRules = std::to_array<CodecRules>({
    {CODEC_ID_MSMPEG4V3, nameMsMpeg4},
    {CODEC_ID_MPEG2VIDEO, nameMpeg2},
    {CODEC_ID_H264, nameH264},
    {CODEC_ID_MPEG4, nameMpeg4Part2},
    {CODEC_ID_MPEG1VIDEO, nameMpeg1},
    {CODEC_ID_VC1, nameWindowsMedia},
    {CODEC_ID_WMV3, nameWindowsMedia},
});

void nameOther(Naming& naming) {
  naming.remark("no profile is known for this video codec");
}

Rules rulesFor(int codec) {
  const auto row = std::find_if(kCodecRules.begin(), kCodecRules.end(),
                                [codec](const CodecRules& r) { return r.codec == codec; });
  return row != kCodecRules.end() ? row->rules : nameOther;
}

constexpr auto kWmvHighTestStreams = std::to_array<std::string_view>({
    "O-WVH_F-02_CBR_17M_193_48_2_16",
    "O-WVH_F-02_VBR_17M_193_48_2_16",
    "O-WVH_F-04_CBR_15M_193_44_2_16",
    "O-WVH_F-04_VBR_15M_193_44_2_16",
});

// --- What an explanation says about the file

std::string containerName(std::string_view demuxer) {
  const std::string_view label = media::containerType(demuxer).label;
  return std::string(label.empty() ? demuxer : label);
}

std::string codecName(int codec) {
  constexpr std::string_view kPrefix = "CODEC_ID_";
  const auto name = media::codecName(codec);
  if (!name) return std::to_string(codec);
  return std::string(name->starts_with(kPrefix) ? name->substr(kPrefix.size()) : *name);
}

std::string framesPerSecond(const media::Rational& rate) {
  if (rate.den == 0) return "unknown";
  const double frames = static_cast<double>(rate.num) / rate.den;
  char text[32];
  std::snprintf(text, sizeof text, frames < 1000 ? "%.4g per second" : "%.0f per second", frames);
  return text;
}

std::string valueText(const Quantity& quantity) {
  return quantity.text(quantity.value);
}

void describe(const DlnaFacts& facts, DlnaExplanation& explanation) {
  const auto add = [&](const char* label, std::string value) {
    explanation.details.push_back({label, std::move(value)});
  };
  add("container", containerName(facts.demuxer));
  add("video", codecName(facts.codec));
  if (facts.codec == CODEC_ID_H264) {
    add("profile", valueText(h264Profile(facts.profile)));
    add("level", valueText(h264Level(facts.level)));
  } else if (facts.codec == CODEC_ID_MPEG4) {
    add("profile", valueText(mpeg4Profile(facts.profile)));
    add("level", valueText(mpeg4Level(facts.level)));
  }
  add("frame size", std::to_string(facts.width) + " x " + std::to_string(facts.height));
  add("frames", framesPerSecond(facts.realFrameRate));
  add("video bit rate", valueText(videoBitRate(facts.streamBitRate)));
  add("overall bit rate", valueText(overallBitRate(facts.containerBitRate)));
  add("audio", valueText(audio(facts)));
}

std::ptrdiff_t failures(const DlnaCandidate& candidate) {
  return std::count_if(candidate.tests.begin(), candidate.tests.end(),
                       [](const DlnaTest& test) { return !test.held; });
}

std::string packetsText(const TransportPackets& packets) {
  std::string size = valueText(packetSize(packets));
  if (packets.size != TS_PACKET_STAMPED) return size;
  return size + (packets.isTimeStamped ? ", time-stamped" : ", time stamps empty");
}

}  // namespace

TransportPackets Naming::readPackets() const {
  const TransportPackets packets = packetReader();
  if (explanation != nullptr) explanation->details.push_back({"packets", packetsText(packets)});
  return packets;
}

DlnaName nameDlnaProfile(const DlnaFacts& facts, const PacketReader& readPackets,
                         DlnaExplanation* explanation) {
  if (explanation != nullptr) describe(facts, *explanation);
  Naming naming = {.facts = facts, .packetReader = readPackets, .explanation = explanation};
  rulesFor(facts.codec)(naming);
  return naming.name;
}

int nextBetter(std::span<const DlnaCandidate> candidates) {
  const auto taken = std::find_if(candidates.rbegin(), candidates.rend(),
                                  [](const DlnaCandidate& candidate) { return candidate.taken; });
  const auto end = taken != candidates.rend() ? taken.base() : candidates.end();
  auto best = end;
  for (auto it = candidates.begin(); it != end; ++it)
    if (!it->taken && (best == end || failures(*it) < failures(*best))) best = it;
  return best != end ? static_cast<int>(best - candidates.begin()) : -1;
}

bool isWmvHighTestStream(std::string_view fileName) {
  return std::any_of(
      kWmvHighTestStreams.begin(), kWmvHighTestStreams.end(),
      [&](std::string_view name) { return fileName.find(name) != std::string_view::npos; });
}

}  // namespace kolum::dlna
