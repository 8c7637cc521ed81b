#include <bit>

#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

// --- AVI ---

std::string bitmapInfo(const std::string& codec, std::uint32_t side, int depth = 24) {
  return little32(40) + little32(side) + little32(side) + little16(1) +
         little16(static_cast<std::uint64_t>(depth)) + codec + zeros(20);
}

std::string aviStream(const std::string& codec, std::uint32_t side, const std::string& more = "",
                      int depth = 24) {
  const std::string header = "vids" + codec + zeros(12) + little32(1) + little32(25) + zeros(4) +
                             little32(1000) + zeros(20);
  return riffList(
      "LIST", "strl",
      riffChunk("strh", header) + riffChunk("strf", bitmapInfo(codec, side, depth)) + more);
}

std::string aviHeader(const std::string& streams, const std::string& more = "") {
  constexpr std::uint32_t kHasIndex = 0x10;
  const std::string main = little32(40000) + zeros(8) + little32(kHasIndex) + little32(1000) +
                           zeros(4) + little32(1) + zeros(4) + little32(64) + little32(64) +
                           zeros(16);
  return riffList("LIST", "hdrl", riffChunk("avih", main) + streams) + more;
}

std::string indexEntry(const std::string& chunk, std::uint32_t offset, std::uint32_t size) {
  constexpr std::uint32_t kKeyFrame = 0x10;
  return chunk + little32(kKeyFrame) + little32(offset) + little32(size);
}

std::string avi(const std::string& header, const std::string& packets, const std::string& index) {
  return riffList("RIFF", "AVI ",
                  header + riffList("LIST", "movi", packets) + riffChunk("idx1", index));
}

std::string aviWithPicture(const std::string& codec, std::uint32_t side, const std::string& data,
                           int depth = 24) {
  std::string index;
  std::string packets;
  for (int i = 0; i < 3; ++i) {
    index += indexEntry("00dc", static_cast<std::uint32_t>(4 + packets.size()),
                        static_cast<std::uint32_t>(data.size()));
    packets += riffChunk("00dc", data);
  }
  return avi(aviHeader(aviStream(codec, side, "", depth)), packets, index);
}

std::string aviSmall(const std::string& header, const std::string& index = "") {
  return avi(header, riffChunk("00dc", zeros(64)),
             index.empty() ? indexEntry("00dc", 4, 64) : index);
}

std::string aviLargeIndex() {
  std::string index;
  for (std::uint32_t i = 0; i < 1'000'000; ++i) index += indexEntry("00dc", 4 + i, 64);
  return aviSmall(aviHeader(aviStream("H264", 64)), index);
}

// An index of indexes, in front of the entries.
std::string superIndex(std::uint32_t count, const std::string& entries) {
  return riffChunk("indx", little16(4) + zeros(2) + little32(count) + "00dc" + zeros(12) + entries);
}

// Every entry leads to the index itself.
std::string aviLoopingIndex() {
  constexpr std::uint32_t kCount = 1000;
  const auto fileWith = [](std::uint64_t offset) {
    const std::string entry = little64(offset) + little32(64) + little32(1);
    return aviSmall(aviHeader(aviStream("H264", 64, superIndex(kCount, repeated(entry, kCount)))));
  };
  return fileWith(fileWith(0).find("indx"));
}

// Every entry leads to the same large index.
std::string aviMultiplyingIndex() {
  constexpr std::uint32_t kIndexes = 1000;
  constexpr std::uint32_t kEntries = 500'000;
  const std::string large =
      riffChunk("ix00", little16(2) + std::string("\0\1", 2) + little32(kEntries) + "00dc" +
                            zeros(12) + repeated(little32(16) + little32(64), kEntries));
  const auto fileWith = [&](std::uint64_t offset) {
    const std::string entry = little64(offset) + little32(64) + little32(1);
    return aviSmall(
        aviHeader(aviStream("H264", 64, superIndex(kIndexes, repeated(entry, kIndexes))), large));
  };
  return fileWith(fileWith(0).find("ix00"));
}

std::string aviDistinctInfo() {
  const std::string items = distinctRiffChunks(100'000);
  return aviSmall(aviHeader(aviStream("H264", 64), riffList("LIST", "INFO", items)));
}

std::string aviHugeCodecData() {
  const std::string stream = aviStream("H264", 64);
  std::string file = aviSmall(aviHeader(stream));
  return file.replace(file.find("strf") + 4, 4, little32(0x3FFFFFF0));
}

std::string aviNested() {
  std::string lists;
  for (int i = 0; i < 20'000; ++i) lists = riffList("LIST", "hdrl", lists);
  return riffList("RIFF", "AVI ", lists);
}

std::string fewBytes() {
  return noise(4 * kKiB);
}

std::string oneColour() {
  return "\x06\x01\x02\x03\x04";
}

// Codecs whose decoders make a picture of the container's size, or of their own, from a few bytes.
struct CodecRow {
  const char* codec;
  std::string (*frame)();
};

constexpr CodecRow kAviCodecs[] = {
    {"mpg2", hugeMpeg2}, {"FMP4", hugeMpeg4}, {"H264", hugeH264},     {"HEVC", hugeHevc},
    {"MJPG", hugeJpeg},  {"MPNG", hugePng},   {"MJ2C", hugeJpeg2000}, {"VP80", hugeVp8},
    {"MP43", fewBytes},  {"H263", fewBytes},  {"FFV1", fewBytes},     {"HFYU", fewBytes},
    {"FFVH", fewBytes},  {"LAGS", oneColour}, {"cvid", fewBytes},     {"MSVC", fewBytes},
    {"ZMBV", fewBytes},  {"tscc", fewBytes},  {"IV50", fewBytes},     {"VP31", fewBytes},
    {"VP62", fewBytes},  {"ULRG", fewBytes},  {"MAGY", fewBytes},     {"WMV1", fewBytes},
    {"WMV3", fewBytes},  {"FLV1", fewBytes},  {"SNOW", fewBytes},     {"CSCD", fewBytes},
    {"LOCO", fewBytes},  {"FPS1", fewBytes},  {"YV12", fewBytes},
};

// --- ASF ---

std::string asfObject(const std::string& id, const std::string& payload) {
  return id + little64(24 + payload.size()) + payload;
}

const std::string kAsfHeader =
    "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9" + zeros(1) + "\xAA" + zeros(1) + "\x62\xCE\x6C";
const std::string kAsfData =
    "\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9" + zeros(1) + "\xAA" + zeros(1) + "\x62\xCE\x6C";
const std::string kAsfTail = "\xCF\x11\x8E\xE6" + zeros(1) + "\xC0\x0C\x20\x53\x65";
const std::string kAsfFile =
    "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4" + zeros(1) + "\xC0\x0C\x20\x53\x65";
const std::string kAsfStream = "\xB7\xDC\x07\x91\xB7\xA9" + kAsfTail;
const std::string kAsfMarker = "\x01\xCD\x87\xF4\x51\xA9" + kAsfTail;
const std::string kAsfVideo =
    "\xC0\xEF\x19\xBC\x4D\x5B\xCF\x11\xA8\xFD" + zeros(1) + "\x80\x5F\x5C\x44\x2B";
const std::string kAsfExtended =
    "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0" + zeros(1) + "\xA0\xC9\x5E\xA8\x50";
const std::string kAsfLibrary = "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54";

std::string asfStream(std::uint32_t number, std::uint32_t side) {
  const std::string format = bitmapInfo("WMV3", side) + zeros(4);
  const std::string video =
      little32(side) + little32(side) + "\2" + little16(format.size()) + format;
  return asfObject(kAsfStream, kAsfVideo + zeros(16) + zeros(8) + little32(video.size()) +
                                   little32(0) + little16(number) + zeros(4) + video);
}

std::string asfWith(const std::string& objects) {
  constexpr std::uint32_t kPacketSize = 3200;
  const std::string file =
      asfObject(kAsfFile, zeros(16) + little64(100000) + zeros(8) + little64(10) + little64(1000) +
                              little64(1000) + little64(0) + little32(2) + little32(kPacketSize) +
                              little32(kPacketSize) + little32(100000));
  const std::string all = file + objects;
  return asfObject(kAsfHeader, little32(3) + "\1\2" + all) +
         asfObject(kAsfData, zeros(16) + little64(10) + "\1\1" + zeros(kPacketSize * 10));
}

std::string utf16(const std::string& text) {
  std::string wide;
  for (const char c : text) wide += std::string{c, '\0'};
  return wide + zeros(2);
}

std::string asfAttribute(const std::string& name, std::uint32_t type, const std::string& value) {
  return little16(utf16(name).size()) + utf16(name) + little16(type) + little16(value.size()) +
         value;
}

std::string asfDistinctAttributes() {
  constexpr std::uint32_t kCount = 65535;
  std::string attributes;
  for (std::uint32_t i = 0; i < kCount; ++i)
    attributes += asfAttribute("key" + std::to_string(i), 0, utf16("v"));
  return asfWith(asfStream(1, 64) + asfObject(kAsfExtended, little16(kCount) + attributes));
}

std::string asfPictures(std::uint32_t count, const std::string& content) {
  const std::string picture =
      "\3" + little32(content.size()) + utf16("image/png") + utf16("") + content;
  const std::string attribute = asfAttribute("WM/Picture", 1, picture);
  return asfWith(asfStream(1, 64) +
                 asfObject(kAsfExtended, little16(count) + repeated(attribute, count)));
}

std::string asfMarkers(std::uint32_t count) {
  const std::string marker =
      zeros(8) + little64(10'000'000) + little16(20) + zeros(8) + little32(1) + utf16("");
  return asfWith(asfStream(1, 64) +
                 asfObject(kAsfMarker, zeros(16) + little32(count) + zeros(2) + little16(2) +
                                           utf16("") + repeated(marker, 200'000)));
}

std::string asfStreams() {
  std::string streams;
  for (std::uint32_t i = 0; i < 20'000; ++i) streams += asfStream(1 + i % 127, 64);
  return asfWith(streams);
}

std::string asfHugeObject() {
  return asfWith(asfStream(1, 64) + kAsfLibrary + little64(0x7FFFFFFFFFFFFF00));
}

// --- FLV ---

std::string flvTag(int type, const std::string& data) {
  return bigEndian(static_cast<std::uint64_t>(type), 1) + bigEndian(data.size(), 3) + zeros(7) +
         data + big32(data.size() + 11);
}

std::string flvWith(const std::string& tags) {
  return "FLV\1\5" + big32(9) + big32(0) + tags;
}

std::string amfKey(const std::string& key) {
  return big16(key.size()) + key;
}
std::string amfNumber(double value) {
  return zeros(1) + bigEndian(std::bit_cast<std::uint64_t>(value), 8);
}
std::string amfEnd() {
  return zeros(2) + "\x09";
}
std::string onMetaData(const std::string& entries) {
  constexpr int kScript = 18;
  return flvTag(kScript, "\2" + amfKey("onMetaData") + "\x08" + big32(1) + entries + amfEnd());
}

constexpr char kAmfObject[] = "\x03";
constexpr char kAmfArray[] = "\x0A";

// The lengths of the arrays are lies.
std::string flvHugeArrays() {
  constexpr std::uint32_t kCount = (1U << 28) - 1;
  const std::string array = kAmfArray + big32(kCount) + amfNumber(1);
  return flvWith(onMetaData(amfKey("keyframes") + kAmfObject + amfKey("times") + array +
                            amfKey("filepositions") + array + amfEnd()));
}

std::string flvKeyFrames() {
  constexpr std::uint32_t kCount = 500'000;
  const std::string array = kAmfArray + big32(kCount) + repeated(amfNumber(1), kCount);
  return flvWith(onMetaData(amfKey("keyframes") + kAmfObject + amfKey("times") + array +
                            amfKey("filepositions") + array + amfEnd()));
}

std::string flvDistinctKeys() {
  std::string entries;
  for (int i = 0; i < 100'000; ++i) entries += amfKey("key" + std::to_string(i)) + amfNumber(i);
  return flvWith(onMetaData(entries));
}

std::string flvNestedObjects() {
  std::string entries;
  for (int i = 0; i < 100'000; ++i) entries += amfKey("k") + kAmfObject;
  return flvWith(onMetaData(entries));
}

std::string flvEmptyTags() {
  return flvWith(repeated(flvTag(18, ""), 1'000'000));
}

std::string flvManyMetaData() {
  std::string entries;
  for (int i = 0; i < 1000; ++i) entries += amfKey("key" + std::to_string(i)) + amfNumber(i);
  return flvWith(repeated(onMetaData(entries), 500));
}

// --- RealMedia ---

std::string realChunk(const std::string& id, const std::string& payload) {
  return id + big32(8 + payload.size()) + payload;
}

std::string realWith(const std::string& chunks, std::uint32_t indexOffset = 0) {
  return realChunk(".RMF", zeros(2) + big32(0) + big32(5)) +
         realChunk("PROP", zeros(2) + big32(1000) + big32(1000) + big32(1000) + big32(1000) +
                               big32(1000) + big32(1000) + big32(0) + big32(indexOffset) +
                               big32(0) + big16(1) + big16(0)) +
         chunks + realChunk("DATA", zeros(2) + big32(1000) + big32(0)) + zeros(64);
}

std::string realStream(std::uint32_t number) {
  const std::string codec = big32(34) + "VIDORV40" + big16(kHugeSide) + big16(kHugeSide) +
                            big16(12) + zeros(4) + big32(0x190000) + zeros(8);
  return realChunk("MDPR", zeros(2) + big16(number) + big32(1000) + big32(1000) + big32(1000) +
                               big32(1000) + zeros(8) + big32(1000) + zeros(1) + zeros(1) +
                               big32(codec.size()) + codec);
}

std::string realStreams() {
  std::string streams;
  for (std::uint32_t i = 0; i < kMostStreams; ++i) streams += realStream(i);
  return realWith(streams);
}

std::string realHugeIndex() {
  std::string file = realWith(realStream(0), 1);
  const auto offset = static_cast<std::uint32_t>(file.size());
  file = realWith(realStream(0), offset);
  return file + "INDX" + big32(20) + zeros(2) + big32(0x7FFFFFFF) + big16(0) + big32(0);
}

// --- Containers that no media library needs ---

std::string nsvHeader() {
  return "NSVf" + little32(64) + little32(0x7FFFFFFF) + little32(1000) + little32(0) +
         little32(0x3FFFFFF0) + little32(0x3FFFFFF0) + zeros(64);
}

std::string filmHeader() {
  return "FILM" + big32(64) + "1.09" + zeros(4) + "FDSC" + big32(32) + "cvid" + big32(kHugeSide) +
         big32(kHugeSide) + "\x18\1\x10" + zeros(1) + big16(22050) + zeros(6) + "STAB" +
         big32(0x7FFFFFFF) + big32(600) + big32(0x0FFFFFFF) + zeros(64);
}

std::string smackerHeader() {
  constexpr std::uint32_t kFrames = 0xFFFFFE;
  return "SMK2" + little32(kHugeSide) + little32(kHugeSide) + little32(kFrames) + little32(40) +
         zeros(4) + zeros(28) + little32(0x0FFFFFFF) + repeated(little32(0x0FFFFFFF), 4) +
         zeros(28) + zeros(4) + zeros(kMiB);
}

std::string flicHeader() {
  return little32(0x7FFFFFFF) + little16(0xAF12) + little16(100) + little16(kHugeSide) +
         little16(kHugeSide) + little16(8) + zeros(2) + little32(40) + zeros(108) + little32(64) +
         little16(0xF1FA) + little16(1) + zeros(8) + little32(40) + little16(16) + zeros(64);
}

std::string mxfPrimer() {
  const std::string key = "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01";
  const std::string partition = big16(1) + big16(2) + zeros(80) + zeros(4) + big32(16);
  return key + std::string("\2\4\0", 3) + "\x58" + partition.substr(0, 88) + key +
         std::string("\5\1\0", 3) + "\x84" + big32(0x7FFFFFF0) + big32(0x07000000) + big32(18) +
         zeros(64);
}

// --- Texts ---

std::string subtitles() {
  std::string text;
  for (int i = 1; i <= 100'000; ++i)
    text += std::to_string(i) + "\n00:00:01,000 --> 00:00:02,000\ntext\n\n";
  return text;
}

std::string styledSubtitles() {
  return "[Script Info]\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, "
         "MarginV, Effect, Text\n" +
         repeated("Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,text\n", 100'000);
}

std::string webSubtitles() {
  return "WEBVTT\n\n" + repeated("00:01.000 --> 00:02.000\ntext\n\n", 100'000);
}

std::string metadataText() {
  std::string text = ";FFMETADATA1\n";
  for (int i = 0; i < 100'000; ++i) text += "key" + std::to_string(i) + "=v\n";
  return text;
}

std::string metadataChapters() {
  std::string text = ";FFMETADATA1\n";
  for (int i = 0; i < 100'000; ++i)
    text += "[CHAPTER]\nSTART=" + std::to_string(i * 7919 % 100'003) + "\nEND=1\n";
  return text;
}

std::string playlist() {
  return "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n" +
         repeated("#EXTINF:10,\nsegment.ts\n", 500'000);
}

std::string manifestOfEntities() {
  std::string file = "<?xml version=\"1.0\"?><!DOCTYPE MPD [<!ENTITY e0 \"aaaaaaaaaa\">";
  for (int i = 1; i < 10; ++i) {
    const std::string reference = "&e" + std::to_string(i - 1) + ";";
    file += "<!ENTITY e" + std::to_string(i) + " \"" + repeated(reference, 10) + "\">";
  }
  return file +
         "]><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" profiles=\""
         "urn:mpeg:dash:profile:isoff-main:2011\"><Period>&e9;</Period></MPD>";
}

std::string cueSheet() {
  return "FILE \"song.wav\" WAVE\n" +
         repeated("  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n", 500'000);
}

// A tracker module whose patterns repeat themselves.
std::string module() {
  std::string file = "module" + zeros(14);
  file += repeated(zeros(22) + big16(0xFFFF) + std::string("\0\x40\0\0\0\1", 6), 31);
  file += "\x80\x7F" + zeros(128) + "M.K.";
  std::string pattern;
  for (int row = 0; row < 64; ++row) {
    for (int channel = 0; channel < 4; ++channel)
      pattern += std::string("\0\0\x0E", 3) + (row % 2 == 0 ? "\x60" : "\x6F");
  }
  return file + repeated(pattern, 128) + zeros(kMiB);
}

}  // namespace

HostileFiles hostileContainers() {
  HostileFiles files = {
      {"largeIndex.avi", aviLargeIndex},
      {"loopingIndex.avi", aviLoopingIndex},
      {"multiplyingIndex.avi", aviMultiplyingIndex},
      {"distinctInfo.avi", aviDistinctInfo},
      {"hugeCodecData.avi", aviHugeCodecData},
      {"nestedLists.avi", aviNested},
      {"manyStreams.avi",
       [] { return aviSmall(aviHeader(repeated(aviStream("H264", 64), kMostStreams))); }},
      {"headThenNoise.avi",
       [] { return aviSmall(aviHeader(aviStream("H264", 64))) + repeated(noise(kMiB), 32); }},
      {"hugeRaw.avi", [] { return aviWithPicture(zeros(4), kHugeSide, noise(4 * kKiB)); }},
      {"hugeRuns.avi", [] { return aviWithPicture("\1" + zeros(3), kHugeSide, zeros(64), 8); }},
      {"distinctAttributes.wmv", asfDistinctAttributes},
      {"pictures.wma", [] { return asfPictures(kMostStreams, hugePng()); }},
      // FFmpeg's search has room for 128 streams, on the stack.
      {"seekAmongPictures.wma", [] { return asfPictures(200, "x"); }},
      {"markers.wmv", [] { return asfMarkers(200'000); }},
      {"hugeMarkerCount.wmv", [] { return asfMarkers(0x7FFFFFFF); }},
      {"manyStreams.wmv", asfStreams},
      {"hugePicture.wmv", [] { return asfWith(asfStream(1, kHugeSide)); }},
      {"hugeObject.wmv", asfHugeObject, std::int64_t{1} << 40},
      {"emptyObjects.wmv",
       [] { return asfWith(asfStream(1, 64) + repeated(asfObject(zeros(16), ""), 1'000'000)); }},
      {"hugeArrays.flv", flvHugeArrays},
      {"keyFrames.flv", flvKeyFrames},
      {"distinctKeys.flv", flvDistinctKeys},
      {"nestedObjects.flv", flvNestedObjects},
      {"emptyTags.flv", flvEmptyTags},
      {"manyMetaData.flv", flvManyMetaData},
      {"manyStreams.rm", realStreams},
      {"hugeIndex.rm", realHugeIndex},
      {"hugePicture.rmvb", [] { return realWith(realStream(0)); }},
      {"hugeTable.nsv", nsvHeader},
      {"hugeTable.film", filmHeader},
      {"hugeTable.smk", smackerHeader},
      {"hugeHeader.flic", flicHeader},
      {"hugePrimer.mxf", mxfPrimer},
      {"subtitles.srt", subtitles},
      {"subtitlesAsVideo.mp4", subtitles},
      {"subtitles.ass", styledSubtitles},
      {"subtitles.vtt", webSubtitles},
      {"distinctKeysAsVideo.mp4", metadataText},
      {"shuffledChaptersAsSong.mp3", metadataChapters},
      {"segments.m3u8", playlist},
      {"segmentsAsVideo.mp4", playlist},
      {"nestedEntities.mpd", manifestOfEntities},
      {"sheet.cue", cueSheet},
      {"loops.mod", module},
      {"terabytesOfNothing.avi", [] { return std::string("RIFF\0\0\0\0AVI ", 12); },
       std::int64_t{4} << 40},
  };
  for (const CodecRow& row : kAviCodecs) {
    files.push_back({std::string("huge_") + row.codec + ".avi",
                     [row] { return aviWithPicture(row.codec, kHugeSide, row.frame()); }});
  }
  return files;
}

}  // namespace kolum::test
