#include "describe/parts.h"
#include "describe/table.h"
#include "media/disc.h"

namespace kolum::describe {

namespace {

constexpr const char* kIndex = "the disc's index files";

struct ChapterStart {
  double start = 0;
};

constexpr auto kChapterRows = std::to_array<Row<ChapterStart>>({
    {{"start", Type::kNumber, Unit::kSeconds, "From the beginning of the title", kIndex},
     [](const ChapterStart& c) -> Value { return c.start; }},
});
constexpr auto kChapterKeys = keysOf(kChapterRows);

struct Title {
  std::size_t number = 0;
  const media::DiscTitle* facts = nullptr;
};

Value chaptersOf(const Title& title) {
  std::vector<ChapterStart> starts;
  for (const double start : title.facts->chapters) starts.push_back({start});
  return objectsOf(kChapterRows, starts);
}

constexpr auto kTitleRows = std::to_array<Row<Title>>({
    {{"number", Type::kInteger, Unit::kNone,
      "From 1, in the order of a DVD's list of titles, or of a Blu-ray disc's playlists", kIndex},
     [](const Title& t) -> Value { return t.number; }},
    {{"source", Type::kText, Unit::kNone,
      "The index file that describes it: \"VTS_01_0.IFO\", \"00001.mpls\"", kIndex},
     [](const Title& t) { return text(t.facts->source); }},
    {{"duration", Type::kNumber, Unit::kSeconds, "How long it plays", kIndex},
     [](const Title& t) { return positive(t.facts->duration); }},
    {{"chapterCount", Type::kInteger, Unit::kCount, "How many chapters it has", kIndex},
     [](const Title& t) -> Value { return t.facts->chapterCount; }},
    {{"chapters", Type::kObjects, Unit::kNone, "Where they begin", kIndex, kChapterKeys},
     chaptersOf},
    {{"angles", Type::kInteger, Unit::kCount, "From how many angles it can be seen", kIndex},
     [](const Title& t) { return positive(t.facts->angles); }},
    {{"audioLanguages", Type::kTexts, Unit::kNone,
      "For each sound, as stored: \"en\" on DVDs, \"eng\" on Blu-ray discs; \"und\" if not stated",
      kIndex},
     [](const Title& t) { return texts(t.facts->audioLanguages); }},
    {{"subtitleLanguages", Type::kTexts, Unit::kNone, "The same for its subtitles", kIndex},
     [](const Title& t) { return texts(t.facts->subtitleLanguages); }},
});
constexpr auto kTitleKeys = keysOf(kTitleRows);

Value titlesOf(const media::Disc& disc) {
  std::vector<Title> titles;
  for (const media::DiscTitle& title : disc.titles) titles.push_back({titles.size() + 1, &title});
  return objectsOf(kTitleRows, titles);
}

Value subtitleCount(const Document& document) {
  return document.video ? known(document.video->subtitleCount) : Value();
}

constexpr auto kDiscRows = std::to_array<Row<Document>>({
    {{"subtitleCount", Type::kInteger, Unit::kCount, "Subtitle streams of a DVD or Blu-ray folder",
      "the main title"},
     subtitleCount},
    {{"titles", Type::kObjects, Unit::kNone, "What a DVD or Blu-ray disc can play", kIndex,
      kTitleKeys},
     [](const Document& d) { return d.disc ? titlesOf(*d.disc) : Value(); }},
    {{"mainTitle", Type::kInteger, Unit::kNone,
      "The number of the main title, which all else about a folder is about", kIndex},
     [](const Document& d) { return d.disc ? known(d.disc->mainTitle) : Value(); }},
    {{"mainTitleReason", Type::kText, Unit::kNone, "Why it is the main one, in words", kIndex},
     [](const Document& d) { return d.disc ? text(d.disc->mainTitleReason) : Value(); }},
});
constexpr auto kDiscKeys = keysOf(kDiscRows);

}  // namespace

Part discPart() {
  return {{"disc", "Discs", kDiscKeys}, [](Value& object, const Document& document) {
            if (document.isDisc) add(object, kDiscRows, document);
          }};
}

}  // namespace kolum::describe
