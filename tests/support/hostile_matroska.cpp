#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

// The bytes of an element's identifier, without the zeros in front.
std::string identifier(std::uint32_t id) {
  const int size = id > 0xFFFFFF ? 4 : id > 0xFFFF ? 3 : id > 0xFF ? 2 : 1;
  return bigEndian(id, size);
}

std::string element(std::uint32_t id, const std::string& payload) {
  const bool isShort = payload.size() < 127;
  return identifier(id) +
         (isShort ? bigEndian(0x80 | payload.size(), 1)
                  : bigEndian(0x0100000000000000 | payload.size(), 8)) +
         payload;
}

std::string number(std::uint32_t id, std::uint64_t value, int size = 4) {
  return element(id, bigEndian(value, size));
}

constexpr std::uint32_t kSegment = 0x18538067;
constexpr std::uint32_t kSeekHead = 0x114D9B74;
constexpr std::uint32_t kInfo = 0x1549A966;
constexpr std::uint32_t kTracks = 0x1654AE6B;
constexpr std::uint32_t kTrackEntry = 0xAE;
constexpr std::uint32_t kCues = 0x1C53BB6B;
constexpr std::uint32_t kAttachments = 0x1941A469;
constexpr std::uint32_t kChapters = 0x1043A770;
constexpr std::uint32_t kTags = 0x1254C367;
constexpr std::uint32_t kCluster = 0x1F43B675;

std::string matroska(const std::string& elements) {
  const std::string header = element(0x1A45DFA3, element(0x4282, "matroska"));
  return header + element(kSegment, element(kInfo, number(0x2AD7B1, 1'000'000)) + elements);
}

std::string videoTrack(std::uint32_t id, const std::string& codec, std::uint32_t side,
                       const std::string& more = "") {
  const std::string video = element(0xE0, number(0xB0, side) + number(0xBA, side));
  return element(kTrackEntry, number(0xD7, id) + number(0x73C5, id) + number(0x83, 1, 1) +
                                  element(0x86, codec) + video + more);
}

// A cluster with one frame of the first track.
std::string cluster(const std::string& frame) {
  return element(kCluster,
                 number(0xE7, 0) + element(0xA3, "\x81" + std::string("\0\0\x80", 3) + frame));
}

std::string withTrack(const std::string& track, const std::string& frame = "x") {
  return matroska(element(kTracks, track) + cluster(frame));
}

std::string small(const std::string& elements) {
  return matroska(element(kTracks, videoTrack(1, "V_MPEG4/ISO/AVC", 64)) + elements + cluster("x"));
}

std::string manyTracks(std::uint32_t count, const std::string& codec) {
  std::string tracks;
  for (std::uint32_t id = 1; id <= count; ++id) tracks += videoTrack(id, codec, 64);
  return matroska(element(kTracks, tracks) + cluster("x"));
}

// Compressed by zlib, as a track may be; its codec's data then are, too.
std::string compressedTrack(std::uint32_t id, const std::string& codecData) {
  constexpr std::uint32_t kFramesAndCodecData = 3;
  const std::string compression = element(0x5034, number(0x4254, 0));
  const std::string encoding =
      element(0x6240, number(0x5031, 0) + number(0x5032, kFramesAndCodecData) + number(0x5033, 0) +
                          compression);
  return videoTrack(id, "V_MPEG4/ISO/AVC", 64,
                    element(0x6D80, encoding) + element(0x63A2, codecData));
}

std::string inflatingCodecData() {
  const std::string data = deflatedZeros(9 * kMiB);
  std::string tracks;
  for (std::uint32_t id = 1; id <= 40; ++id) tracks += compressedTrack(id, data);
  return matroska(element(kTracks, tracks) + cluster("x"));
}

std::string inflatingFrames() {
  const std::string frame = deflatedZeros(9 * kMiB);
  return matroska(element(kTracks, compressedTrack(1, deflated("x"))) +
                  repeated(cluster(frame), 200));
}

std::string manyEncodings() {
  const std::string encoding = element(0x6240, number(0x5031, 0));
  return withTrack(
      videoTrack(1, "V_MPEG4/ISO/AVC", 64, element(0x6D80, repeated(encoding, 500'000))));
}

std::string attachments(std::size_t count, const std::string& picture) {
  const std::string file =
      element(0x61A7, element(0x466E, "cover.png") + element(0x4660, "image/png") +
                          number(0x46AE, 1) + element(0x465C, picture));
  return small(element(kAttachments, repeated(file, count)));
}

std::string tag(const std::string& name, const std::string& value, const std::string& more = "") {
  return element(0x67C8, element(0x45A3, name) + element(0x4487, value) + more);
}

std::string distinctTags() {
  std::string tags;
  for (int i = 0; i < 100'000; ++i) tags += tag("KEY" + std::to_string(i), "v");
  return small(element(kTags, element(0x7373, tags)));
}

std::string nestedTags() {
  std::string tags;
  for (int i = 0; i < 5000; ++i) tags = tag("K", "v", tags);
  return small(element(kTags, element(0x7373, tags)));
}

std::string longTags() {
  std::string tags;
  for (int i = 0; i < 64; ++i) tags += tag("KEY" + std::to_string(i), repeated("a", kMiB));
  return small(element(kTags, element(0x7373, tags)));
}

std::string chapters() {
  std::string atoms;
  for (std::uint32_t i = 1; i <= 200'000; ++i)
    atoms += element(0xB6, number(0x73C4, i) + number(0x91, i) + element(0x80, element(0x85, "t")));
  return small(element(kChapters, element(0x45B9, atoms)));
}

// In descending order, which no shortcut expects.
std::string shuffledChapters() {
  std::string atoms;
  for (std::uint32_t i = 100'000; i > 0; --i)
    atoms += element(0xB6, number(0x73C4, i * 7919 % 100'003) + number(0x91, i));
  return small(element(kChapters, element(0x45B9, atoms)));
}

std::string nestedChapters() {
  std::string atoms;
  for (int i = 0; i < 5000; ++i) atoms = element(0xB6, atoms);
  return small(element(kChapters, element(0x45B9, atoms)));
}

std::string cues() {
  const std::string position = element(0xB7, number(0xF7, 1, 1) + number(0xF1, 0, 1));
  std::string points;
  for (std::uint32_t i = 0; i < 1'000'000; ++i) points += element(0xBB, number(0xB3, i) + position);
  return small(element(kCues, points));
}

std::string cuesOfManyPositions() {
  const std::string position = element(0xB7, number(0xF7, 1, 1) + number(0xF1, 0, 1));
  return small(element(kCues, element(0xBB, number(0xB3, 0) + repeated(position, 2'000'000))));
}

std::string seekHeads() {
  const std::string entry =
      element(0x4DBB, element(0x53AB, identifier(kTags)) + number(0x53AC, 64));
  return small(element(kSeekHead, repeated(entry, 200'000)));
}

// Each leads to another one.
std::string loopingSeekHeads() {
  std::string entries;
  for (std::uint32_t i = 0; i < 20'000; ++i)
    entries += element(0x4DBB, element(0x53AB, identifier(kSeekHead)) + number(0x53AC, i % 100));
  return small(element(kSeekHead, entries));
}

std::string nestedOfUnknownSize(std::uint32_t id, std::size_t depth) {
  return matroska(repeated(identifier(id) + "\xFF", depth));
}

std::string manyClusters() {
  return matroska(element(kTracks, videoTrack(1, "V_MPEG4/ISO/AVC", 64)) +
                  repeated(element(kCluster, number(0xE7, 0)), 500'000));
}

std::string laces() {
  // 256 frames of no bytes each.
  const std::string frame = std::string("\x81\0\0\x06", 4) + "\xFF" + zeros(255);
  return matroska(element(kTracks, videoTrack(1, "V_MPEG4/ISO/AVC", 64)) +
                  element(kCluster, number(0xE7, 0) + repeated(element(0xA3, frame), 20'000)));
}

std::string fewBytes() {
  return noise(4 * kKiB);
}

std::string oneColour() {
  return "\x06\x01\x02\x03\x04";
}

// Codecs whose decoders make a picture of the container's size, or of their own, from a few bytes.
struct CodecRow {
  const char* name;
  const char* codec;
  std::string (*frame)();
};

constexpr CodecRow kPictureCodecs[] = {
    {"Mpeg2", "V_MPEG2", hugeMpeg2},
    {"Mpeg4", "V_MPEG4/ISO/ASP", hugeMpeg4},
    {"H264", "V_MPEG4/ISO/AVC", hugeH264},
    {"Hevc", "V_MPEGH/ISO/HEVC", hugeHevc},
    {"Vp8", "V_VP8", hugeVp8},
    {"Vp9", "V_VP9", fewBytes},
    {"Av1", "V_AV1", fewBytes},
    {"Theora", "V_THEORA", fewBytes},
    {"Jpeg", "V_MJPEG", hugeJpeg},
    {"Snow", "V_SNOW", fewBytes},
};

// As AVI describes a picture.
std::string foreignTrack(const std::string& fourCharacters, std::uint32_t side) {
  const std::string header = littleEndian(40, 4) + littleEndian(side, 4) + littleEndian(side, 4) +
                             littleEndian(1, 2) + littleEndian(24, 2) + fourCharacters + zeros(20);
  return videoTrack(1, "V_MS/VFW/FOURCC", side, element(0x63A2, header));
}

constexpr CodecRow kForeignCodecs[] = {
    {"Gif", "GIF ", hugeGif},           {"Png", "MPNG", hugePng},
    {"Ffv1", "FFV1", fewBytes},         {"HuffYuv", "HFYU", fewBytes},
    {"Lagarith", "LAGS", oneColour},    {"Video1", "MSVC", fewBytes},
    {"Jpeg2000", "MJ2C", hugeJpeg2000}, {"Zlib", "ZLIB", fewBytes},
};

}  // namespace

HostileFiles hostileMatroskaFiles() {
  HostileFiles files = {
      {"emptyTracks.mkv",
       [] { return matroska(element(kTracks, repeated(element(kTrackEntry, ""), 1'000'000))); }},
      {"manyTracks.mkv", [] { return manyTracks(100'000, "V_MPEG4/ISO/AVC"); }},
      {"tracksOfNoCodec.mkv", [] { return manyTracks(100'000, "V_NONE"); }},
      {"thousandTracks.mkv", [] { return manyTracks(kMostStreams, "V_MPEGH/ISO/HEVC"); }},
      {"inflatingCodecData.mkv", inflatingCodecData},
      {"inflatingFrames.mkv", inflatingFrames},
      {"manyEncodings.mkv", manyEncodings},
      {"tooManyAttachments.mkv", [] { return attachments(100'000, "x"); }},
      {"hugeAttachments.mkv", [] { return attachments(kMostStreams, hugePng()); }},
      {"distinctTags.mkv", distinctTags},
      {"nestedTags.mkv", nestedTags},
      {"longTags.mkv", longTags},
      {"chapters.mkv", chapters},
      {"shuffledChapters.mkv", shuffledChapters},
      {"nestedChapters.mkv", nestedChapters},
      {"cues.mkv", cues},
      {"cuesOfManyPositions.mkv", cuesOfManyPositions},
      {"seekHeads.mkv", seekHeads},
      {"loopingSeekHeads.mkv", loopingSeekHeads},
      {"voids.mkv", [] { return small(repeated(element(0xEC, ""), 8'000'000)); }},
      {"nestedSegments.mkv", [] { return nestedOfUnknownSize(kSegment, 100'000); }},
      {"nestedClusters.mkv", [] { return nestedOfUnknownSize(kCluster, 1'000'000); }},
      {"manyClusters.mkv", manyClusters},
      {"laces.mkv", laces},
      {"terabytes.mkv", [] { return small(identifier(0xEC) + bigEndian(0x0100040000000000, 8)); },
       std::int64_t{4} << 40},
      {"noise.webm", [] { return small("") + repeated(noise(kMiB), 32); }},
  };
  for (const CodecRow& row : kPictureCodecs) {
    files.push_back({std::string("huge") + row.name + ".mkv", [row] {
                       return withTrack(videoTrack(1, row.codec, kHugeSide), row.frame());
                     }});
  }
  for (const CodecRow& row : kForeignCodecs) {
    files.push_back({std::string("huge") + row.name + "OfAvi.mkv",
                     [row] { return withTrack(foreignTrack(row.codec, kHugeSide), row.frame()); }});
  }
  return files;
}

}  // namespace kolum::test
