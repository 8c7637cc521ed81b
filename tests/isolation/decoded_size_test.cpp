// What an answer of a worker that a file has taken over makes of the host's memory. A separate
// program, because it counts all memory of the process.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "isolation/message.h"
#include "isolation/wire.h"

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> most{0};

void count(void* memory) {
  const std::size_t now = inUse += malloc_usable_size(memory);
  if (now > most) most = now;
}

}  // namespace

void* operator new(std::size_t size) {
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  count(memory);
  return memory;
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) inUse -= malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace kolum::isolation {
namespace {

constexpr std::size_t kMostTaken = 2 * kMostDecoded;

// More than fit into a message, unless less are encoded than this.
constexpr std::size_t kMany = 10'000'000;

// The longest message with a list that LISTOF gives, of which each element is encoded as VALUE is.
template <typename Value, typename List>
std::vector<std::uint8_t> longestMessage(read::Findings findings, List listOf, const Value& value) {
  const std::size_t before = encode(findings).size();
  listOf(findings).push_back(value);
  const std::size_t each = encode(findings).size() - before;
  listOf(findings).resize(std::min(kMany, (kLongestMessage - before) / each), value);
  auto bytes = encode(std::move(findings));
  EXPECT_LE(bytes.size(), kLongestMessage);
  EXPECT_GT(bytes.size(), kLongestMessage / 2);
  return bytes;
}

struct Taken {
  bool isBelieved;
  std::size_t memory;
};

// What decoding takes, together with the titles that a document lists.
Taken decoding(const std::vector<std::uint8_t>& bytes) {
  const std::size_t before = inUse;
  most = before;
  auto findings = decodeFindings(bytes);
  if (findings && findings->disc) discOf(std::move(*findings->disc));
  return {findings.has_value(), most - before};
}

read::Findings withContainer() {
  read::Findings findings;
  findings.container.emplace();
  return findings;
}

read::Findings withDisc() {
  read::Findings findings;
  findings.disc.emplace().kind = media::DiscKind::kDvd;
  media::DiscTitle title;
  title.source = "VTS_01_0.IFO";
  findings.disc->titleSets.push_back({.number = 1, .longestChain = 1, .titles = {title}});
  return findings;
}

TEST(DecodedSize, OfManyEmptyStreamsIsBounded) {
  const auto bytes = longestMessage(
      withContainer(), [](auto& f) -> auto& { return f.container->streams; }, media::Stream());
  const Taken taken = decoding(bytes);
  EXPECT_FALSE(taken.isBelieved);
  EXPECT_LT(taken.memory, kMostTaken);
}

TEST(DecodedSize, OfManyEmptyTagsIsBounded) {
  const auto bytes = longestMessage(
      withContainer(), [](auto& f) -> auto& { return f.container->tags; },
      std::pair<std::string, std::string>());
  const Taken taken = decoding(bytes);
  EXPECT_FALSE(taken.isBelieved);
  EXPECT_LT(taken.memory, kMostTaken);
}

TEST(DecodedSize, OfManyEmptyTextsIsBounded) {
  read::Findings findings;
  findings.photoTags.emplace();
  const auto bytes = longestMessage(
      findings, [](auto& f) -> auto& { return f.photoTags->keywords; }, std::string());
  const Taken taken = decoding(bytes);
  EXPECT_FALSE(taken.isBelieved);
  EXPECT_LT(taken.memory, kMostTaken);
}

TEST(DecodedSize, OfManyListsInListsIsBounded) {
  media::DvdTitleSet set = {.number = 1, .longestChain = 1, .titles = {media::DiscTitle()}};
  set.titles.front().streams.assign(1000, "");
  const auto bytes = longestMessage(
      withDisc(), [](auto& f) -> auto& { return f.disc->titleSets; }, set);
  const Taken taken = decoding(bytes);
  EXPECT_FALSE(taken.isBelieved);
  EXPECT_LT(taken.memory, kMostTaken);
}

// Each line of a DVD's list of titles gets a copy of the title that it leads to.
TEST(DecodedSize, OfManyLinesThatLeadToOneLongTitleIsBounded) {
  read::Findings findings = withDisc();
  findings.disc->dvdTitles.assign(
      20, {.titleSet = 1, .numberInSet = 1, .chapterCount = 0, .angles = 1});
  const auto bytes = longestMessage(
      findings, [](auto& f) -> auto& { return f.disc->titleSets[0].titles[0].streams; },
      std::string("00001"));
  const Taken taken = decoding(bytes);
  EXPECT_FALSE(taken.isBelieved);
  EXPECT_LT(taken.memory, kMostTaken);
}

TEST(DecodedSize, OfACountThatTheMessageDoesNotHoldIsBounded) {
  auto bytes = encode(withContainer());
  bytes.resize(kLongestMessage, 0);
  for (std::size_t i = 0; i < 200; ++i) {
    auto lie = bytes;
    lie[i] = 0xFF;
    lie[i + 1] = 0xFF;
    lie[i + 2] = 0x3F;
    EXPECT_LT(decoding(lie).memory, kMostTaken) << i;
  }
}

// What real files reach in the worst case.
TEST(DecodedSize, LeavesRoomForTheLargestHonestAnswers) {
  read::Findings findings = withContainer();
  media::Stream stream;
  stream.details.emplace().title = "A commentary by the director";
  findings.container->streams.assign(1000, stream);
  findings.container->tags.assign(media::kMostContainerTags,
                                  {"comment", "a comment of some length"});
  findings.container->chapters.assign(media::kMostChapters, {0, 1, "A chapter with a name"});
  EXPECT_TRUE(decoding(encode(findings)).isBelieved);

  media::DiscTitle title;
  title.source = "00001.mpls";
  title.chapters.assign(50, 1.5);
  title.audioLanguages.assign(media::kMostTitleLanguages, "eng");
  title.subtitleLanguages.assign(media::kMostTitleLanguages, "eng");
  title.streams.assign(100, "00001");
  read::Findings disc;
  disc.disc.emplace().kind = media::DiscKind::kBluray;
  disc.disc->playlists.assign(media::kMostDiscTitles, title);
  const auto bytes = encode(disc);
  EXPECT_LE(bytes.size(), kLongestMessage);
  EXPECT_TRUE(decoding(bytes).isBelieved);
}

}  // namespace
}  // namespace kolum::isolation
