// What the naming rules of the codecs share.
#ifndef KOLUM_VIDEO_DLNA_RULES_H
#define KOLUM_VIDEO_DLNA_RULES_H

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

#include "video/audio_class.h"
#include "video/dlna.h"

namespace kolum::video {

inline constexpr const char* kTimeStampedMimeType = "video/vnd.dlna.mpeg-tts";

// The tests that a name is put to. All of them are made, so that an explanation tells everything
// that is missing and not only the first thing.
class Tests {
 public:
  Tests(DlnaExplanation* explanation, std::string_view name) : explanation_(explanation) {
    if (explanation_ != nullptr) explanation_->push_back({std::string(name), {}, false});
  }

  Tests& atMost(const char* fact, std::int64_t actual, std::int64_t limit) {
    return limited(actual <= limit, fact, " at most ", limit, actual);
  }
  Tests& atLeast(const char* fact, std::int64_t actual, std::int64_t limit) {
    return limited(actual >= limit, fact, " at least ", limit, actual);
  }
  Tests& exactly(const char* fact, std::int64_t actual, std::int64_t wanted) {
    return limited(actual == wanted, fact, " ", wanted, actual);
  }
  Tests& oneOf(const char* fact, std::int64_t actual, std::initializer_list<std::int64_t> allowed);
  Tests& frame(const DlnaFacts& facts, int width, int height) {
    return atMost("width", facts.width, width).atMost("height", facts.height, height);
  }
  Tests& audio(unsigned actual, std::initializer_list<unsigned> allowed);
  Tests& that(bool held, const char* wanted, std::string_view actual);

  // True when every test held; ends the candidate.
  bool hold();

 private:
  Tests& limited(bool held, const char* fact, const char* relation, std::int64_t wanted,
                 std::int64_t actual);

  DlnaExplanation* explanation_;
  bool held_ = true;
};

// One run of the naming: the facts, and the name as it grows.
struct Naming {
  const DlnaFacts& facts;
  const PacketReader& readPackets;
  DlnaExplanation* explanation;
  DlnaName name = {};

  Tests candidate(std::string_view what) const { return {explanation, what}; }
  std::string& primary() { return name.profile; }
};

// Numerator by denominator as an integer quotient; 0 when there is no denominator.
constexpr int quotient(int numerator, int denominator) {
  return denominator != 0 ? numerator / denominator : 0;
}

// The rules by codec. Each leaves the whole name; an empty one means that there is none.
void nameMpeg2(Naming& naming);
void nameH264(Naming& naming);
void nameMpeg4Part2(Naming& naming);
void nameMpeg1(Naming& naming);
void nameWindowsMedia(Naming& naming);

}  // namespace kolum::video

#endif
