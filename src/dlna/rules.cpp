#include "dlna/rules.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <array>

#include "media/levels.h"

namespace kolum::dlna {

namespace {

struct NumberName {
  std::int64_t number;
  const char* name;
};

constexpr auto kH264Profiles = std::to_array<NumberName>({
    {44, "CAVLC 4:4:4"},
    {66, "Baseline"},
    {77, "Main"},
    {88, "Extended"},
    {100, "High"},
    {110, "High 10"},
    {122, "High 4:2:2"},
    {244, "High 4:4:4 Predictive"},
    {578, "Constrained Baseline"},
    {2158, "High 10 Intra"},
    {2170, "High 4:2:2 Intra"},
    {2292, "High 4:4:4 Intra"},
    {media::kUnknownLevel, "unknown"},
});

constexpr auto kMpeg4Profiles = std::to_array<NumberName>({
    {0, "Simple"},
    {15, "Advanced Simple"},
    {media::kUnknownLevel, "unknown"},
});

std::string plainText(std::int64_t number) {
  return std::to_string(number);
}

std::string nameIn(std::span<const NumberName> names, std::int64_t number) {
  for (const NumberName& row : names)
    if (row.number == number) return row.name;
  return plainText(number);
}

std::string audioText(std::int64_t audioClass) {
  if (audioClass == AUDIO_CLASS_NONE) return "none or other";
  const std::string_view name = audioClassName(audioClass);
  return name.empty() ? plainText(audioClass) : std::string(name);
}

std::string bitRateText(std::int64_t rate) {
  return rate > 0 ? plainText(rate) + " bit/s" : "unknown";
}

std::string packetText(std::int64_t size) {
  return size > 0 ? plainText(size) + " bytes" : "unknown size";
}

std::string h264ProfileText(std::int64_t profile) {
  return nameIn(kH264Profiles, profile);
}

std::string levelText(int codec, std::int64_t level) {
  const std::string name = media::levelName(codec, static_cast<int>(level));
  return name.empty() ? "unknown" : name;
}

std::string h264LevelText(std::int64_t level) {
  return levelText(CODEC_ID_H264, level);
}

std::string mpeg4ProfileText(std::int64_t profile) {
  return nameIn(kMpeg4Profiles, profile);
}

std::string mpeg4LevelText(std::int64_t level) {
  return levelText(CODEC_ID_MPEG4, level);
}

// The allowed values in words: "a, b or c".
std::string alternatives(const Quantity& quantity, std::span<const std::int64_t> allowed) {
  std::string text;
  std::size_t left = allowed.size();
  for (const std::int64_t value : allowed) {
    text += quantity.text(value);
    --left;
    if (left > 1) text += ", ";
    if (left == 1) text += " or ";
  }
  return text;
}

}  // namespace

Quantity width(const DlnaFacts& facts) {
  return {"width", facts.width, plainText};
}
Quantity height(const DlnaFacts& facts) {
  return {"height", facts.height, plainText};
}
Quantity audio(const DlnaFacts& facts) {
  return {"audio", facts.audioClass, audioText};
}
Quantity videoBitRate(std::int64_t rate) {
  return {"video bit rate", rate, bitRateText};
}
Quantity overallBitRate(std::int64_t rate) {
  return {"overall bit rate", rate, bitRateText};
}
Quantity frameRate(const DlnaFacts& facts) {
  return {"frames per second", quotient(facts.realFrameRate.num, facts.realFrameRate.den),
          plainText};
}
Quantity packetSize(const TransportPackets& packets) {
  return {"packets of", packets.size, packetText};
}
Quantity h264Profile(int profile) {
  return {"profile", profile, h264ProfileText};
}
Quantity h264Level(int level) {
  return {"level", level, h264LevelText};
}
Quantity mpeg4Profile(int profile) {
  return {"profile", profile, mpeg4ProfileText};
}
Quantity mpeg4Level(int level) {
  return {"level", level, mpeg4LevelText};
}

Tests::Tests(DlnaExplanation* explanation, std::initializer_list<std::string_view> name)
    : explanation_(explanation) {
  if (explanation_ == nullptr) return;
  DlnaCandidate candidate;
  for (const std::string_view piece : name) candidate.name += piece;
  explanation_->candidates.push_back(std::move(candidate));
}

void Tests::record(bool held, const std::string& wanted, const Quantity& actual) {
  explanation_->candidates.back().tests.push_back({held, wanted, actual.text(actual.value)});
}

Tests& Tests::limited(bool held, const Quantity& quantity, const char* relation,
                      std::int64_t limit) {
  held_ = held_ && held;
  if (explanation_ != nullptr)
    record(held, std::string(quantity.label) + relation + quantity.text(limit), quantity);
  return *this;
}

Tests& Tests::atMost(const Quantity& quantity, std::int64_t limit) {
  return limited(quantity.value <= limit, quantity, " at most ", limit);
}

Tests& Tests::atLeast(const Quantity& quantity, std::int64_t limit) {
  return limited(quantity.value >= limit, quantity, " at least ", limit);
}

Tests& Tests::oneOf(const Quantity& quantity, std::span<const std::int64_t> allowed) {
  const bool held = std::find(allowed.begin(), allowed.end(), quantity.value) != allowed.end();
  held_ = held_ && held;
  if (explanation_ != nullptr)
    record(held, std::string(quantity.label) + " " + alternatives(quantity, allowed), quantity);
  return *this;
}

Tests& Tests::that(bool held, const char* wanted, const Quantity& actual) {
  held_ = held_ && held;
  if (explanation_ != nullptr) record(held, wanted, actual);
  return *this;
}

bool Tests::take() {
  if (explanation_ != nullptr) explanation_->candidates.back().taken = held_;
  return held_;
}

}  // namespace kolum::dlna
