#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

// --- Parts of a movie ---

// NUMBERS of 32 bits behind their count, which may be a lie.
std::string table(const std::string& type, std::uint32_t count, const std::string& entries) {
  return fullBox(type, 0, 0, big32(count) + entries);
}

std::string videoEntry(const std::string& codec, std::uint32_t side,
                       const std::string& boxes = "") {
  return box(codec, zeros(6) + big16(1) + zeros(16) + big16(side) + big16(side) + big32(0x480000) +
                        big32(0x480000) + zeros(4) + big16(1) + zeros(32) + big16(24) + "\xFF\xFF" +
                        boxes);
}

std::string audioEntry(const std::string& codec, const std::string& boxes = "") {
  return box(codec, zeros(6) + big16(1) + zeros(8) + big16(2) + big16(16) + zeros(4) +
                        big32(44100U << 16) + boxes);
}

struct Track {
  std::uint32_t id = 1;
  std::string handler = "vide";
  std::string entry = videoEntry("avc1", 64);
  std::string tables = "";  // of samples
  std::string more = "";    // boxes of the track
  std::uint32_t timeScale = 1000;
  std::uint32_t duration = 100000;
};

std::string trak(const Track& track) {
  const std::string header = fullBox(
      "tkhd", 0, 3, zeros(8) + big32(track.id) + zeros(4) + big32(track.duration) + zeros(60));
  const std::string mediaHeader =
      fullBox("mdhd", 0, 0,
              zeros(8) + big32(track.timeScale) + big32(track.duration) + "\x55\xC4" + zeros(2));
  const std::string handler = fullBox("hdlr", 0, 0, zeros(4) + track.handler + zeros(13));
  const std::string samples = box("stbl", table("stsd", 1, track.entry) + track.tables);
  return box("trak",
             header + track.more + box("mdia", mediaHeader + handler + box("minf", samples)));
}

std::string movieHeader() {
  return fullBox("mvhd", 0, 0, zeros(8) + big32(1000) + big32(100000) + zeros(80));
}

std::string movie(const std::string& boxes) {
  return ftyp("isom") + box("moov", movieHeader() + boxes);
}

// COUNT samples of SIZE bytes, one behind the other from OFFSET on.
std::string sameSamples(std::uint32_t count, std::uint32_t size, std::uint32_t offset = 32) {
  return table("stts", 1, big32(count) + big32(2)) +
         table("stsc", 1, big32(1) + big32(count) + big32(1)) +
         fullBox("stsz", 0, 0, big32(size) + big32(count)) + table("stco", 1, big32(offset));
}

// One sample: BYTES, which follow the file type box.
std::string withSample(const std::string& entry, const std::string& bytes,
                       const std::string& handler = "vide") {
  const std::string head = ftyp("isom") + box("mdat", bytes);
  const auto offset = static_cast<std::uint32_t>(head.size() - bytes.size());
  const auto size = static_cast<std::uint32_t>(bytes.size());
  return head + box("moov", movieHeader() + trak({.handler = handler,
                                                  .entry = entry,
                                                  .tables = sameSamples(1, size, offset)}));
}

// --- Index tables ---

std::string hugeCounts() {
  std::string tracks;
  for (std::uint32_t id = 1; id <= 8; ++id)
    tracks += trak({.id = id, .tables = sameSamples(20'000'000, 1)});
  return movie(tracks);
}

// Tables that are as long as they claim.
std::string longTables() {
  constexpr std::uint32_t kCount = 500'000;
  const std::string tables =
      table("stts", kCount, repeated(big32(1) + big32(1), kCount)) +
      table("ctts", kCount, repeated(big32(1) + big32(1), kCount)) +
      table("stsc", kCount, repeated(big32(1) + big32(1) + big32(1), kCount)) +
      fullBox("stsz", 0, 0, big32(0) + big32(kCount) + repeated(big32(1), kCount)) +
      table("stco", kCount, repeated(big32(32), kCount)) +
      table("stss", kCount, repeated(big32(1), kCount));
  return movie(trak({.tables = tables}));
}

std::string hugeCompositionRuns() {
  constexpr std::uint32_t kCount = 2'000'000'000;
  return movie(trak(
      {.tables = sameSamples(1000, 1) + table("ctts", 2, repeated(big32(kCount) + big32(1), 2))}));
}

std::string hugeTimeRuns() {
  return movie(trak({.tables = sameSamples(1000, 1) +
                               table("stts", 2, repeated(big32(2'000'000'000) + big32(1), 2))}));
}

std::string hugeSyncGroups() {
  std::string groups =
      box("sbgp", big32(0) + "rap " + big32(3) + repeated(big32(0x7FFFFFFF) + big32(1), 3));
  groups = fullBox("sgpd", 1, 0, "rap " + big32(1) + big32(1) + zeros(1)) + groups;
  return movie(trak({.tables = sameSamples(1'000'000, 1) + groups}));
}

std::string multiplyingEdits() {
  constexpr std::uint32_t kEdits = 100;
  constexpr std::uint32_t kSamples = 1'000'000;
  const std::string edit = big32(2 * kSamples) + big32(0) + big32(0x10000);
  return movie(trak({.tables = sameSamples(kSamples, 1),
                     .more = box("edts", table("elst", kEdits, repeated(edit, kEdits)))}));
}

std::string manyEdits() {
  constexpr std::uint32_t kEdits = 1'000'000;
  const std::string edit = big32(1) + big32(0) + big32(0x10000);
  return movie(trak({.tables = sameSamples(1000, 1),
                     .more = box("edts", table("elst", kEdits, repeated(edit, kEdits)))}));
}

std::string fragmented(const std::string& tracks, std::uint32_t count) {
  std::string defaults;
  for (std::uint32_t id = 1; id <= count; ++id)
    defaults += fullBox("trex", 0, 0, big32(id) + repeated(big32(1), 3) + zeros(4));
  return movie(tracks + box("mvex", defaults));
}

std::string emptyTables() {
  return table("stts", 0, "") + table("stsc", 0, "") + fullBox("stsz", 0, 0, zeros(8)) +
         table("stco", 0, "");
}

std::string fragment(std::uint32_t samples) {
  constexpr std::uint32_t kBaseIsFragment = 0x20000;
  const std::string run = fullBox("trun", 0, 0, big32(samples));
  return box("moof", fullBox("mfhd", 0, 0, big32(1)) +
                         box("traf", fullBox("tfhd", 0, kBaseIsFragment, big32(1)) + run));
}

std::string fragmentsOfClaimedSamples() {
  return fragmented(trak({.tables = emptyTables()}), 1) + repeated(fragment(1'000'000), 100);
}

std::string manyFragments() {
  return fragmented(trak({.tables = emptyTables()}), 1) + repeated(fragment(1), 100'000);
}

std::string manyTracks(std::uint32_t count, const Track& pattern) {
  std::string tracks;
  for (std::uint32_t id = 1; id <= count; ++id) {
    Track track = pattern;
    track.id = id;
    tracks += trak(track);
  }
  return tracks;
}

// Every track's only sample is the same picture.
std::string manyPictures() {
  const std::string head = ftyp("qt  ") + box("mdat", hugePng());
  const auto size = static_cast<std::uint32_t>(hugePng().size());
  const auto offset = static_cast<std::uint32_t>(head.size() - size);
  const Track track = {.entry = videoEntry("png ", 64), .tables = sameSamples(1, size, offset)};
  return head + box("moov", movieHeader() + manyTracks(kMostStreams, track));
}

// The index has a row for every fragment and track.
std::string fragmentsOfManyTracks() {
  return fragmented(manyTracks(kMostStreams, {.tables = emptyTables()}), kMostStreams) +
         repeated(fragment(1), 100'000);
}

std::string segmentIndexOfManyTracks() {
  constexpr std::uint32_t kCount = 65535;
  const std::string index = fullBox("sidx", 0, 0,
                                    big32(1) + big32(1000) + zeros(8) + big16(0) + big16(kCount) +
                                        repeated(big32(1) + big32(1) + big32(0), kCount));
  return fragmented(manyTracks(kMostStreams, {.tables = emptyTables()}), kMostStreams) + index +
         fragment(1);
}

std::string hugeRandomAccessIndex() {
  constexpr std::uint32_t kCount = 2'000'000;
  const std::string entries = repeated(big32(1) + big32(1) + "\1\1\1", kCount);
  const std::string index = fullBox("tfra", 0, 0, big32(1) + big32(0) + big32(kCount) + entries);
  return fragmented(trak({.tables = emptyTables()}), 1) + fragment(1) +
         box("mfra", index + fullBox("mfro", 0, 0, big32(index.size() + 24)));
}

std::string manyDescriptions() {
  constexpr std::uint32_t kCount = 100'000;
  const std::string entry = videoEntry("avc1", 64);
  std::string track = trak({.entry = repeated(entry, kCount), .tables = sameSamples(1, 1)});
  // The count of entries is right behind the type, the version and the flags.
  track.replace(track.find("stsd") + 8, 4, big32(kCount));
  return movie(track);
}

std::string manyReferences() {
  constexpr std::uint32_t kCount = 500'000;
  const std::string files =
      box("dinf", table("dref", kCount, repeated(fullBox("alis", 0, 1, ""), kCount)));
  return movie(trak({.tables = sameSamples(1, 1) + files}));
}

std::string encryptionTables() {
  const std::string sizes = fullBox("saiz", 0, 0, "\x08" + big32(0x7FFFFFF0));
  const std::string offsets = fullBox("saio", 0, 0, big32(1) + big32(32));
  const std::string scheme =
      box("sinf", box("frma", "avc1") + fullBox("schm", 0, 0, "cenc" + big32(0x10000)) +
                      box("schi", fullBox("tenc", 0, 0, std::string("\0\0\1\x08", 4) + zeros(16))));
  return movie(trak(
      {.entry = videoEntry("encv", 64, scheme), .tables = sameSamples(1000, 1) + sizes + offsets}));
}

std::string protectionSystems() {
  constexpr std::size_t kCount = 50'000;
  const std::string system = fullBox("pssh", 0, 0, zeros(16) + big32(8) + zeros(8));
  return movie(trak({.tables = sameSamples(1, 1)}) + repeated(system, kCount));
}

std::string hugeSamples() {
  return movie(trak({.handler = "vide",
                     .entry = videoEntry("mp4v", 64),
                     .tables = sameSamples(1000, 0x30000000)}));
}

// One sample that is as large as its table claims.
std::string largeSample() {
  return withSample(videoEntry("avc1", 64), repeated(noise(kMiB), 300));
}

// --- Metadata ---

std::string itunesItem(const std::string& key, std::uint32_t kind, const std::string& value) {
  return box(key, box("data", big32(kind) + big32(0) + value));
}

std::string userData(const std::string& items) {
  const std::string handler = fullBox("hdlr", 0, 0, zeros(4) + "mdir" + zeros(13));
  return box("udta", fullBox("meta", 0, 0, handler + box("ilst", items)));
}

std::string movieWithMetadata(const std::string& metadata) {
  return movie(trak({.tables = sameSamples(1, 1)}) + metadata);
}

std::string freeFormItem(int number) {
  return box("----", fullBox("mean", 0, 0, "com.test") +
                         fullBox("name", 0, 0, "key" + std::to_string(number)) +
                         box("data", big32(1) + big32(0) + "v"));
}

std::string distinctItems() {
  std::string items;
  for (int i = 0; i < 100'000; ++i) items += freeFormItem(i);
  return movieWithMetadata(userData(items));
}

std::string distinctKeys() {
  constexpr std::uint32_t kCount = 100'000;
  std::string keys;
  std::string items;
  for (std::uint32_t i = 1; i <= kCount; ++i) {
    keys += box("mdta", "com.test.key" + std::to_string(i));
    items += big32(8 + 8 + 8 + 1) + big32(i) + box("data", big32(1) + big32(0) + "v");
  }
  const std::string handler = fullBox("hdlr", 0, 0, zeros(4) + "mdta" + zeros(13));
  return movieWithMetadata(box("meta", handler + table("keys", kCount, keys) + box("ilst", items)));
}

// Boxes of boxes where values are expected.
std::string nestedItems() {
  constexpr std::size_t kDepth = 200'000;
  constexpr std::size_t kHeader = 8;
  std::string boxes;
  for (std::size_t depth = kDepth; depth > 0; --depth) boxes += big32(depth * kHeader) + "moov";
  return movieWithMetadata(userData(boxes));
}

std::string endlessArtists() {
  constexpr std::size_t kCount = 500'000;
  const std::string value = box("data", big32(1) + big32(0) + "a");
  return movieWithMetadata(
      userData(box("\251ART", repeated(value, kCount)) + repeated(box("\251ART", value), kCount)));
}

std::string hugeKeyCount() {
  const std::string handler = fullBox("hdlr", 0, 0, zeros(4) + "mdta" + zeros(13));
  return movieWithMetadata(box("meta", handler + table("keys", 0x0FFFFFF0, zeros(64))));
}

std::string distinctUserData() {
  std::string items;
  for (std::uint32_t i = 0; i < 100'000; ++i) {
    std::string type = "\xA9" + std::to_string(100 + i % 900);
    items += box(type, big16(1) + big16(0) + "v");
  }
  return movieWithMetadata(box("udta", items));
}

std::string covers(std::size_t count, const std::string& picture) {
  constexpr std::uint32_t kPng = 14;
  return movieWithMetadata(userData(repeated(itunesItem("covr", kPng, picture), count)));
}

std::string coversOfOneItem() {
  constexpr std::uint32_t kPng = 14;
  const std::string data = box("data", big32(kPng) + big32(0) + hugePng());
  return movieWithMetadata(userData(box("covr", repeated(data, kMostStreams))));
}

std::string longText() {
  return movieWithMetadata(
      userData(itunesItem("\xA9"
                          "nam",
                          1, repeated("a", 64 * kMiB))));
}

std::string longTexts() {
  std::string items;
  for (int i = 0; i < 64; ++i) {
    items += box("----", fullBox("mean", 0, 0, "com.test") +
                             fullBox("name", 0, 0, "key" + std::to_string(i)) +
                             box("data", big32(1) + big32(0) + repeated("a", kMiB)));
  }
  return movieWithMetadata(userData(items));
}

// A track of chapter titles: each is read from elsewhere in the file.
std::string chapterTrack() {
  constexpr std::uint32_t kCount = 500'000;
  const std::string reference = box("tref", box("chap", big32(2)));
  const std::string text = trak({.id = 2,
                                 .handler = "text",
                                 .entry = box("text", zeros(6) + big16(1) + zeros(43)),
                                 .tables = sameSamples(kCount, 8)});
  return movie(trak({.tables = sameSamples(1, 1), .more = reference}) + text);
}

std::string manyChapterLists() {
  std::string list;
  for (std::uint32_t i = 0; i < 255; ++i) list += bigEndian(i, 8) + "\x01t";
  const std::string chapters = fullBox("chpl", 1, 0, zeros(4) + "\xFF" + list);
  return movieWithMetadata(box("udta", repeated(chapters, 2000)));
}

// --- Boxes ---

std::string nested(const std::string& type, int depth) {
  std::string boxes;
  for (int i = 0; i < depth; ++i) boxes = box(type, boxes);
  return boxes;
}

std::string compressedMovie(const std::string& boxes, std::uint64_t size) {
  return box("moov", box("cmov", box("dcom", "zlib") + box("cmvd", big32(size) + boxes)));
}

std::string inflatingMovie() {
  constexpr std::size_t kSize = 1024 * kMiB;
  return ftyp("qt  ") + compressedMovie(deflatedZeros(kSize), kSize);
}

std::string inflatingTables() {
  std::string tracks;
  for (std::uint32_t id = 1; id <= 8; ++id)
    tracks += trak({.id = id, .tables = sameSamples(20'000'000, 1)});
  const std::string whole = box("moov", movieHeader() + tracks);
  return ftyp("qt  ") + compressedMovie(deflated(whole), whole.size());
}

std::string unknownBoxes() {
  return movie(trak({.tables = sameSamples(1, 1)}) + repeated(box("abcd", ""), 500'000));
}

// --- Pictures in HEIF ---

std::string heif(const std::string& boxes) {
  const std::string handler = fullBox("hdlr", 0, 0, zeros(4) + "pict" + zeros(13));
  return ftyp("avif", {"mif1", "miaf"}) + fullBox("meta", 0, 0, handler + boxes);
}

std::string itemInfo(std::uint32_t id, const std::string& type) {
  return fullBox("infe", 2, 0, big16(id) + big16(0) + type + zeros(1));
}

std::string hugeItemTables() {
  constexpr std::uint32_t kCount = 65000;
  std::string infos;
  std::string locations;
  for (std::uint32_t id = 1; id <= kCount; ++id) {
    infos += itemInfo(id, "av01");
    locations += big16(id) + big16(0) + big16(1) + big32(0) + big32(0x7FFFFFFF);
  }
  return heif(fullBox("pitm", 0, 0, big16(1)) + fullBox("iinf", 0, 0, big16(kCount) + infos) +
              fullBox("iloc", 0, 0, "\x44" + zeros(1) + big16(kCount) + locations));
}

std::string hugeItemCounts() {
  return heif(fullBox("pitm", 0, 0, big16(1)) + fullBox("iinf", 1, 0, big32(0x7FFFFFFF)) +
              fullBox("iloc", 2, 0, "\x44" + zeros(1) + big32(0x7FFFFFFF)));
}

// A grid of grids, and it refers to itself.
std::string loopingGrids() {
  std::string infos;
  std::string references;
  std::string locations;
  for (std::uint32_t id = 1; id <= 200; ++id) {
    infos += itemInfo(id, "grid");
    locations += big16(id) + big16(0) + big16(1) + big32(16) + big32(16);
    std::string targets;
    for (std::uint32_t to = 1; to <= 200; ++to) targets += big16(to);
    references += box("dimg", big16(id) + big16(200) + targets);
  }
  const std::string properties =
      box("iprp", box("ipco", fullBox("ispe", 0, 0, big32(kHugeSide) + big32(kHugeSide))));
  return heif(fullBox("pitm", 0, 0, big16(1)) + fullBox("iinf", 0, 0, big16(200) + infos) +
              fullBox("iref", 0, 0, references) + properties +
              fullBox("iloc", 0, 0, "\x44" + zeros(1) + big16(200) + locations));
}

std::string manyProperties() {
  const std::string property = fullBox("ispe", 0, 0, big32(kHugeSide) + big32(kHugeSide));
  return heif(fullBox("pitm", 0, 0, big16(1)) +
              box("iprp", box("ipco", repeated(property, 500'000))));
}

// --- Codecs ---

// Codecs whose decoders make a picture of the container's size, or of their own, from a few bytes.
struct CodecRow {
  const char* name;
  const char* codec;
  std::string (*sample)();
};

std::string fewBytes() {
  return noise(4 * kKiB);
}

constexpr CodecRow kPictureCodecs[] = {
    {"Mpeg4", "mp4v", hugeMpeg4},    {"Mpeg2", "m2v1", hugeMpeg2},
    {"H264", "avc3", hugeH264},      {"Hevc", "hev1", hugeHevc},
    {"Jpeg", "jpeg", hugeJpeg},      {"MotionJpeg", "mjpa", hugeJpeg},
    {"Png", "png ", hugePng},        {"Gif", "gif ", hugeGif},
    {"Tiff", "tiff", hugeTiff},      {"Jpeg2000", "mjp2", hugeJpeg2000},
    {"Vp8", "vp08", hugeVp8},        {"Raw", "raw ", fewBytes},
    {"Animation", "rle ", fewBytes}, {"Video", "rpza", fewBytes},
    {"Graphics", "smc ", fewBytes},  {"Sorenson", "SVQ1", fewBytes},
    {"Sorenson3", "SVQ3", fewBytes}, {"ProRes", "apcn", fewBytes},
    {"DnxHd", "AVdn", fewBytes},     {"Cineform", "CFHD", fewBytes},
};

}  // namespace

HostileFiles hostileMp4Files() {
  HostileFiles files = {
      {"nestedItems.m4a", nestedItems},
      {"endlessArtists.m4a", endlessArtists},
      {"hugeCounts.mp4", hugeCounts},
      {"longTables.mp4", longTables},
      {"hugeCompositionRuns.mp4", hugeCompositionRuns},
      {"hugeTimeRuns.mp4", hugeTimeRuns},
      {"hugeSyncGroups.mp4", hugeSyncGroups},
      {"multiplyingEdits.mp4", multiplyingEdits},
      {"manyEdits.mp4", manyEdits},
      {"fragmentsOfClaimedSamples.mp4", fragmentsOfClaimedSamples},
      {"manyFragments.mp4", manyFragments},
      {"fragmentsOfManyTracks.mp4", fragmentsOfManyTracks},
      {"segmentIndexOfManyTracks.mp4", segmentIndexOfManyTracks},
      {"hugeRandomAccessIndex.mp4", hugeRandomAccessIndex},
      {"manyDescriptions.mp4", manyDescriptions},
      {"manyReferences.mov", manyReferences},
      {"encryptionTables.mp4", encryptionTables},
      {"protectionSystems.mp4", protectionSystems},
      {"hugeSamples.mp4", hugeSamples, std::int64_t{4} << 40},
      {"largeSample.mp4", largeSample},
      {"manyTracks.mp4", [] { return movie(manyTracks(20'000, {.tables = sameSamples(1, 1)})); }},
      {"thousandTracks.mp4",
       [] { return movie(manyTracks(kMostStreams, {.tables = sameSamples(1, 1)})); }},
      {"thousandPictures.mov", manyPictures},
      {"manySoundTracks.m4a",
       [] {
         return movie(manyTracks(
             20'000,
             {.handler = "soun", .entry = audioEntry("mp4a"), .tables = sameSamples(1, 1)}));
       }},
      {"distinctItems.m4a", distinctItems},
      {"distinctKeys.mov", distinctKeys},
      {"hugeKeyCount.mov", hugeKeyCount},
      {"distinctUserData.mov", distinctUserData},
      {"hugeCovers.m4a", [] { return covers(kMostStreams, hugePng()); }},
      {"tooManyCovers.m4a", [] { return covers(100'000, "x"); }},
      {"hugeCoversOfOneItem.m4a", coversOfOneItem},
      {"longText.m4a", longText},
      {"longTexts.m4a", longTexts},
      {"chapterTrack.m4b", chapterTrack},
      {"manyChapterLists.m4b", manyChapterLists},
      {"boxesOfEightBytes.mp4", [] { return ftyp("mp42") + repeated(box("free", ""), 2'000'000); }},
      {"boxesOfEightBytesAlone.mov", [] { return repeated(box("wide", ""), 500'000); }},
      {"unknownBoxes.mp4", unknownBoxes},
      {"nestedMovies.mp4", [] { return ftyp("isom") + nested("moov", 5000); }},
      {"nestedUserData.mp4", [] { return movie(nested("udta", 5000)); }},
      {"nestedFragments.mp4", [] { return ftyp("isom") + nested("moof", 5000); }},
      {"inflatingMovie.mov", inflatingMovie},
      {"inflatingTables.mov", inflatingTables},
      {"terabytes.mp4",
       [] { return ftyp("isom") + big32(1) + "mdat" + bigEndian(std::uint64_t{4} << 40, 8); },
       std::int64_t{4} << 40},
      {"terabytesOfNothing.mov", [] { return ftyp("qt  "); }, std::int64_t{8} << 40},
      {"hugeItemTables.avif", hugeItemTables},
      {"hugeItemCounts.heic", hugeItemCounts},
      {"loopingGrids.heic", loopingGrids},
      {"manyProperties.avif", manyProperties},
  };
  for (const CodecRow& row : kPictureCodecs) {
    files.push_back({std::string("huge") + row.name + ".mov",
                     [row] { return withSample(videoEntry(row.codec, kHugeSide), row.sample()); }});
  }
  return files;
}

}  // namespace kolum::test
