// DLNA names of real files: every branch for which an encoder exists.
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "base/shell.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::shellWord;

namespace {

struct Named {
  std::string profile;
  std::string mimeType;
  bool operator==(const Named&) const = default;
};

void PrintTo(const Named& named, std::ostream* out) {
  *out << "\"" << named.profile << "\", \"" << named.mimeType << "\"";
}

Named nameOf(const std::string& path) {
  videoObject_st record = {};
  const std::size_t slash = path.rfind('/');
  testing::internal::CaptureStdout();
  EXPECT_EQ(GetVideoMetadata1(path.substr(0, slash + 1).c_str(), path.substr(slash + 1).c_str(),
                              &record, 0),
            0U)
      << path;
  testing::internal::GetCapturedStdout();
  return {record.dlnaProfile, record.mimeType};
}

constexpr const char* kTts = "video/vnd.dlna.mpeg-tts";

std::string source(const std::string& size, const std::string& rate, const std::string& seconds) {
  return "-f lavfi -i color=gray:s=" + size + ":r=" + rate + ":d=" + seconds +
         " -f lavfi -i sine=r=48000:d=" + seconds + " -pix_fmt yuv420p ";
}

// A copy of a file with 192-byte packets whose time stamps are all zero.
std::string withoutTimeStamps(const std::string& path) {
  return made(std::filesystem::path(path).filename(), "no stamps " + path,
              [&](const std::string& out) {
                std::string file = contentOf(path);
                for (std::size_t at = 0; at + 192 <= file.size(); at += 192)
                  file.replace(at, 4, std::string(4, '\0'));
                std::ofstream(out, std::ios::binary) << file;
              });
}

struct Row {
  const char* name;
  const char* size;
  const char* rate;
  const char* arguments;
  Named expected;
};

void expectRows(std::initializer_list<Row> rows, const char* seconds = "0.4") {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(nameOf(media(row.name, source(row.size, row.rate, seconds) + row.arguments)),
              row.expected);
  }
}

TEST(DlnaFiles, Mpeg2TransportStreams) {
  constexpr const char* k188 = "-c:v mpeg2video -c:a ac3 -f mpegts";
  constexpr const char* k192 = "-c:v mpeg2video -c:a ac3 -f mpegts -mpegts_m2ts_mode 1";
  expectRows({
      {"pal.ts", "720x576", "25", k188, {"MPEG_TS_SD_EU_ISO", "video/mpeg"}},
      {"pal.m2ts", "720x576", "25", k192, {"MPEG_TS_SD_EU_T", kTts}},
      {"ntsc.ts", "720x480", "30000/1001", k188, {"MPEG_TS_SD_NA_ISO", "video/mpeg"}},
      {"korea.ts",
       "640x480",
       "30000/1001",
       k188,
       {"MPEG_TS_SD_NA_ISO,MPEG_TS_SD_KO_ISO", "video/mpeg"}},
      {"korea704.m2ts", "704x480", "30000/1001", k192, {"MPEG_TS_SD_NA_T,MPEG_TS_SD_KO_T", kTts}},
      {"hd50.ts", "1280x720", "50", k188, {"MPEG_TS_HD_NA_ISO", "video/mpeg"}},
      {"hd60.ts",
       "1280x720",
       "60000/1001",
       k188,
       {"MPEG_TS_HD_NA_ISO,MPEG_TS_HD_KO_ISO", "video/mpeg"}},
      {"fullhd25.ts", "1920x1080", "25", k188, {"MPEG_TS_HD_NA_ISO", "video/mpeg"}},
      {"fullhd30.m2ts", "1920x1080", "30000/1001", k192, {"MPEG_TS_HD_NA_T,MPEG_TS_HD_KO_T", kTts}},
  });
}

TEST(DlnaFiles, EmptyTimeStampsHaveTheMimeTypeButNoSuffix) {
  const std::string stamped =
      media("pal.m2ts", source("720x576", "25", "0.4") +
                            "-c:v mpeg2video -c:a ac3 -f mpegts -mpegts_m2ts_mode 1");
  EXPECT_EQ(nameOf(withoutTimeStamps(stamped)), (Named{"MPEG_TS_SD_EU", kTts}));
}

TEST(DlnaFiles, AacWithoutHeaderIsJapanese) {
  // In a transport stream AAC has a header in every frame, and no separate one.
  expectRows({{"aac.ts",
               "1920x1080",
               "30000/1001",
               "-c:v mpeg2video -c:a aac -f mpegts",
               {"MPEG_TS_JP_T", "video/mpeg"}}});
}

TEST(DlnaFiles, Mpeg2ElsewhereAndProgramStreams) {
  expectRows({
      {"pal.mpg",
       "720x576",
       "25",
       "-c:v mpeg2video -c:a mp2 -f vob",
       {"MPEG_PS_PAL", "video/mpeg"}},
      {"ntsc.mpg",
       "720x480",
       "30000/1001",
       "-c:v mpeg2video -c:a ac3 -f vob",
       {"MPEG_PS_NTSC", "video/mpeg"}},
      {"mpeg2.m2v", "720x576", "25", "-map 0 -c:v mpeg2video -f mpeg2video", {"", "video/mpeg"}},
      {"mpeg2.mp4", "720x576", "25", "-c:v mpeg2video -c:a mp2", {"", "video/mp4"}},
      {"mpeg2.asf", "720x576", "25", "-c:v mpeg2video -c:a wmav2", {"", "video/x-ms-wmv"}},
      {"mpeg2.mxf", "720x576", "25", "-c:v mpeg2video -c:a pcm_s16le", {"", ""}},
      {"mpeg2.mkv", "720x576", "25", "-c:v mpeg2video -c:a ac3", {"", "video/x-matroska"}},
  });
}

TEST(DlnaFiles, H264InMp4) {
  constexpr const char* kBaselineAac =
      "-c:v libx264 -preset ultrafast -profile:v baseline -c:a aac -ac 2 -b:a 64k";
  constexpr const char* kMainAac = "-c:v libx264 -profile:v main -c:a aac -ac 2";
  expectRows({
      {"baseline-cif.mp4",
       "320x240",
       "25",
       kBaselineAac,
       {"AVC_MP4_BL_CIF15_AAC_520", "video/mp4"}},
      {"baseline-hd.mp4", "1280x720", "25", kBaselineAac, {"AVC_MP4_BL_L31_HD_AAC", "video/mp4"}},
      {"baseline-sd.mp4",
       "720x576",
       "25",
       "-c:v libx264 -preset ultrafast -profile:v baseline -level 3.0 -c:a aac -ac 2",
       {"AVC_MP4_BL_L3L_SD_AAC", "video/mp4"}},
      {"main-sd.mp4", "720x576", "25", kMainAac, {"AVC_MP4_MP_SD_AAC_MULT5", "video/mp4"}},
      {"main-sd-ac3.mp4",
       "720x576",
       "25",
       "-c:v libx264 -profile:v main -c:a ac3",
       {"AVC_MP4_MP_SD_AC3", "video/mp4"}},
      {"main-sd-mp3.mp4",
       "720x576",
       "25",
       "-c:v libx264 -profile:v main -c:a libmp3lame",
       {"AVC_MP4_MP_SD_MPEG1_L3", "video/mp4"}},
      {"main-sd-mute.mp4",
       "720x576",
       "25",
       "-map 0 -c:v libx264 -profile:v main",
       {"AVC_MP4_MP_SD", "video/mp4"}},
      {"main-720.mp4", "1280x720", "25", kMainAac, {"AVC_MP4_MP_HD_720p_AAC", "video/mp4"}},
      {"main-1080.mp4", "1920x1080", "25", kMainAac, {"AVC_MP4_MP_HD_1080i_AAC", "video/mp4"}},
      {"main-720-ac3.mp4",
       "1280x720",
       "25",
       "-c:v libx264 -profile:v main -c:a ac3",
       {"", "video/mp4"}},
      {"high.mp4",
       "1920x1080",
       "25",
       "-c:v libx264 -profile:v high -c:a aac -ac 2",
       {"AVC_MP4_HP_HD_AAC", "video/mp4"}},
      {"high.3gp",
       "352x288",
       "25",
       "-c:v libx264 -profile:v high -c:a aac -ac 2",
       {"AVC_MP4_HP_HD_AAC", "video/mp4"}},
      {"high-4k.mp4",
       "3840x2160",
       "25",
       "-c:v libx264 -preset ultrafast -x264-params 8x8dct=1 -profile:v high -c:a aac -ac 2",
       {"AVC_MP4_", "video/mp4"}},
      {"high10.mp4",
       "320x240",
       "25",
       "-pix_fmt yuv420p10le -c:v libx264 -c:a aac -ac 2",
       {"", "video/mp4"}},
  });
}

TEST(DlnaFiles, H264InTransportStreams) {
  constexpr const char* k188 = "-c:v libx264 -profile:v main -c:a ac3 -f mpegts";
  expectRows({
      {"main.ts", "720x576", "25", k188, {"AVC_TS_MP_SD_AC3_ISO", "video/mpeg"}},
      {"main-mp3.ts",
       "720x576",
       "25",
       "-c:v libx264 -profile:v main -c:a libmp3lame -f mpegts",
       {"AVC_TS_MP_SD_MPEG1_L3_ISO", "video/mpeg"}},
      {"main.m2ts",
       "720x576",
       "25",
       "-c:v libx264 -profile:v main -c:a ac3 -f mpegts -mpegts_m2ts_mode 1",
       {"AVC_TS_MP_SD_AC3_T", kTts}},
      {"main-hd.ts", "1920x1080", "25", k188, {"AVC_TS_MP_HD_AC3_ISO", "video/mpeg"}},
      {"main-60.m2ts",
       "1280x720",
       "60000/1001",
       "-c:v libx264 -profile:v main -c:a ac3 -f mpegts -mpegts_m2ts_mode 1",
       {"AVC_TS_HD_60_AC3_T", kTts}},
      {"high.ts",
       "1920x1080",
       "25",
       "-c:v libx264 -profile:v high -c:a ac3 -f mpegts",
       {"AVC_TS_HP_HD_AC3_ISO", "video/mpeg"}},
      {"baseline.ts",
       "352x288",
       "25",
       "-c:v libx264 -preset ultrafast -profile:v baseline -c:a ac3 -f mpegts",
       {"AVC_TS_MP_SD_AC3_ISO", "video/mpeg"}},
      {"main-mp2.ts",
       "720x576",
       "25",
       "-c:v libx264 -profile:v main -c:a mp2 -f mpegts",
       {"", "video/mpeg"}},
      {"main-mute.ts",
       "720x576",
       "25",
       "-map 0 -c:v libx264 -profile:v main -f mpegts",
       {"", "video/mpeg"}},
  });
}

TEST(DlnaFiles, H264Elsewhere) {
  constexpr const char* kCodecs = "-c:v libx264 -profile:v main -c:a ac3";
  expectRows({
      {"h264.mpg",
       "352x288",
       "25",
       "-c:v libx264 -profile:v main -c:a ac3 -f vob",
       {"", "video/mpeg"}},
      {"h264.asf", "352x288", "25", kCodecs, {"", "video/x-ms-wmv"}},
      {"h264.nut", "352x288", "25", kCodecs, {"", ""}},
      {"h264.h264", "352x288", "25", "-map 0 -c:v libx264 -profile:v main", {"", ""}},
      {"h264.mkv", "352x288", "25", kCodecs, {"", "video/x-matroska"}},
      {"h264.flv", "352x288", "25", "-c:v libx264 -profile:v main -c:a aac", {"", "video/x-flv"}},
  });
}

// 32-byte frames of AMR-NB silence after the file's magic.
std::string amr() {
  return made("silence.amr", "AMR-NB, 50 frames", [](const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    out << "#!AMR\n";
    for (int i = 0; i < 50; ++i) out << '\x3C' << std::string(31, '\0');
  });
}

TEST(DlnaFiles, Mpeg4Part2) {
  expectRows({
      {"phone.3gp",
       "176x144",
       "15",
       "-c:v mpeg4 -b:v 60k -c:a aac -ar 8000 -ac 1",
       {"MPEG4_P2_3GPP_SP_L0B_AAC", "video/3gpp"}},
      {"cif.mp4",
       "352x288",
       "25",
       "-c:v mpeg4 -b:v 400k -c:a aac -ac 2",
       {"MPEG4_P2_MP4_ASP_AAC", "video/mp4"}},
      {"cif-mp3.mp4", "352x288", "25", "-c:v mpeg4 -b:v 400k -c:a libmp3lame", {"", "video/mp4"}},
      {"cif.3gp", "352x288", "25", "-c:v mpeg4 -b:v 400k -c:a aac -ac 2", {"", "video/3gpp"}},
      {"h263.3gp", "176x144", "15", "-c:v h263 -c:a aac -ar 8000 -ac 1", {"", "video/mp4"}},
      {"mpeg4.avi", "352x288", "25", "-c:v mpeg4 -c:a libmp3lame", {"", "video/x-msvideo"}},
      {"mpeg4.ts", "352x288", "25", "-c:v mpeg4 -c:a libmp3lame -f mpegts", {"", "video/mpeg"}},
  });
  EXPECT_EQ(
      nameOf(media("amr.3gp", "-f lavfi -i color=gray:s=176x144:r=15:d=1 -i " + shellWord(amr()) +
                                  " -map 0 -map 1 -pix_fmt yuv420p -c:v mpeg4 -b:v 60k "
                                  "-c:a copy")),
      (Named{"MPEG4_P2_3GPP_SP_L0B_AMR", "video/3gpp"}));
}

TEST(DlnaFiles, Mpeg4AdvancedSimpleAtD1) {
  EXPECT_EQ(nameOf(media("asp.mp4",
                         "-f lavfi -i testsrc2=s=720x576:r=25:d=1 -f lavfi -i sine=d=1 "
                         "-pix_fmt yuv420p -c:v mpeg4 -bf 2 -b:v 5000k -c:a aac -ac 2")),
            (Named{"MPEG4_P2_MP4_ASP_AAC", "video/mp4"}));
}

TEST(DlnaFiles, Mpeg1) {
  EXPECT_EQ(nameOf(media("vcd.mpg",
                         "-f lavfi -i testsrc=s=352x288:r=25:d=1 -f lavfi -i "
                         "sine=r=44100:d=1 -target pal-vcd")),
            (Named{"MPEG1", "video/mpeg"}));
  EXPECT_EQ(nameOf(media("vcd-ntsc.mpg",
                         "-f lavfi -i testsrc=s=352x240:r=30000/1001:d=1 -f lavfi -i "
                         "sine=r=44100:d=1 -target ntsc-vcd")),
            (Named{"MPEG1", "video/mpeg"}));
  expectRows({
      {"mpeg1-small.mpg", "320x240", "25", "-c:v mpeg1video -c:a mp2 -f mpeg", {"", "video/mpeg"}},
      {"mpeg1.m1v", "352x288", "25", "-map 0 -c:v mpeg1video -f mpeg1video", {"", "video/mpeg"}},
  });
}

TEST(DlnaFiles, MsMpeg4) {
  expectRows(
      {{"msmpeg4.asf", "352x288", "25", "-c:v msmpeg4v3 -c:a wmav2", {"", "video/x-msvideo"}}});
}

// No free encoder writes WMV3, so a WMV2 file gets the codec tag and sequence header of WMV3, which
// are all that the probe reads.
std::string wmv3(const std::string& name, const std::string& arguments, char profileBits) {
  const std::string wmv2 = media(name, arguments);
  return made(name, "WMV3 from " + wmv2 + profileBits, [&](const std::string& path) {
    std::string file = contentOf(wmv2);
    std::size_t count = 0;
    for (std::size_t at = file.find("WMV2"); at != std::string::npos; at = file.find("WMV2", at)) {
      file.replace(at, 4, "WMV3");
      // The stream's format ends with four bytes of extra data, 20 bytes after the codec tag in
      // BITMAPINFOHEADER.
      const std::size_t extraData = at + 24;
      if (count++ == 0 && extraData + 4 <= file.size())
        file.replace(extraData, 4, std::string{profileBits, '\x09', '\x18', '\x01'});
    }
    ASSERT_GT(count, 0U);
    std::ofstream(path, std::ios::binary) << file;
  });
}

TEST(DlnaFiles, Wmv3InAsf) {
  const auto arguments = [](const std::string& size, const std::string& rest) {
    return source(size, "15", "2") + "-c:v wmv2 -c:a wmav2 " + rest;
  };
  constexpr char kSimple = '\x0E';
  constexpr char kMain = '\x4E';
  EXPECT_EQ(
      nameOf(wmv3("simple.wmv", arguments("176x144", "-b:v 30k -b:a 32k -ar 22050"), kSimple)),
      (Named{"WMVSPLL_BASE", "video/x-ms-wmv"}));
  EXPECT_EQ(nameOf(wmv3("medium.wmv", arguments("352x288", "-b:v 100k -b:a 64k"), kSimple)),
            (Named{"WMVSPML_BASE", "video/x-ms-wmv"}));
  EXPECT_EQ(nameOf(wmv3("main.wmv", arguments("352x288", "-b:v 400k -b:a 128k"), kMain)),
            (Named{"WMVMED_BASE", "video/x-ms-wmv"}));
  EXPECT_EQ(nameOf(wmv3("high.wmv", arguments("1280x720", "-b:v 2000k -b:a 256k"), kMain)),
            (Named{"WMVHIGH_FULL", "video/x-ms-wmv"}));
  expectRows({{"wmv2.wmv", "352x288", "25", "-c:v wmv2 -c:a wmav2", {"", "video/x-ms-wmv"}}});
}

TEST(DlnaFiles, TestStreamsAreNamedWhateverTheRulesSay) {
  const std::string file = media("main.ts", source("720x576", "25", "0.4") +
                                                "-c:v libx264 -profile:v main -c:a ac3 -f mpegts");
  const TempDir folder;
  const std::string name = "O-WVH_F-02_CBR_17M_193_48_2_16.wmv";
  std::filesystem::create_symlink(file, folder.path(name));
  EXPECT_EQ(nameOf(folder.path(name)), (Named{"WMVHIGH_FULL", "video/mpeg"}));
  // This does not apply to files that are never named.
  const std::string mkv =
      media("h264.mkv", source("352x288", "25", "0.4") + "-c:v libx264 -profile:v main -c:a ac3");
  std::filesystem::create_symlink(mkv, folder.path("O-WVH_F-04_VBR_15M_193_44_2_16.mkv"));
  EXPECT_EQ(nameOf(folder.path("O-WVH_F-04_VBR_15M_193_44_2_16.mkv")),
            (Named{"", "video/x-matroska"}));
}

}  // namespace
