// What is read from the headers of pictures, and what is left to FFmpeg. Every answer is also
// compared with FFmpeg's own.
#include "read/headers/picture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "read/headers/picture_reading.h"
#include "support/mp4_builder.h"
#include "support/picture_builder.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

// The answer for a whole picture, which is the same in memory and in a file.
std::string answer(const std::string& bytes) {
  const TempDir folder;
  const std::string path = folder.write("picture.jpg", bytes);
  std::string words = headerAnswer(bytes);
  EXPECT_EQ(headerAnswerForFile(path), words);
  if (words != kNone) {
    EXPECT_EQ(ffmpegAnswer(path), words);
  }
  return words;
}

// The same, if FFmpeg would need gigabytes.
std::string answerWithoutFfmpeg(const std::string& bytes) {
  return headerAnswer(bytes);
}

// ---- PNG

constexpr unsigned kGray = 0;
constexpr unsigned kRgb = 2;
constexpr unsigned kPalette = 3;
constexpr unsigned kGrayAlpha = 4;
constexpr unsigned kRgbAlpha = 6;

TEST(PngHeader, GivesThePixelFormatOfEveryColourTypeAndDepth) {
  struct Row {
    unsigned colourType;
    unsigned depth;
    const char* format;
  };
  constexpr Row kRows[] = {
      {kGray, 1, "monob"},
      {kGray, 2, "gray"},
      {kGray, 4, "gray"},
      {kGray, 8, "gray"},
      {kGray, 16, "gray16be"},
      {kRgb, 8, "rgb24"},
      {kRgb, 16, "rgb48be"},
      {kPalette, 1, "pal8"},
      {kPalette, 2, "pal8"},
      {kPalette, 4, "pal8"},
      {kPalette, 8, "pal8"},
      {kGrayAlpha, 8, "ya8"},
      {kRgbAlpha, 8, "rgba"},
      {kGrayAlpha, 16, "ya16be"},
      {kRgbAlpha, 16, "rgba64be"},
      {kRgb, 4, "none"},
      {kRgb, 1, "none"},
      {kPalette, 16, "none"},
      {kGrayAlpha, 4, "none"},
      {kRgbAlpha, 4, "none"},
      {1, 8, "none"},
      {kGray, 3, "none"},
      {7, 8, "none"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.colourType << ", " << row.depth << " bits");
    const std::string found = answer(png({.depth = row.depth, .colourType = row.colourType}));
    EXPECT_EQ(found, row.format == kNone ? "none" : "20 x 10 " + std::string(row.format));
  }
}

TEST(PngHeader, TurnsATransparentColourIntoAlpha) {
  const std::string gray = pngChunk("tRNS", std::string(2, '\0'));
  const std::string rgb = pngChunk("tRNS", std::string(6, '\0'));
  EXPECT_EQ(answer(png({.depth = 4, .colourType = kGray}, gray)), "20 x 10 ya8");
  EXPECT_EQ(answer(png({.depth = 16, .colourType = kGray}, gray)), "20 x 10 ya16be");
  EXPECT_EQ(answer(png({.depth = 8, .colourType = kRgb}, rgb)), "20 x 10 rgba");
  EXPECT_EQ(answer(png({.depth = 16, .colourType = kRgb}, rgb)), "20 x 10 rgba64be");
  EXPECT_EQ(answer(png({.depth = 8, .colourType = kPalette}, gray)), "20 x 10 pal8");
}

TEST(PngHeader, LeavesTransparencyThatFfmpegMayRefuse) {
  const std::string wrong = pngChunk("tRNS", std::string(3, '\0'));
  EXPECT_EQ(answer(png({.depth = 1, .colourType = kGray}, pngChunk("tRNS", "ab"))), kNone);
  EXPECT_EQ(answer(png({.depth = 8, .colourType = kGray}, wrong)), kNone);
  EXPECT_EQ(answer(png({.depth = 8, .colourType = kRgb}, wrong)), kNone);
  EXPECT_EQ(answer(png({.depth = 8, .colourType = kRgbAlpha}, pngChunk("tRNS", "abcdef"))), kNone);
}

TEST(PngHeader, GivesTheAspectOfPixels) {
  const auto pixels = [](unsigned x, unsigned y) {
    return png({}, pngChunk("pHYs", bigEndian(x, 4) + bigEndian(y, 4) + bigEndian(1, 1)));
  };
  EXPECT_EQ(answer(pixels(4000, 3000)), "20 x 10 rgb24, 4:3");
  EXPECT_EQ(answer(pixels(2835, 2835)), "20 x 10 rgb24, 1:1");
  EXPECT_EQ(answer(pixels(0, 3000)), kNone);
  EXPECT_EQ(answer(pixels(3000, 0)), kNone);
  EXPECT_EQ(answer(pixels(0x80000000, 1)), kNone);
  EXPECT_EQ(answer(png({}, pngChunk("pHYs", bigEndian(1, 4)))), kNone);
}

TEST(PngHeader, SkipsOtherChunks) {
  const std::string chunks = pngChunk("gAMA", bigEndian(45455, 4)) + pngChunk("sRGB", "x") +
                             pngChunk("sBIT", "\x05\x06\x05") + pngChunk("tEXt", "a\0b") +
                             pngChunk("iCCP", std::string(700, 'x')) +
                             pngChunk("eXIf", std::string(30, 'x')) + pngChunk("????", "");
  EXPECT_EQ(answer(png({}, chunks)), "20 x 10 rgb24");
}

TEST(PngHeader, FollowsLongChunks) {
  for (const std::size_t size : {5'000U, 300'000U}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(answer(png({}, pngChunk("iTXt", std::string(size, 'x')))), "20 x 10 rgb24");
  }
}

TEST(PngHeader, GivesUpAfterMegabytesOfChunks) {
  const TempDir folder;
  const std::string file = png({}, pngChunk("iTXt", std::string(5'000'000, 'x')));
  EXPECT_EQ(headerAnswerForFile(folder.write("long.png", file)), kNone);
}

TEST(PngHeader, LeavesUnusualHeaders) {
  EXPECT_EQ(answer(png({.compression = 1})), kNone);
  EXPECT_EQ(answer(png({.filter = 1})), kNone);
  EXPECT_EQ(answer(png({.interlacing = 2})), kNone);
  EXPECT_EQ(answer(png({.interlacing = 1})), "20 x 10 rgb24");
  EXPECT_EQ(answer(png({.width = 0})), kNone);
  EXPECT_EQ(answer(png({.height = 0})), kNone);
  EXPECT_EQ(answer(png({}, pngChunk("sBIT", "\x09\x06\x05"))), kNone);
  EXPECT_EQ(answer(png({}, pngChunk("sBIT", "\x08"))), kNone);
  EXPECT_EQ(answer(png({}, pngChunk("IHDR", std::string(13, '\1')))), kNone);
}

TEST(PngHeader, LeavesAnimations) {
  EXPECT_EQ(answer(png({}, pngChunk("acTL", bigEndian(1, 4) + bigEndian(0, 4)))), kNone);
  EXPECT_EQ(answer(png({}, pngChunk("fcTL", std::string(26, '\0')))), kNone);
}

TEST(PngHeader, LeavesFilesThatEndBeforeTheirData) {
  const std::string whole = png({});
  const std::size_t data = whole.find("IDAT");
  EXPECT_EQ(answer(whole.substr(0, data + 4 + 4 + 4)), "20 x 10 rgb24");
  for (std::size_t length = 0; length < data + 4 + 4 + 4; ++length)
    EXPECT_EQ(answer(whole.substr(0, length)), kNone) << length;
}

// FFmpeg would allocate two gigabytes before it notices.
TEST(PngHeader, AnswersForHugePicturesWithoutPixels) {
  EXPECT_EQ(answerWithoutFfmpeg(png({.width = 16000, .height = 16000, .depth = 16})),
            "16000 x 16000 rgb48be");
  EXPECT_EQ(answerWithoutFfmpeg(png({.width = 16256, .height = 16256})), kNone)
      << "beyond FFmpeg's bound";
  EXPECT_EQ(answerWithoutFfmpeg(png({.width = 0xFFFFFFFF, .height = 0xFFFFFFFF})), kNone);
}

// ---- JPEG

std::string photo(const JpegShape& shape, const std::string& segments = jpegFileHeader()) {
  return jpeg(segments + jpegFrame(shape));
}

TEST(JpegHeader, GivesThePixelFormatOfEverySampling) {
  struct Row {
    std::vector<unsigned> sampling;
    const char* format;
  };
  const Row rows[] = {
      {{0x11}, "gray"},
      {{0x22}, "gray"},
      {{0x21}, "gray"},
      {{0x11, 0x11, 0x11}, "yuvj444p"},
      {{0x22, 0x22, 0x22}, "yuvj444p"},
      {{0x22, 0x11, 0x11}, "yuvj420p"},
      {{0x21, 0x11, 0x11}, "yuvj422p"},
      {{0x12, 0x11, 0x11}, "yuvj440p"},
      {{0x41, 0x11, 0x11}, "yuvj411p"},
      {{0x22, 0x21, 0x11}, "none"},
      {{0x33, 0x11, 0x11}, "none"},
      {{0x11, 0x11}, "none"},
      {{0x11, 0x01, 0x11}, "none"},
      {{0x11, 0x00, 0x00}, "none"},
      {{0x11, 0x11, 0x11, 0x11}, "none"},
  };
  for (const Row& row : rows) {
    JpegShape shape;
    shape.components.clear();
    for (const unsigned sampling : row.sampling)
      shape.components.push_back({static_cast<unsigned>(shape.components.size() + 1), sampling});
    SCOPED_TRACE(testing::PrintToString(row.sampling));
    EXPECT_EQ(answer(photo(shape)),
              row.format == kNone ? "none" : "20 x 10 " + std::string(row.format) + ", 1:1");
  }
}

TEST(JpegHeader, GivesTheFormatsOfOtherColours) {
  const std::vector<JpegComponent> three = {{1, 0x11}, {2, 0x11}, {3, 0x11}};
  const std::vector<JpegComponent> named = {{'R', 0x11}, {'G', 0x11}, {'B', 0x11}};
  const std::vector<JpegComponent> four = {{1, 0x11}, {2, 0x11}, {3, 0x11}, {4, 0x11}};
  const auto colours = [](const std::vector<JpegComponent>& components, const std::string& more) {
    return answer(photo({.components = components}, jpegFileHeader() + more));
  };
  EXPECT_EQ(colours(three, jpegAdobe(0)), "20 x 10 gbrp, 1:1");
  EXPECT_EQ(colours(three, jpegAdobe(1)), "20 x 10 yuvj444p, 1:1");
  EXPECT_EQ(colours(named, ""), "20 x 10 gbrp, 1:1");
  EXPECT_EQ(colours(four, jpegAdobe(0)), "20 x 10 gbrap, 1:1");
  EXPECT_EQ(colours(four, jpegAdobe(2)), "20 x 10 yuva444p, 1:1");
  EXPECT_EQ(colours(three, jpegSegment(0xFE, "CS=ITU601")), "20 x 10 yuv444p, 1:1");
  EXPECT_EQ(colours(three, jpegSegment(0xED, "Adobe_CM settings")), "20 x 10 yuvj444p, 1:1");
}

TEST(JpegHeader, LeavesUnusualColours) {
  const std::vector<JpegComponent> named = {{'R', 0x22}, {'G', 0x11}, {'B', 0x11}};
  const std::vector<JpegComponent> inks = {{'C', 0x11}, {'M', 0x11}, {'Y', 0x11}, {'K', 0x11}};
  EXPECT_EQ(answer(photo({.components = named})), kNone);
  EXPECT_EQ(answer(photo({.components = inks}, jpegFileHeader() + jpegAdobe(2))), kNone);
  EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegAdobe(0))), kNone);
  EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xEE, "Adobe"))), kNone);
}

TEST(JpegHeader, GivesTheAspectOfPixels) {
  EXPECT_EQ(answer(photo({}, jpegFileHeader(4, 3))), "20 x 10 yuvj420p, 4:3");
  EXPECT_EQ(answer(photo({}, jpegFileHeader(300, 300))), "20 x 10 yuvj420p, 1:1");
  EXPECT_EQ(answer(photo({}, jpegFileHeader(0, 300))), "20 x 10 yuvj420p");
  EXPECT_EQ(answer(photo({}, jpegSegment(0xE1, std::string("Exif\0\0II*\0", 10)))),
            "20 x 10 yuvj420p");
}

TEST(JpegHeader, ReadsAllProcessesThatAreCommon) {
  EXPECT_EQ(answer(photo({.marker = 0xC1})), "20 x 10 yuvj420p, 1:1");
  EXPECT_EQ(answer(photo({.marker = 0xC2})), "20 x 10 yuvj420p, 1:1");
  for (const unsigned marker : {0xC3U, 0xC5U, 0xC9U, 0xCAU, 0xF7U})
    EXPECT_EQ(answer(photo({.marker = marker})), kNone) << marker;
  EXPECT_EQ(answer(photo({.marker = 0xC1, .depth = 12})), kNone);
}

TEST(JpegHeader, SkipsSegmentsThatDoNotMatter) {
  const std::string tables = jpegSegment(0xDB, std::string(1, '\0') + std::string(64, 'q')) +
                             jpegSegment(0xDB, "\x11" + std::string(128, 'q')) +
                             jpegSegment(0xC4, std::string(60, 'h')) + jpegSegment(0xDD, "ab");
  const std::string segments =
      jpegFileHeader() + jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/ \xFF\xC0\xFF\xD8") +
      jpegSegment(0xE2, std::string("ICC_PROFILE\0\1\1", 14) + std::string(500, '\xFF')) +
      jpegSegment(0xFE, "a comment \xFF\xC0") + "\xFF\xFF" + tables;
  EXPECT_EQ(answer(photo({}, segments)), "20 x 10 yuvj420p, 1:1");
}

TEST(JpegHeader, FollowsManyLongSegments) {
  const std::string piece =
      jpegSegment(0xE1, "http://ns.adobe.com/xmp/extension/ " + std::string(60'000, 'x'));
  std::string segments = jpegFileHeader();
  for (const int count : {1, 9, 30}) {
    for (int i = 0; i < count; ++i) segments += piece;
    EXPECT_EQ(answer(photo({}, segments)), "20 x 10 yuvj420p, 1:1") << count;
  }
}

// Wherever the first read of a file ends.
TEST(JpegHeader, IsReadAcrossTheEndOfTheFirstRead) {
  for (std::size_t size = 3900; size < 4150; ++size) {
    const TempDir folder;
    const std::string file =
        photo({}, jpegFileHeader() + jpegSegment(0xE1, std::string(size, 'x')));
    EXPECT_EQ(headerAnswerForFile(folder.write("a.jpg", file)), "20 x 10 yuvj420p, 1:1") << size;
  }
}

TEST(JpegHeader, LeavesSegmentsThatMayChangeTheAnswer) {
  const std::string contents[] = {
      "AVI1 interlaced", "LJIF lossless ......", "colr.", "xfrm.", "_JPS stereo ....", "abc", ""};
  for (const std::string& content : contents) {
    SCOPED_TRACE(content);
    EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xE3, content))), kNone);
  }
  for (const char* comment : {"AVID", "MULTISCOPE II", "CS=ITU601x"}) {
    SCOPED_TRACE(comment);
    EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xFE, comment))), kNone);
  }
}

// FFmpeg looks for markers in these.
TEST(JpegHeader, LeavesSegmentsThatFfmpegDoesNotSkipAsAWhole) {
  const std::string thumbnail =
      jpegSegment(0xE0, std::string("JFIF\0\1\2\0\0\1\0\1\2\2", 14) + std::string(12, 'x'));
  EXPECT_EQ(answer(photo({}, thumbnail)), kNone);
  EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xC4, "ab\xFF\xC0"))), kNone);
  EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xDD, "\xFF\xC0"))), kNone);
  // The length ends with 0xFF.
  const std::string table = "\xC0" + std::string(0xFF - 2 - 1, 'h');
  EXPECT_EQ(answer(photo({}, jpegFileHeader() + jpegSegment(0xC4, table))), kNone);
  const std::string scan = jpegSegment(0xDA, jpegFrame({.width = 40}));
  EXPECT_EQ(answer("\xFF\xD8" + jpegFileHeader() + jpegFrame({}) + scan + "data\xFF\xD9"), kNone);
}

TEST(JpegHeader, LeavesTablesThatFfmpegCannotRead) {
  const auto table = [](const std::string& content) {
    return answer(photo({}, jpegFileHeader() + jpegSegment(0xDB, content)));
  };
  EXPECT_EQ(table(std::string(64, '\0')), kNone);
  EXPECT_EQ(table("\x04" + std::string(64, '\0')), kNone);
  EXPECT_EQ(table("\x20" + std::string(64, '\0')), kNone);
}

TEST(JpegHeader, LeavesWhatFollowsTheFrameHeader) {
  for (const std::string& late :
       {jpegFileHeader(4, 3), jpegAdobe(0), jpegSegment(0xFE, "x"), jpegFrame({.width = 40})}) {
    EXPECT_EQ(answer(jpeg(jpegFileHeader() + jpegFrame({}) + late)), kNone);
  }
  EXPECT_EQ(answer(jpeg(jpegFileHeader() + jpegFrame({}) + jpegSegment(0xC4, "tables"))),
            "20 x 10 yuvj420p, 1:1");
}

TEST(JpegHeader, LeavesPicturesWithUnusualScans) {
  const std::string begin = "\xFF\xD8" + jpegFileHeader() + jpegFrame({});
  const std::string end = "\xFF\xD9";
  const std::string plain = begin + jpegScan("data \xFF\xD0 data" + std::string("\xFF\0", 2));
  EXPECT_EQ(answer(plain + end), "20 x 10 yuvj420p, 1:1");
  EXPECT_EQ(answer(plain + jpegScan() + end), "20 x 10 yuvj420p, 1:1");
  EXPECT_EQ(answer(plain), "20 x 10 yuvj420p, 1:1") << "cut off";
  EXPECT_EQ(answer(plain + jpegFrame({.width = 40}) + jpegScan() + end), kNone);
  EXPECT_EQ(answer(plain + jpegFileHeader(4, 3) + jpegScan() + end), kNone);
  EXPECT_EQ(answer(plain + "\xFF\x02" + end), kNone);
  EXPECT_EQ(answer(plain + end + std::string(100, '\0')), "20 x 10 yuvj420p, 1:1");
  EXPECT_EQ(answer(plain + end + plain + end), kNone) << "a second picture";
}

TEST(JpegHeader, LeavesPicturesWithoutFrameOrScan) {
  EXPECT_EQ(answer(jpeg(jpegFileHeader())), kNone);
  EXPECT_EQ(answer("\xFF\xD8" + jpegFileHeader() + jpegFrame({})), kNone);
  EXPECT_EQ(answer("\xFF\xD8" + jpegFileHeader() + jpegFrame({}) + "\xFF\xD9"), kNone);
  EXPECT_EQ(answer(photo({.width = 0})), kNone);
  EXPECT_EQ(answer(photo({.height = 0})), kNone);
}

// FFmpeg recognises it by its end then.
TEST(JpegHeader, WantsTheEndOfPicturesWithoutFileHeader) {
  const std::string whole = jpeg(jpegFrame({}));
  EXPECT_EQ(answer(whole), "20 x 10 yuvj420p");
  EXPECT_EQ(answer(whole.substr(0, whole.size() - 1)), kNone);
}

TEST(JpegHeader, WantsTwoBitsForEachBlock) {
  const std::size_t size = photo({}).size();
  const auto width = static_cast<unsigned>(size * 4 * 8);
  EXPECT_EQ(answer(photo({.width = width, .height = 8})),
            std::to_string(width) + " x 8 yuvj420p, 1:1");
  EXPECT_EQ(answer(photo({.width = width + 1, .height = 8})), kNone);
  EXPECT_EQ(answer(photo({.width = width + 1, .height = 8, .marker = 0xC2})),
            std::to_string(width + 1) + " x 8 yuvj420p, 1:1")
      << "but not of progressive pictures";
}

TEST(JpegHeader, AnswersForHugePicturesWithoutPixels) {
  EXPECT_EQ(answerWithoutFfmpeg(photo({.width = 16000, .height = 16000, .marker = 0xC2})),
            "16000 x 16000 yuvj420p, 1:1");
  EXPECT_EQ(answerWithoutFfmpeg(photo({.width = 65535, .height = 65535, .marker = 0xC2})), kNone);
}

TEST(JpegHeader, IsOnlyReadFromFilesWithPicturesNames) {
  const TempDir folder;
  for (const char* name : {"a.jpg", "a.JPEG", "a.png", "a.tif", "a.b/c.jpg"}) {
    SCOPED_TRACE(name);
    const std::string path = folder.write(name, photo({}));
    EXPECT_EQ(headerAnswerForFile(path), "20 x 10 yuvj420p, 1:1");
    EXPECT_EQ(ffmpegAnswer(path), "20 x 10 yuvj420p, 1:1");
  }
  // FFmpeg takes these for something else, or might do so.
  for (const char* name : {"a", "a.txt", "a.y", "a.mp3", "a.dat", "b.jpg/c"})
    EXPECT_EQ(headerAnswerForFile(folder.write(name, photo({}))), kNone) << name;
}

// Most releases of FFmpeg let it overrule the first.
TEST(JpegHeader, LeavesSmallFilesWithASecondFrameHeaderAnywhere) {
  const std::string begin = "\xFF\xD8" + jpegFileHeader() + jpegFrame({});
  const std::string second = jpegFrame({.width = 40}) + jpegScan() + "\xFF\xD9";
  for (const std::size_t size : {100U, 5'000U, 60'000U}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(answer(begin + jpegScan(std::string(size, 'x')) + second), kNone);
    EXPECT_EQ(answer(begin + jpegScan(std::string(size, 'x'))), "20 x 10 yuvj420p, 1:1");
  }
}

// ---- GIF

TEST(GifHeader, GivesSizeAndAspect) {
  EXPECT_EQ(answer(gif(35, 21)), "35 x 21 bgra");
  EXPECT_EQ(answer(gif(35, 21, 49)), "35 x 21 bgra, 1:1");
  EXPECT_EQ(answer(gif(1, 1, 49)), "1 x 1 bgra, 1:1");
  EXPECT_EQ(answer(gif(35, 21, 1)), "35 x 21 bgra, 1:4");
  EXPECT_EQ(answer(gif(15, 21, 1)), kNone) << "nearly nothing is left of one side";
}

TEST(GifHeader, AnswersForDamagedFrames) {
  const std::string whole = gif(35, 21);
  EXPECT_EQ(answer(whole.substr(0, 14)), "35 x 21 bgra");
  EXPECT_EQ(answer(whole.substr(0, 13) + "garbage"), "35 x 21 bgra");
}

TEST(GifHeader, LeavesImpossibleSizesAndCutHeaders) {
  EXPECT_EQ(answer(gif(0, 21)), kNone);
  EXPECT_EQ(answer(gif(35, 0)), kNone);
  EXPECT_EQ(answer(gif(40000, 40000)), kNone);
  EXPECT_EQ(answer(gif(35, 21).substr(0, 12)), kNone);
  std::string withPalette = gif(35, 21);
  withPalette[10] = '\x87';  // 256 colours
  EXPECT_EQ(answer(withPalette), kNone);
}

// ---- BMP

TEST(BmpHeader, GivesThePixelFormatOfEveryDepth) {
  struct Row {
    unsigned depth;
    std::size_t palette;
    const char* format;
  };
  constexpr Row kRows[] = {{1, 8, "pal8"},      {4, 64, "pal8"},  {8, 1024, "pal8"}, {8, 0, "gray"},
                           {16, 0, "rgb555le"}, {24, 0, "bgr24"}, {32, 0, "bgra"},   {1, 0, "none"},
                           {2, 16, "none"},     {64, 0, "none"},  {0, 0, "none"}};
  for (const Row& row : kRows)
    for (const unsigned infoSize : {12U, 40U, 56U, 64U, 108U, 124U}) {
      SCOPED_TRACE(testing::Message() << row.depth << " bits, header of " << infoSize);
      const std::string found =
          answer(bmp({.depth = row.depth, .infoSize = infoSize, .palette = row.palette}));
      EXPECT_EQ(found, row.format == kNone ? "none" : "20 x 10 " + std::string(row.format));
    }
}

TEST(BmpHeader, GivesThePixelFormatOfMasks) {
  constexpr std::uint32_t kFirst = 0xFF;
  constexpr std::uint32_t kSecond = 0xFF00;
  constexpr std::uint32_t kThird = 0xFF0000;
  constexpr std::uint32_t kFourth = 0xFF000000;
  struct Row {
    unsigned depth;
    std::vector<std::uint32_t> masks;
    const char* format;
  };
  const Row rows[] = {
      {32, {kThird, kSecond, kFirst, 0}, "bgr0"},
      {32, {kThird, kSecond, kFirst, kFourth}, "bgra"},
      {32, {kFirst, kSecond, kThird, 0}, "rgb0"},
      {32, {kFirst, kSecond, kThird, kFourth}, "rgba"},
      {32, {kFourth, kThird, kSecond, 0}, "0bgr"},
      {32, {kFourth, kThird, kSecond, kFirst}, "abgr"},
      {32, {kSecond, kThird, kFourth, 0}, "0rgb"},
      {32, {kSecond, kThird, kFourth, kFirst}, "argb"},
      {16, {0xF800, 0x07E0, 0x001F, 0}, "rgb565le"},
      {16, {0x7C00, 0x03E0, 0x001F, 0x8000}, "rgb555le"},
      {16, {0x0F00, 0x00F0, 0x000F, 0xF000}, "rgb444le"},
      {16, {kFirst, kSecond, 0, 0}, "none"},
      {32, {0xF800, 0x07E0, 0x001F, 0}, "none"},
      {24, {kThird, kSecond, kFirst, 0}, "none"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.masks));
    const BmpShape shape{.depth = row.depth, .compression = 3, .infoSize = 124, .masks = row.masks};
    EXPECT_EQ(answer(bmp(shape)),
              row.format == kNone ? "none" : "20 x 10 " + std::string(row.format));
  }
}

TEST(BmpHeader, GivesTheHeightOfPicturesStoredFromTheTop) {
  EXPECT_EQ(answer(bmp({.height = -10})), "20 x 10 bgr24");
  EXPECT_EQ(answer(bmp({.height = INT32_MIN})), kNone);
  EXPECT_EQ(answer(bmp({.width = -20})), kNone);
  EXPECT_EQ(answer(bmp({.width = 0})), kNone);
}

TEST(BmpHeader, ReadsPackedPixels) {
  EXPECT_EQ(answer(bmp({.depth = 8, .compression = 1, .palette = 1024})), "20 x 10 pal8");
  EXPECT_EQ(answer(bmp({.depth = 4, .compression = 2, .palette = 64})), "20 x 10 pal8");
  EXPECT_EQ(answer(bmp({.depth = 8, .compression = 2, .palette = 1024})), kNone);
  EXPECT_EQ(answer(bmp({.height = -10, .depth = 8, .compression = 1, .palette = 1024})), kNone);
  EXPECT_EQ(answer(bmp({.compression = 4})), kNone) << "JPEG";
}

// FFmpeg ignores the fourth byte of pixels if it is zero everywhere.
TEST(BmpHeader, LeavesPixelsOfFourBytesThatShowNoAlpha) {
  std::string pixels(20 * 10 * 4, '\0');
  EXPECT_EQ(answer(bmp({.depth = 32, .pixels = pixels})), kNone);
  pixels.back() = '\1';
  EXPECT_EQ(answer(bmp({.depth = 32, .pixels = pixels})), "20 x 10 bgra");
  EXPECT_EQ(answer(bmp({.depth = 32, .pixels = std::string(8, '\0')})), "20 x 10 bgra")
      << "too few pixels to look at";
}

TEST(BmpHeader, AnswersForHugePicturesWithoutPixels) {
  EXPECT_EQ(answerWithoutFfmpeg(bmp({.width = 16000, .height = 16000, .depth = 32})),
            "16000 x 16000 bgra");
  EXPECT_EQ(answerWithoutFfmpeg(bmp({.width = 20000, .height = 20000})), kNone);
}

TEST(BmpHeader, LeavesContradictoryHeaders) {
  const auto changed = [](std::size_t at, std::uint32_t value) {
    return answer(bmp({}).replace(at, 4, littleEndian(value, 4)));
  };
  constexpr std::size_t kFileSize = 2;
  constexpr std::size_t kReserved = 6;
  constexpr std::size_t kBegin = 10;
  constexpr std::size_t kInfoSize = 14;
  constexpr std::size_t kPlanes = 26;
  EXPECT_EQ(changed(kFileSize, 54), kNone);
  EXPECT_EQ(changed(kFileSize, 0), kNone);
  EXPECT_EQ(changed(kFileSize, 3000), "20 x 10 bgr24") << "bytes behind the picture";
  EXPECT_EQ(changed(kFileSize, 300000), "20 x 10 bgr24") << "cut off";
  EXPECT_EQ(changed(kReserved, 1), kNone);
  EXPECT_EQ(changed(kBegin, 53), kNone);
  EXPECT_EQ(changed(kBegin, 100000), kNone);
  EXPECT_EQ(changed(kInfoSize, 41), kNone);
  EXPECT_EQ(changed(kPlanes, 24 << 16 | 2), kNone);
}

// ---- TIFF

constexpr unsigned kWhiteIsZero = 0;
constexpr unsigned kBlackIsZero = 1;
constexpr unsigned kTiffRgb = 2;
constexpr unsigned kTiffPalette = 3;
constexpr unsigned kMask = 4;
constexpr unsigned kInk = 5;
constexpr unsigned kYcc = 6;
constexpr unsigned kLab = 8;

TEST(TiffHeader, GivesThePixelFormatOfAllSamples) {
  struct Row {
    unsigned samples;
    unsigned depth;
    unsigned interpretation;
    const char* little;
    const char* big;
  };
  constexpr Row kRows[] = {
      {1, 1, kWhiteIsZero, "monob", "monob"}, {1, 1, kBlackIsZero, "monob", "monob"},
      {1, 2, kBlackIsZero, "pal8", "pal8"},   {1, 4, kBlackIsZero, "pal8", "pal8"},
      {1, 8, kBlackIsZero, "gray", "gray"},   {1, 16, kBlackIsZero, "gray16le", "gray16be"},
      {2, 8, kBlackIsZero, "ya8", "ya8"},     {2, 16, kBlackIsZero, "ya16le", "ya16be"},
      {3, 8, kTiffRgb, "rgb24", "rgb24"},     {3, 16, kTiffRgb, "rgb48le", "rgb48be"},
      {4, 8, kTiffRgb, "rgba", "rgba"},       {4, 16, kTiffRgb, "rgba64le", "rgba64be"},
      {4, 8, kInk, "rgb0", "rgb0"},           {1, 12, kBlackIsZero, "none", "none"},
      {1, 32, kBlackIsZero, "none", "none"},  {3, 4, kTiffRgb, "none", "none"},
      {1, 8, kMask, "none", "none"},          {3, 8, kLab, "none", "none"},
      {5, 8, kInk, "none", "none"},
  };
  for (const Row& row : kRows)
    for (const bool isBig : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.samples << " x " << row.depth << " bits, kind "
                                      << row.interpretation << (isBig ? ", MM" : ", II"));
      const std::string format = isBig ? row.big : row.little;
      EXPECT_EQ(answer(tiff(tiffTags(row.samples, row.depth, row.interpretation), isBig)),
                format == kNone ? format : "20 x 10 " + format);
    }
}

const TiffTags kRgbTags = tiffTags(3, 8, kTiffRgb);

std::string withTag(const TiffTag& tag) {
  return answer(tiff(withTags(kRgbTags, {tag})));
}

TEST(TiffHeader, GivesThePixelFormatOfPlanes) {
  EXPECT_EQ(withTag({284, 3, {2}}), "20 x 10 gbrp");
  EXPECT_EQ(answer(tiff(withTags(tiffTags(4, 16, kTiffRgb), {{284, 3, {2}}}), true)),
            "20 x 10 gbrap16be");
  EXPECT_EQ(answer(tiff(withTags(tiffTags(1, 8, kBlackIsZero), {{284, 3, {2}}}))), kNone);
  EXPECT_EQ(withTag({284, 3, {3}}), kNone);
}

TEST(TiffHeader, GivesThePixelFormatOfPalettes) {
  const auto palette = [](unsigned samples, unsigned depth, unsigned count) {
    return answer(tiff(withTags(tiffTags(samples, depth, kTiffPalette),
                                {{320, 3, std::vector<std::uint32_t>(count)}})));
  };
  EXPECT_EQ(palette(1, 1, 6), "20 x 10 pal8");
  EXPECT_EQ(palette(1, 4, 48), "20 x 10 pal8");
  EXPECT_EQ(palette(1, 8, 768), "20 x 10 pal8");
  EXPECT_EQ(palette(1, 8, 1536), kNone);
  EXPECT_EQ(palette(1, 16, 768), kNone);
}

TEST(TiffHeader, GivesThePixelFormatOfSubsampling) {
  const auto sampled = [](std::vector<std::uint32_t> factors) {
    return answer(tiff(withTags(tiffTags(3, 8, kYcc), {{530, 3, std::move(factors)}})));
  };
  EXPECT_EQ(sampled({1, 1}), "20 x 10 yuv444p");
  EXPECT_EQ(sampled({2, 1}), "20 x 10 yuv422p");
  EXPECT_EQ(sampled({4, 1}), "20 x 10 yuv411p");
  EXPECT_EQ(sampled({1, 2}), "20 x 10 yuv440p");
  EXPECT_EQ(sampled({2, 2}), "20 x 10 yuv420p");
  EXPECT_EQ(sampled({4, 4}), "20 x 10 yuv410p");
  EXPECT_EQ(sampled({4, 2}), kNone);
  EXPECT_EQ(sampled({0, 1}), kNone);
  EXPECT_EQ(answer(tiff(tiffTags(3, 8, kYcc))), kNone);
}

TEST(TiffHeader, GivesTheAspectOfPixels) {
  const auto resolution = [](std::vector<std::uint32_t> x, std::vector<std::uint32_t> y) {
    return answer(tiff(withTags(kRgbTags, {{282, 5, std::move(x)}, {283, 5, std::move(y)}})));
  };
  EXPECT_EQ(resolution({72, 1}, {72, 1}), "20 x 10 rgb24, 1:1");
  EXPECT_EQ(resolution({300, 1}, {400, 1}), "20 x 10 rgb24, 4:3");
  EXPECT_EQ(resolution({300, 7}, {400, 3}), "20 x 10 rgb24, 28:9");
  EXPECT_EQ(resolution({0, 1}, {72, 1}), kNone);
  EXPECT_EQ(resolution({72, 0}, {72, 1}), kNone);
  EXPECT_EQ(resolution({4000000007, 3}, {4000000009, 7}), kNone) << "FFmpeg would round it";
  EXPECT_EQ(withTag({282, 5, {72, 1}}), "20 x 10 rgb24") << "only one direction";
}

TEST(TiffHeader, TakesOneDepthForAllSamples) {
  EXPECT_EQ(withTag({258, 3, {8}}), "20 x 10 rgb24");
  EXPECT_EQ(answer(tiff(withoutTag(kRgbTags, 277))), "20 x 10 rgb24");
  EXPECT_EQ(withTag({258, 3, {8, 8}}), kNone);
  EXPECT_EQ(withTag({258, 3, {4, 8, 12}}), kNone);
}

TEST(TiffHeader, SkipsTagsThatDoNotMatter) {
  const TiffTags tags[] = {{{254, 4, {2}}},   {{305, 2, std::vector<std::uint32_t>(9, 'x')}},
                           {{274, 3, {6}}},   {{700, 1, std::vector<std::uint32_t>(500)}},
                           {{34665, 4, {8}}}, {{34675, 1, std::vector<std::uint32_t>(300)}}};
  for (const TiffTags& tag : tags)
    EXPECT_EQ(answer(tiff(withTags(kRgbTags, tag))), "20 x 10 rgb24") << tag.front().tag;
}

TEST(TiffHeader, LeavesUnusualTags) {
  EXPECT_EQ(withTag({330, 4, {8}}), kNone) << "further pictures inside";
  EXPECT_EQ(withTag({322, 3, {16}}), kNone) << "tiles";
  EXPECT_EQ(withTag({50706, 1, {1, 4, 0, 0}}), kNone) << "a camera's raw data";
  EXPECT_EQ(withTag({34735, 3, {1, 1, 0, 0}}), kNone) << "a map";
  EXPECT_EQ(withTag({291, 3, {1, 2}}), kNone) << "a response curve";
  EXPECT_EQ(withTag({60000, 3, {1}}), kNone);
  EXPECT_EQ(withTag({256, 2, {20}}), kNone) << "a width as text";
  EXPECT_EQ(withTag({256, 3, {0}}), kNone);
}

TEST(TiffHeader, ReadsCompressionsThatFfmpegKnows) {
  for (const unsigned method : {1U, 2U, 3U, 4U, 5U, 8U, 32773U, 32946U})
    EXPECT_EQ(withTag({259, 3, {method}}), "20 x 10 rgb24") << method;
  for (const unsigned method : {0U, 6U, 7U, 9U, 34925U, 50000U})
    EXPECT_EQ(withTag({259, 3, {method}}), kNone) << method;
}

TEST(TiffHeader, LeavesDamagedDirectories) {
  for (const unsigned tag : {256U, 257U, 262U, 273U})
    EXPECT_EQ(answer(tiff(withoutTag(kRgbTags, tag))), kNone) << "without " << tag;
  TiffTags disordered = kRgbTags;
  std::swap(disordered[0], disordered[1]);
  EXPECT_EQ(answer(tiff(disordered)), kNone);
  TiffTags doubled = kRgbTags;
  doubled.insert(doubled.begin(), doubled.front());
  EXPECT_EQ(answer(tiff(doubled)), kNone);
  EXPECT_EQ(answer(tiff({})), kNone);
  const std::string whole = tiff(kRgbTags);
  EXPECT_EQ(answer(whole.substr(0, whole.size() - 4)), "20 x 10 rgb24");
  EXPECT_EQ(answer(whole.substr(0, whole.size() - 5)), kNone);
  EXPECT_EQ(answer(whole.substr(0, 7)), kNone);
}

// FFmpeg takes a list of strips at the file's very beginning for none.
TEST(TiffHeader, LeavesValuesInTheFileHeader) {
  std::string file = tiff(withTags(kRgbTags, {{273, 4, {8, 9, 10}}}));
  const std::size_t tag = file.find(littleEndian(273, 2) + littleEndian(4, 2));
  ASSERT_NE(tag, std::string::npos);
  EXPECT_EQ(answer(file), "20 x 10 rgb24");
  file.replace(tag + 8, 4, littleEndian(0, 4));
  EXPECT_EQ(answer(file), kNone);
}

TEST(TiffHeader, IsFoundAnywhereInAFile) {
  const TempDir folder;
  const TiffTags tags = withTags(kRgbTags, {{282, 5, {72, 1}}, {283, 5, {72, 1}}});
  for (const std::size_t size : {100U, 5'000U, 1'000'000U}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(answer(tiff(tags, false, size)), "20 x 10 rgb24, 1:1");
  }
}

TEST(TiffHeader, AnswersForHugePicturesWithoutPixels) {
  const auto sized = [](std::uint32_t width, std::uint32_t height) {
    return answerWithoutFfmpeg(
        tiff(withTags(tiffTags(4, 16, kTiffRgb), {{256, 4, {width}}, {257, 4, {height}}})));
  };
  EXPECT_EQ(sized(16000, 16000), "16000 x 16000 rgba64le");
  EXPECT_EQ(sized(20000, 20000), kNone);
}

// ---- WebP

TEST(WebpHeader, GivesSizeAndPixelFormat) {
  EXPECT_EQ(answer(webp(webpLossy(35, 21))), "35 x 21 yuv420p");
  EXPECT_EQ(answer(webp(webpLossless(35, 21))), "35 x 21 argb");
  const std::string alpha = webpChunk("ALPH", std::string(9, '\0'));
  EXPECT_EQ(answer(webp(webpExtended(0x10, 35, 21) + alpha + webpLossy(35, 21))),
            "35 x 21 yuva420p");
  EXPECT_EQ(answer(webp(webpExtended(0x10, 35, 21) + webpLossless(35, 21))), "35 x 21 argb");
}

TEST(WebpHeader, SkipsOtherChunks) {
  const std::string chunks = webpExtended(0x20, 35, 21) + webpChunk("ICCP", std::string(501, 'x'));
  EXPECT_EQ(answer(webp(chunks + webpLossy(35, 21))), "35 x 21 yuv420p");
  EXPECT_EQ(answer(webp(webpExtended(0, 99, 99) + webpLossy(35, 21))), "35 x 21 yuv420p")
      << "the picture's own size";
  EXPECT_EQ(answer(webp(webpLossy(35, 21)) + "behind"), "35 x 21 yuv420p");
}

TEST(WebpHeader, LeavesAnimations) {
  EXPECT_EQ(answer(webp(webpExtended(0x02, 35, 21) + webpLossy(35, 21))), kNone);
  EXPECT_EQ(answer(webp(webpExtended(0, 35, 21) + webpChunk("ANIM", "123456"))), kNone);
}

TEST(WebpHeader, LeavesUnusualPictures) {
  EXPECT_EQ(answer(webp(webpLossless(35, 21, 1))), kNone);
  EXPECT_EQ(answer(webp(webpLossy(0, 21))), kNone);
  EXPECT_EQ(answer(webp(webpLossy(35, 0x4000 | 21))), kNone) << "scaled up";
  EXPECT_EQ(answer(webp(webpLossy(35, 21, std::string(64, '\xFF')))), kNone) << "in eight parts";
  EXPECT_EQ(answer(webp(webpLossy(35, 21, "x"))), kNone);
  const std::string header = webpExtended(0, 35, 21);
  EXPECT_EQ(answer(webp(header + header + webpLossy(35, 21))), kNone);
  EXPECT_EQ(answer(webp(webpChunk("ALPH", "\x03..") + webpLossy(35, 21))), kNone);
  EXPECT_EQ(answer(webp(webpChunk("VP8 ", "short"))), kNone);
}

TEST(WebpHeader, LeavesCutFiles) {
  const std::string whole = webp(webpLossy(35, 21));
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(answer(whole.substr(0, length)), kNone) << length;
}

TEST(WebpHeader, AnswersForHugePicturesWithoutPixels) {
  EXPECT_EQ(answerWithoutFfmpeg(webp(webpLossless(16000, 16000))), "16000 x 16000 argb");
  EXPECT_EQ(answerWithoutFfmpeg(webp(webpLossy(16383, 16383))), kNone);
}

// ---- All formats

TEST(PictureHeader, IsOnlyReadFromKnownFormats) {
  for (const char* bytes : {"", "x", "BM", "GIF89a", "II*", "RIFF....WAVEfmt ", "P6 1 1 255 xyz",
                            "\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n"})
    EXPECT_EQ(answer(bytes), kNone) << bytes;
}

TEST(PictureHeader, MayBeReadFromTheFirstBytesOnly) {
  const std::string file = png({}, pngChunk("tEXt", "text"));
  const std::size_t data = file.find("IDAT") + 4;
  const auto size = static_cast<std::int64_t>(file.size());
  EXPECT_EQ(headerAnswer(file.substr(0, data), size), "20 x 10 rgb24");
  EXPECT_EQ(headerAnswer(file.substr(0, data - 1), size), kNone);
  EXPECT_EQ(headerAnswer(tiff(kRgbTags).substr(0, 50), 1000), kNone);
}

TEST(PictureHeader, IsNotReadFromLargeFiles) {
  constexpr std::int64_t kLargest = std::int64_t{64} << 20;
  EXPECT_EQ(headerAnswer(gif(35, 21), kLargest), "35 x 21 bgra");
  EXPECT_EQ(headerAnswer(gif(35, 21), kLargest + 1), kNone);
  EXPECT_EQ(headerAnswer(gif(35, 21), INT64_MAX), kNone);
  EXPECT_EQ(headerAnswer(gif(35, 21), -1), kNone);
  EXPECT_EQ(headerAnswer(gif(35, 21), 5), kNone) << "more bytes than there are";
}

}  // namespace
}  // namespace kolum::test
