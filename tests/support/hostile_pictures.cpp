#include <iterator>

#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

constexpr std::uint32_t kSide = kHugeSide;

// --- PNG ---

constexpr char kPngSignature[] = "\x89PNG\r\n\x1A\n";

std::string pngChunk(const std::string& type, const std::string& data) {
  return big32(data.size()) + type + data + big32(crc32Of(type + data));
}

// COLOUR is 0 for grey, 6 for red, green, blue and alpha.
std::string pngHeader(std::uint32_t side, int depth, int colour) {
  return kPngSignature + pngChunk("IHDR", big32(side) + big32(side) + bigEndian(depth, 1) +
                                              bigEndian(colour, 1) + zeros(3));
}

// MIDDLE between the header and the data of a picture of 1 x 1 pixels.
std::string smallPngWith(const std::string& middle) {
  return pngHeader(1, 8, 0) + middle + pngChunk("IDAT", deflated(zeros(2))) + pngChunk("IEND", "");
}

std::string pngInflatingText() {
  return smallPngWith(pngChunk("zTXt", std::string("Comment\0\0", 9) + deflatedZeros(1024 * kMiB)));
}

// No encoder writes such significant bits, so the decoder is asked, which inflates the text.
std::string pngOddInflatingText() {
  return smallPngWith(pngChunk("sBIT", zeros(3)) +
                      pngChunk("zTXt", std::string("Comment\0\0", 9) + deflatedZeros(1024 * kMiB)));
}

std::string pngInflatingTexts() {
  const std::string text = deflated(repeated("a", 16 * kMiB));
  std::string chunks;
  for (int i = 0; i < 100; ++i)
    chunks += pngChunk("zTXt", "Key" + std::to_string(i) + zeros(2) + text);
  return smallPngWith(chunks);
}

std::string pngInflatingInternationalText() {
  return smallPngWith(
      pngChunk("iTXt", std::string("Comment\0\1\0\0\0", 12) + deflatedZeros(1024 * kMiB)));
}

std::string pngInflatingColourProfile() {
  return smallPngWith(pngChunk("iCCP", std::string("icc\0\0", 5) + deflatedZeros(1024 * kMiB)));
}

std::string pngManyTexts() {
  std::string chunks;
  for (int i = 0; i < 100000; ++i)
    chunks += pngChunk("tEXt", "Key" + std::to_string(i) + '\0' + "v");
  return smallPngWith(chunks);
}

// All the pixels, too: every row is zeros.
std::string pngInflatingPixels() {
  return pngHeader(kSide, 16, 6) + pngChunk("IDAT", deflatedZeros(2000 * kMiB)) +
         pngChunk("IEND", "");
}

std::string animatedPng(std::uint32_t side, std::uint32_t frames) {
  std::string file = pngHeader(side, 8, 6) + pngChunk("acTL", big32(frames) + big32(0));
  const std::string data = deflated(zeros(64));
  for (std::uint32_t i = 0; i < frames; ++i) {
    const std::string control = big32(2 * i) + big32(side) + big32(side) + zeros(8) + big16(1) +
                                big16(25) + std::string("\1\0", 2);
    file += pngChunk("fcTL", control);
    file += i == 0 ? pngChunk("IDAT", data) : pngChunk("fdAT", big32(2 * i + 1) + data);
  }
  return file + pngChunk("IEND", "");
}

// --- Headers of other formats ---

std::string hugeSgi() {
  const std::string header = "\x01\xDA" + std::string("\1\2", 2) + big16(3) + big16(kSide) +
                             big16(kSide) + big16(4) + big32(0) + big32(0xFFFF);
  return header + zeros(512 - header.size());
}

std::string hugeBmp() {
  return "BM" + little32(1000) + little32(0) + little32(54) + little32(40) + little32(kSide) +
         little32(kSide) + little16(1) + little16(32) + zeros(24) + zeros(64);
}

std::string hugeTga() {
  constexpr char kTrueColourRuns[] = "\x00\x00\x0A";
  return std::string(kTrueColourRuns, 3) + zeros(9) + little16(kSide) + little16(kSide) +
         std::string("\x20\x08", 2) + zeros(64);
}

std::string hugeDds() {
  const std::string format = little32(32) + little32(4) + "DXT5" + zeros(20);
  return "DDS " + little32(124) + little32(0x1007) + little32(kSide) + little32(kSide) + zeros(12) +
         zeros(44) + format + little32(0x1000) + zeros(16) + zeros(64);
}

std::string hugeQoi() {
  return "qoif" + big32(kSide) + big32(kSide) + std::string("\4\0", 2) + repeated("\xFD", 64) +
         std::string("\0\0\0\0\0\0\0\1", 8);
}

std::string webp(const std::string& chunks) {
  return riffList("RIFF", "WEBP", chunks);
}

std::string hugeLosslessWebp() {
  const std::uint64_t sizes = (kSide - 1) | std::uint64_t{kSide - 1} << 14;
  return webp(riffChunk("VP8L", "\x2F" + little32(sizes) + zeros(64)));
}

std::string vp8KeyFrame(std::uint32_t side) {
  constexpr std::uint32_t kFirstPartitionSize = 32;
  const std::uint32_t tag = 1 << 4 | kFirstPartitionSize << 5;  // a key frame that is shown
  return littleEndian(tag, 3) + "\x9D\x01\x2A" + little16(side) + little16(side) + zeros(256);
}

std::string hugeLossyWebp() {
  return webp(riffChunk("VP8 ", vp8KeyFrame(kSide)));
}

std::string animatedWebp() {
  const std::string size = littleEndian(kSide - 1, 3);
  const std::string frame =
      riffChunk("ANMF", zeros(6) + size + size + zeros(4) + riffChunk("VP8 ", vp8KeyFrame(kSide)));
  return webp(riffChunk("VP8X", std::string("\2\0\0\0", 4) + size + size) +
              riffChunk("ANIM", zeros(6)) + repeated(frame, 1000));
}

std::string hugePcx() {
  const std::string corner = little16(kSide - 1);
  return std::string("\x0A\x05\x01\x08", 4) + zeros(4) + corner + corner + zeros(4) + zeros(48) +
         std::string("\0\3", 2) + little16(kSide) + zeros(58) + repeated("\xFF", 64);
}

std::string sideText() {
  return std::to_string(kSide) + " " + std::to_string(kSide);
}

std::string hugePam() {
  return "P7\nWIDTH 16000\nHEIGHT 16000\nDEPTH 4\nMAXVAL 65535\nTUPLTYPE RGB_ALPHA\nENDHDR\n" +
         zeros(64);
}

std::string hugePsd() {
  return "8BPS" + big16(1) + zeros(6) + big16(4) + big32(kSide) + big32(kSide) + big16(16) +
         big16(3) + big32(0) + big32(0) + big32(0) + big16(1) + zeros(64);
}

std::string hugeXwd() {
  std::string header = big32(100) + big32(7) + big32(2) + big32(24) + big32(kSide) + big32(kSide);
  for (const std::uint32_t field :
       {0U, 1U, 32U, 1U, 32U, 32U, kSide * 4, 4U, 0xFF0000U, 0xFF00U, 0xFFU, 8U, 0U, 0U})
    header += big32(field);
  return header + zeros(20) + zeros(64);
}

std::string hugeExr() {
  const auto attribute = [](const std::string& name, const std::string& type,
                            const std::string& value) {
    return name + '\0' + type + '\0' + little32(value.size()) + value;
  };
  const std::string window = zeros(8) + little32(kSide - 1) + little32(kSide - 1);
  const std::string one = little32(0x3F800000);
  std::string channels;
  for (const char* name : {"A", "B", "G", "R"})
    channels += name + zeros(1) + little32(2) + zeros(4) + little32(1) + little32(1);
  return "\x76\x2F\x31\x01" + little32(2) + attribute("channels", "chlist", channels + zeros(1)) +
         attribute("compression", "compression", zeros(1)) +
         attribute("dataWindow", "box2i", window) + attribute("displayWindow", "box2i", window) +
         attribute("lineOrder", "lineOrder", zeros(1)) +
         attribute("pixelAspectRatio", "float", one) +
         attribute("screenWindowCenter", "v2f", zeros(8)) +
         attribute("screenWindowWidth", "float", one) + zeros(1) + zeros(16000 * 8);
}

std::string hugeDpx() {
  std::string header = "SDPX" + big32(2048) + zeros(760) + big16(0) + big16(1) + big32(kSide) +
                       big32(kSide) + zeros(20) + std::string("\x33\x02\x02\x10", 4) + big16(0);
  return header + zeros(2048 - header.size());
}

std::string hugeXpm() {
  return "/* XPM */\nstatic char *x[] = {\n\"16000 16000 2 1\",\n\"a c #000000\",\n\"b c "
         "#ffffff\",\n\"ab\"\n";
}

std::string hugeXbm() {
  return "#define x_width 16000\n#define x_height 16000\nstatic unsigned char x_bits[] = { 0x00 "
         "};\n";
}

std::string hugeSvg() {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16000\" height=\"16000\">"
         "<rect width=\"16000\" height=\"16000\" fill=\"red\"/></svg>";
}

// Each group shows the one before ten times.
std::string svgOfGroups() {
  std::string file =
      "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
      "width=\"4000\" height=\"4000\"><defs><g id=\"g0\"><circle r=\"4000\" opacity=\"0.5\"/></g>";
  for (int i = 1; i < 12; ++i) {
    const std::string use = "<use xlink:href=\"#g" + std::to_string(i - 1) + "\" opacity=\"0.9\"/>";
    file += "<g id=\"g" + std::to_string(i) + "\">" + repeated(use, 10) + "</g>";
  }
  return file + "</defs><use xlink:href=\"#g11\"/></svg>";
}

std::string svgOfEntities() {
  std::string file = "<?xml version=\"1.0\"?><!DOCTYPE svg [<!ENTITY e0 \"aaaaaaaaaa\">";
  for (int i = 1; i < 10; ++i) {
    const std::string reference = "&e" + std::to_string(i - 1) + ";";
    file += "<!ENTITY e" + std::to_string(i) + " \"" + repeated(reference, 10) + "\">";
  }
  return file +
         "]><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"><text>&e9;"
         "</text></svg>";
}

// --- GIF ---

std::string gif(std::uint32_t side, int frames) {
  const std::string palette(6, '\x55');
  const std::string control("\x21\xF9\x04\x08\x01\x00\x00\x00", 8);  // redraws the background
  const std::string picture = "," + zeros(4) + little16(side) + little16(side) + zeros(1) +
                              std::string("\x02\x02\x44\x01\x00", 5);
  return "GIF89a" + little16(side) + little16(side) + std::string("\x80\0\0", 3) + palette +
         repeated(control + picture, static_cast<std::size_t>(frames)) + ";";
}

// --- JPEG ---

std::string jpegSegment(char marker, const std::string& payload) {
  return std::string{'\xFF', marker} + big16(payload.size() + 2) + payload;
}

std::string jpegFrame(char marker, std::uint32_t width, std::uint32_t height) {
  std::string components;
  for (const char id : {'\1', '\2', '\3'}) components += id + std::string("\x11\0", 2);
  return jpegSegment(marker, "\x08" + big16(height) + big16(width) + "\x03" + components);
}

std::string jpegQuantization() {
  return jpegSegment('\xDB', zeros(1) + repeated("\x10", 64));
}

// The only code of a table, one bit long.
std::string jpegTable(char classAndId, char symbol) {
  return jpegSegment('\xC4', std::string{classAndId, '\1'} + zeros(15) + symbol);
}

// Starts the scan of one component and the coefficients FROM to TO.
std::string jpegScan(char component, char from, char to, char approximation = '\0') {
  return jpegSegment('\xDA', std::string{'\1', component, '\0', from, to, approximation});
}

constexpr char kBaseline = '\xC0';
constexpr char kProgressive = '\xC2';

std::string jpegWith(const std::string& segments, std::uint32_t side) {
  return "\xFF\xD8" + segments + jpegQuantization() + jpegFrame(kBaseline, side, side) +
         jpegTable('\x00', '\0') + jpegTable('\x10', '\0') +
         jpegSegment('\xDA', "\x03" + std::string("\1\0\2\0\3\0\0\x3F\0", 9)) + zeros(64) +
         "\xFF\xD9";
}

// Every scan skips 32767 blocks per code.
std::string jpegOfScans(std::uint32_t side, std::size_t rounds) {
  constexpr char kLongestRun = '\xE0';
  std::string file = "\xFF\xD8" + jpegQuantization() + jpegFrame(kProgressive, side, side) +
                     jpegTable('\x00', '\0') + jpegTable('\x10', kLongestRun) +
                     jpegScan('\1', 0, 0) + zeros(64);
  // A code of one zero bit and 14 bits of the run's length.
  Bits runs;
  for (std::uint32_t blocks = 0; blocks < side * side / 64; blocks += 32767)
    runs.put(0, 1).put(0x3FFE, 14);
  std::string data;
  for (const char c : runs.bytes()) data += c == '\xFF' ? std::string("\xFF\0", 2) : std::string{c};
  std::string scans;
  for (char i = 1; i < 64; ++i) scans += jpegScan('\1', i, i) + data;
  return file + repeated(scans, rounds) + "\xFF\xD9";
}

std::string jpegOfSegments() {
  return jpegWith(repeated(jpegSegment('\xFE', "x"), 1000000), 16);
}

std::string hugeLosslessJpeg() {
  return "\xFF\xD8" + jpegFrame('\xF7', kSide, kSide) +
         jpegSegment('\xDA', "\x03" + std::string("\1\0\2\0\3\0\0\2\0", 9)) + zeros(64) +
         "\xFF\xD9";
}

// --- TIFF, and Exif in other formats ---

enum TiffType { kTiffText = 2, kTiffShort = 3, kTiffLong = 4, kTiffDouble = 12 };

std::string tiffEntry(std::uint32_t tag, TiffType type, std::uint32_t count, std::uint32_t value) {
  return little16(tag) + little16(type) + little32(count) + little32(value);
}

// A directory right behind the header, and DATA behind it.
std::string tiff(const std::string& entries, const std::string& data = "") {
  return "II*" + zeros(1) + little32(8) + little16(entries.size() / 12) + entries + little32(0) +
         data;
}

std::uint32_t offsetBehind(std::size_t entries) {
  return static_cast<std::uint32_t>(8 + 2 + 12 * entries + 4);
}

std::string tiffSize(std::uint32_t side) {
  return tiffEntry(256, kTiffShort, 1, side) + tiffEntry(257, kTiffShort, 1, side);
}

std::string tiffPixels() {
  return tiffEntry(259, kTiffShort, 1, 1) + tiffEntry(262, kTiffShort, 1, 2) +
         tiffEntry(273, kTiffLong, 1, 8) + tiffEntry(277, kTiffShort, 1, 4) +
         tiffEntry(278, kTiffLong, 1, kSide) + tiffEntry(279, kTiffLong, 1, 64);
}

// Every text that a TIFF file may have, and all are the same megabytes.
std::string tiffOfTexts() {
  constexpr std::uint32_t kTags[] = {269, 270, 271, 272, 285, 305, 306, 315, 316, 33432};
  constexpr std::uint32_t kLength = 32 * kMiB;
  std::string entries = tiffSize(16);
  for (const std::uint32_t tag : kTags)
    entries += tiffEntry(tag, kTiffText, kLength, offsetBehind(std::size(kTags) + 2));
  return tiff(entries, repeated("a", kLength));
}

std::string tiffOfNumbers() {
  constexpr std::uint32_t kTags[] = {33550, 33922, 34264, 34736};
  constexpr std::uint32_t kCount = 2 * kMiB;
  std::string entries = tiffSize(16);
  for (const std::uint32_t tag : kTags)
    entries += tiffEntry(tag, kTiffDouble, kCount, offsetBehind(std::size(kTags) + 2));
  return tiff(entries, repeated("abcdefgh", kCount));
}

// The directory is its own subdirectory and its own successor.
std::string tiffOfLoops() {
  const std::string entries = tiffSize(16) + tiffEntry(330, kTiffLong, 1, 8);
  return "II*" + zeros(1) + little32(8) + little16(entries.size() / 12) + entries + little32(8);
}

std::string tiffOfHugeCounts() {
  std::string entries = tiffSize(16);
  for (std::uint32_t tag = 258; tag < 2000; ++tag)
    entries += tiffEntry(tag, kTiffText, 0x7FFFFFF0, 8);
  return tiff(entries);
}

// Distinct tags whose numbers are the same ones.
std::string exifOfNumbers(std::size_t entryCount, std::uint32_t numbers, std::uint32_t firstTag) {
  std::string entries;
  for (std::size_t i = 0; i < entryCount; ++i)
    entries += tiffEntry(firstTag + static_cast<std::uint32_t>(i), kTiffShort, numbers,
                         offsetBehind(entryCount));
  return tiff(entries, repeated("\xFF\xFE", numbers));
}

// Every entry is a directory: the same one.
std::string exifOfLoops(std::size_t entries) {
  constexpr std::uint32_t kExifDirectory = 0x8769;
  return tiff(repeated(tiffEntry(kExifDirectory, kTiffLong, 1, 8), entries));
}

std::string exifSegment(const std::string& exif) {
  return jpegSegment('\xE1', "Exif" + zeros(2) + exif);
}

std::string jpegOfExifNumbers() {
  std::string segments;
  for (std::uint32_t tag = 0xB000; tag < 0xFFFF - 2700; tag += 2700)
    segments += exifSegment(exifOfNumbers(2700, 16000, tag));
  return jpegWith(segments, 16);
}

std::string jpegOfExifLoops() {
  return jpegWith(exifSegment(exifOfLoops(5000)), 16);
}

std::string webpWithExif(const std::string& exif) {
  const std::string size = littleEndian(15, 3);
  return webp(riffChunk("VP8X", std::string("\x08\0\0\0", 4) + size + size) +
              riffChunk("VP8 ", vp8KeyFrame(16)) + riffChunk("EXIF", exif));
}

// --- JPEG 2000 ---

std::string jpeg2000(std::uint32_t side, std::uint32_t tileSide) {
  std::string size = big16(0) + big32(side) + big32(side) + zeros(8) + big32(tileSide) +
                     big32(tileSide) + zeros(8) + big16(4);
  size += repeated("\x0F\x01\x01", 4);
  const std::string style = zeros(2) + big16(1) + std::string("\0\5\4\4\0\0", 6);
  const std::string quantization = "\x40" + repeated("\x40", 16);
  return "\xFF\x4F" + jpegSegment('\x51', size) + jpegSegment('\x52', style) +
         jpegSegment('\x5C', quantization) +
         jpegSegment('\x90', big16(0) + big32(0) + std::string("\0\1", 2)) + "\xFF\x93" +
         zeros(16 * kKiB) + "\xFF\xD9";
}

std::string inJp2(const std::string& codestream) {
  const std::string header =
      box("ihdr", big32(kSide) + big32(kSide) + big16(4) + "\x0F\x07" + zeros(2));
  return box("jP  ", "\r\n\x87\n") + box("ftyp", "jp2 " + big32(0) + "jp2 ") +
         box("jp2h", header + box("colr", std::string("\1\0\0", 3) + big32(16))) +
         box("jp2c", codestream);
}

}  // namespace

std::string hugePng() {
  return pngHeader(kSide, 16, 6) + pngChunk("IDAT", deflated(zeros(4))) + pngChunk("IEND", "");
}

std::string hugeJpeg() {
  // FFmpeg wants a byte for every four blocks.
  constexpr std::size_t kBlocks = std::size_t{kSide / 8} * (kSide / 8);
  return jpegWith("", kSide) + zeros(kBlocks / 4);
}

std::string hugeJpeg2000() {
  return jpeg2000(kSide, kSide);
}

std::string hugeTiff() {
  constexpr std::size_t kEntries = 9;
  const std::string bits = tiffEntry(258, kTiffShort, 4, offsetBehind(kEntries));
  return tiff(tiffSize(kSide) + bits + tiffPixels(), repeated(little16(16), 4) + zeros(64));
}

std::string hugeGif() {
  return gif(kSide, 1);
}

std::string hugeVp8() {
  return vp8KeyFrame(kSide);
}

std::string sunRasterAbort() {
  return "\x59\xA6\x6A\x95" + big32(16000) + big32(16000) + big32(32) + big32(0) + big32(2) +
         big32(0) + big32(0) + std::string("\x80\xFF\0\x80\xFF\0\x80\xFF", 8);
}

HostileFiles hostilePictures() {
  HostileFiles files = {
      {"hugeHeader.png", hugePng},
      {"hugeHeaderAsVideo.mp4", hugePng},
      {"hugeHeaderAsSong.mp3", hugePng},
      {"hugeHeader.sgi", hugeSgi},
      {"hugeHeader.tiff", hugeTiff},
      {"hugeHeader.bmp", hugeBmp},
      {"hugeHeader.tga", hugeTga},
      {"hugeHeader.dds", hugeDds},
      {"hugeHeader.qoi", hugeQoi},
      {"hugeLossless.webp", hugeLosslessWebp},
      {"hugeLossy.webp", hugeLossyWebp},
      {"hugeFrames.webp", animatedWebp},
      {"hugeHeader.pcx", hugePcx},
      {"hugeHeader.ppm", [] { return "P6\n" + sideText() + "\n65535\n" + zeros(64); }},
      {"hugeText.ppm", [] { return "P3\n" + sideText() + "\n255\n1 2 3 "; }},
      {"hugeFloats.pfm", [] { return "PF\n" + sideText() + "\n-1.0\n" + zeros(64); }},
      {"hugeHeader.pam", hugePam},
      {"hugeHeader.psd", hugePsd},
      {"hugeHeader.xwd", hugeXwd},
      {"hugeHeader.exr", hugeExr},
      {"hugeHeader.dpx", hugeDpx},
      {"hugeHeader.xpm", hugeXpm},
      {"hugeHeader.xbm", hugeXbm},
      {"hugeHeader.svg", hugeSvg},
      {"hugeHeaderAsVideo.mkv", hugeSvg},
      {"nestedGroups.svg", svgOfGroups},
      {"nestedEntities.svg", svgOfEntities},
      {"inflatingText.png", pngInflatingText},
      {"oddInflatingText.png", pngOddInflatingText},
      {"inflatingTexts.png", pngInflatingTexts},
      {"inflatingInternationalText.png", pngInflatingInternationalText},
      {"inflatingColourProfile.png", pngInflatingColourProfile},
      {"inflatingPixels.png", pngInflatingPixels},
      {"manyTexts.png", pngManyTexts},
      {"manyFrames.png", [] { return animatedPng(1, 100000); }},
      {"hugeFrames.png", [] { return animatedPng(kSide / 2, 1000); }},
      {"huge.gif", hugeGif},
      {"hugeFrames.gif", [] { return gif(kSide / 2, 1000); }},
      {"manyFrames.gif", [] { return gif(1, 200000); }},
      {"huge.jpg", hugeJpeg},
      {"tall.jpg", [] { return "\xFF\xD8" + jpegFrame(kBaseline, 4000, 65500) + zeros(64); }},
      {"scans.jpg", [] { return jpegOfScans(kSide, 60); }},
      {"scansOfModeratePicture.jpg", [] { return jpegOfScans(4000, 600); }},
      {"segments.jpg", jpegOfSegments},
      {"hugeLossless.jpg", hugeLosslessJpeg},
      {"exifNumbers.jpg", jpegOfExifNumbers},
      {"exifLoops.jpg", jpegOfExifLoops},
      {"exifNumbers.webp", [] { return webpWithExif(exifOfNumbers(20000, 500000, 0)); }},
      {"exifLoops.webp", [] { return webpWithExif(exifOfLoops(65000)); }},
      {"texts.tiff", tiffOfTexts},
      {"numbers.tiff", tiffOfNumbers},
      {"loops.tiff", tiffOfLoops},
      {"hugeCounts.tiff", tiffOfHugeCounts},
      {"huge.j2k", hugeJpeg2000},
      {"tiles.j2k", [] { return jpeg2000(kSide, 64); }},
      {"huge.jp2", [] { return inJp2(hugeJpeg2000()); }},
  };
  // Content decides what FFmpeg reads, not the name.
  for (const char* extension :
       {"mp4", "jpg", "mp3", "mkv", "avi", "ts", "wav", "flac", "dsf", "png"})
    files.push_back({std::string("sunRaster.") + extension, sunRasterAbort});
  return files;
}

}  // namespace kolum::test
