// What the naming rules of all codecs share.
#ifndef KOLUM_DLNA_RULES_H
#define KOLUM_DLNA_RULES_H

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "dlna/audio_class.h"
#include "dlna/naming.h"

namespace kolum::dlna {

inline constexpr const char* kTimeStampedMimeType = "video/vnd.dlna.mpeg-tts";

// A number that a test compares, with its words for people.
struct Quantity {
  const char* label;
  std::int64_t value;
  std::string (*text)(std::int64_t value);
};

Quantity width(const DlnaFacts& facts);
Quantity height(const DlnaFacts& facts);
Quantity audio(const DlnaFacts& facts);
// Bits per second.
Quantity videoBitRate(std::int64_t rate);
Quantity overallBitRate(std::int64_t rate);
// Whole frames per second, rounded down.
Quantity frameRate(const DlnaFacts& facts);
Quantity packetSize(const TransportPackets& packets);

Quantity h264Profile(int profile);
Quantity h264Level(int level);
Quantity mpeg4Profile(int profile);
Quantity mpeg4Level(int level);

// The tests of one name. All of them are evaluated, so that an explanation lists everything that is
// missing and not only the first failure.
class Tests {
 public:
  // The name comes in pieces, which are joined only if an explanation is wanted.
  Tests(DlnaExplanation* explanation, std::initializer_list<std::string_view> name);

  Tests& atMost(const Quantity& quantity, std::int64_t limit);
  Tests& atLeast(const Quantity& quantity, std::int64_t limit);
  Tests& oneOf(const Quantity& quantity, std::span<const std::int64_t> allowed);
  Tests& oneOf(const Quantity& quantity, std::initializer_list<std::int64_t> allowed) {
    return oneOf(quantity, std::span(allowed.begin(), allowed.size()));
  }
  Tests& frame(const DlnaFacts& facts, int maxWidth, int maxHeight) {
    return atMost(width(facts), maxWidth).atMost(height(facts), maxHeight);
  }
  // A test with its own wording: the required value and the actual one.
  Tests& that(bool held, const char* wanted, const Quantity& actual);

  // True while all tests have held.
  bool held() const { return held_; }
  // True if every test held; completes the candidate, which is then taken.
  bool take();

 private:
  void record(bool held, const std::string& wanted, const Quantity& actual);
  Tests& limited(bool held, const Quantity& quantity, const char* relation, std::int64_t limit);

  DlnaExplanation* explanation_;
  bool held_ = true;
};

// One naming run: the facts, and the name as it is built.
struct Naming {
  const DlnaFacts& facts;
  const PacketReader& packetReader;
  DlnaExplanation* explanation;
  DlnaName name = {};

  std::string& primary() { return name.profile; }
  Tests candidate(std::initializer_list<std::string_view> pieces) const {
    return {explanation, pieces};
  }
  void remark(const char* sentence) const {
    if (explanation != nullptr) explanation->remarks.emplace_back(sentence);
  }
  void output(std::string line) { name.outputLines.push_back(std::move(line)); }
  TransportPackets readPackets() const;
};

// An integer quotient; 0 if the denominator is 0.
constexpr std::int64_t quotient(std::int64_t numerator, std::int64_t denominator) {
  return denominator != 0 ? numerator / denominator : 0;
}

// The rules by codec. Each builds the whole name; empty means there is none.
void nameMpeg2(Naming& naming);
void nameH264(Naming& naming);
void nameMpeg4Part2(Naming& naming);
void nameMpeg1(Naming& naming);
void nameWindowsMedia(Naming& naming);

}  // namespace kolum::dlna

#endif
