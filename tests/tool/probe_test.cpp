#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "support/media_factory.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

json single(const Outcome& run) {
  EXPECT_EQ(run.status, 0) << run.err;
  const std::vector<json> lines = run.json();
  EXPECT_EQ(lines.size(), 1U);
  return lines.empty() ? json() : lines.front();
}

std::vector<std::string> probedFiles(const Outcome& run) {
  std::vector<std::string> files;
  for (const json& line : run.json()) files.push_back(line["file"]);
  return files;
}

// A short video with the given metadata arguments for the ffmpeg tool.
std::string makeVideo(const std::string& path, const std::vector<std::string>& metadata = {}) {
  std::vector<std::string> arguments = {"ffmpeg", "-nostdin", "-loglevel",
                                        "error",  "-y",       "-f",
                                        "lavfi",  "-i",       "color=size=64x48:rate=5:duration=1",
                                        "-c:v",   "mpeg4"};
  arguments.insert(arguments.end(), metadata.begin(), metadata.end());
  arguments.push_back("file:" + path);
  mustRun(arguments);
  return path;
}

TEST(ProbeVideo, PrintsTheRecordAsJson) {
  const json line = single(kolum({"probe", "--json", samples() + "Videos/harbour.mp4"},
                                 {.environment = {{"TZ", "UTC"}}}));
  EXPECT_EQ(line["file"], samples() + "Videos/harbour.mp4");
  EXPECT_EQ(line["kind"], json::parse(R"({"id":2,"name":"video"})"));
  EXPECT_EQ(line["containerFormat"]["name"], "FORMAT_MPEG4");
  EXPECT_EQ(line["duration"], 3);
  EXPECT_EQ(line["width"], 1280);
  EXPECT_EQ(line["height"], 720);
  EXPECT_EQ(line["frameRate"], 25.0);
  EXPECT_EQ(line["videoCodec"], json::parse(R"({"id":28,"name":"CODEC_ID_H264"})"));
  EXPECT_EQ(line["videoProfile"]["name"], "PROFILE_H264_CONSTRAINED_BASELINE");
  EXPECT_EQ(line["videoLevel"], 31);
  EXPECT_EQ(line["audioCodec"], json::parse(R"({"id":86018,"name":"CODEC_ID_AAC"})"));
  EXPECT_EQ(line["audioProfile"]["name"], "PROFILE_AAC_LOW");
  EXPECT_EQ(line["sampleRate"], 48000);
  EXPECT_EQ(line["channels"], 1);
  EXPECT_EQ(line["creationTime"], 1433664550);
  EXPECT_EQ(line["creationDate"], "2015-06-07");
  EXPECT_EQ(line["displayAspectNum"], 16);
  EXPECT_EQ(line["displayAspectDen"], 9);
  EXPECT_GT(line["bitRate"], 0);
}

TEST(ProbeVideo, LeavesOutUnknownValues) {
  const TempDir folder;
  const json line = single(kolum({"probe", "--json", makeVideo(folder.path("silent.mkv"))}));
  for (const char* key :
       {"audioCodec", "audioProfile", "audioClass", "sampleRate", "channels", "creationTime",
        "creationYear", "yearMonth", "creationDate", "orientation", "is360", "contentIdentifier",
        "dlnaProfile", "videoBitRate", "subtitleCount"}) {
    EXPECT_FALSE(line.contains(key)) << key << " in " << line;
  }
  EXPECT_EQ(line["mimeType"], "video/x-matroska");
}

// A transport stream that announces sound but has none.
std::string announcedSound(const TempDir& folder) {
  constexpr std::size_t kPacket = 188;
  const std::string whole = mustRun({"cat", samples() + "Videos/evening-news.ts"});
  std::string kept;
  for (std::size_t at = 0; at + kPacket <= whole.size(); at += kPacket) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(whole[at + i]); };
    const int pid = (byte(1) & 0x1F) << 8 | byte(2);
    if (pid != 257) kept += whole.substr(at, kPacket);
  }
  return folder.write("announced.ts", kept);
}

TEST(ProbeVideo, LeavesOutNumbersOfMissingAnnouncedSound) {
  const TempDir folder;
  const std::string file = announcedSound(folder);
  const json probed = single(kolum({"probe", "--json", file}));
  const json stream = single(kolum({"info", "--json", file}))["streams"][1];
  EXPECT_EQ(probed["audioCodec"]["name"], stream["codec"]["name"]);
  for (const char* key : {"sampleRate", "channels"}) {
    EXPECT_FALSE(probed.contains(key)) << probed;
    EXPECT_FALSE(stream.contains(key)) << stream;
  }
  for (const char* command : {"probe", "info"})
    EXPECT_THAT(kolum({command, file}).out, Not(HasSubstr("0 Hz"))) << command;
}

TEST(ProbeVideo, AlignsTextUnderTheFileName) {
  const std::string file = samples() + "Videos/short-film.mkv";
  const Outcome run = kolum({"probe", file});
  EXPECT_EQ(run.status, 0);
  ASSERT_THAT(run.out, testing::StartsWith(file));
  EXPECT_THAT(run.out.substr(file.size()), testing::MatchesRegex(R"(
  Kind         video
  Container    MKV
  MIME type    video/x-matroska
  Duration     3 s
  Bit rate     [0-9.]+ Mbit/s
  Picture      640 x 360, shown as 16:9, 24 frames/s
  Video        H264 constrained baseline, level 3
  Audio        AC3, 48 kHz, 1 channel, 32 bits/sample, 192 kbit/s
  Audio class  AC-3 or DTS \(2\)
)"));
}

TEST(ProbeVideo, SeparatesFilesByAnEmptyLine) {
  const std::string file = samples() + "Videos/holiday.avi";
  const Outcome run = kolum({"probe", file, file});
  EXPECT_THAT(run.out, HasSubstr("\n\n" + file + "\n"));
  EXPECT_THAT(run.out, Not(HasSubstr("\n\n\n")));
  EXPECT_THAT(run.out, Not(testing::EndsWith("\n\n")));
}

TEST(ProbeVideo, ChoosesAnAudioStream) {
  const TempDir folder;
  const std::string file = makeVideo(
      folder.path("two.mkv"), {"-f", "lavfi", "-i", "sine=duration=1:sample_rate=44100", "-f",
                               "lavfi", "-i", "sine=duration=1:sample_rate=48000", "-map", "0",
                               "-map", "1", "-map", "2", "-c:a:0", "ac3", "-c:a:1", "mp2"});
  EXPECT_EQ(single(kolum({"probe", "--json", file}))["audioCodec"]["name"], "CODEC_ID_AC3");
  EXPECT_EQ(single(kolum({"probe", "--json", "--audio-stream", "1", file}))["audioCodec"]["name"],
            "CODEC_ID_MP2");
  EXPECT_EQ(single(kolum({"probe", "--json", "--audio-stream", "5", file}))["audioCodec"]["name"],
            "CODEC_ID_AC3");
}

TEST(ProbeFolder, WalksInByteOrderAndSkipsNonMedia) {
  const TempDir folder;
  makeVideo(folder.path("b.mkv"));
  for (const char* name : {"B.mkv", "a/z.mkv", "a/b/c.mkv", "caf\xE9.mkv"}) {
    std::filesystem::create_directories(std::filesystem::path(folder.path(name)).parent_path());
    std::filesystem::copy(folder.path("b.mkv"), folder.path(name));
  }
  folder.write("notes.txt", "no media");
  folder.write("list.m3u", "b.mkv\n");
  ASSERT_EQ(mkfifo(folder.path("fifo.mkv").c_str(), 0600), 0);
  std::filesystem::create_symlink("../" + folder.folder(), folder.path("a/loop"));
  const std::string root = folder.folder();
  const Outcome run = kolum({"probe", "--json", root.substr(0, root.size() - 1)});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(probedFiles(run), ElementsAre(root + "B.mkv", root + "a/b/c.mkv", root + "a/z.mkv",
                                            root + "b.mkv", root + "caf\xEF\xBF\xBD.mkv"));
  EXPECT_EQ(run.json().back()["fileBytes"], root + "caf%E9.mkv");
}

TEST(ProbeFolder, TreatsDvdAsOneVideo) {
  const std::string dvd = samples() + "Videos/Sample DVD";
  const std::string index = dvd + "/VIDEO_TS/VIDEO_TS.IFO";
  for (const std::string& name : {dvd, dvd + "/", dvd + "/VIDEO_TS", index}) {
    const json line = single(kolum({"probe", "--json", name}));
    EXPECT_EQ(line["file"], index) << name;
    EXPECT_EQ(line["containerFormat"]["name"], "FORMAT_MPEG") << name;
    EXPECT_EQ(line["width"], 720) << name;
    EXPECT_EQ(line["subtitleCount"], 0) << name;
  }
}

TEST(ProbeFolder, TreatsBlurayAsOneVideo) {
  const TempDir folder;
  folder.write("Disc/BDMV/index.bdmv", "INDX0200");
  std::filesystem::create_directories(folder.path("Disc/BDMV/STREAM"));
  makeVideo(folder.path("Disc/BDMV/STREAM/00000.m2ts"), {"-c:v", "mpeg2video", "-r", "25"});
  for (const char* name : {"Disc", "Disc/BDMV", "."}) {
    const json line = single(kolum({"probe", "--json", folder.path(name)}));
    EXPECT_EQ(line["containerFormat"]["name"], "FORMAT_TS") << name;
    EXPECT_THAT(line["file"].get<std::string>(), testing::EndsWith("Disc/BDMV/index.bdmv")) << name;
  }
}

TEST(ProbeFolder, ReportsFolderWithoutMedia) {
  const TempDir folder;
  const Outcome run = kolum({"probe", folder.folder()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("no media files in this folder"));
}

TEST(ProbeFolder, FailsForFolderThatCannotBeListed) {
  if (geteuid() == 0) GTEST_SKIP() << "root lists every folder";
  const TempDir folder;
  std::filesystem::create_directory(folder.path("closed"));
  std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::none);
  const Outcome run = kolum({"probe", folder.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("Permission denied"));
}

TEST(ProbeForced, AcceptsFilesWithAnyName) {
  const TempDir folder;
  makeVideo(folder.path("a.mkv"));
  std::filesystem::rename(folder.path("a.mkv"), folder.path("recording.dat"));
  EXPECT_EQ(
      single(kolum({"probe", "--json", "video", folder.path("recording.dat")}))["kind"]["name"],
      "video");
  const Outcome refused = kolum({"probe", folder.path("recording.dat")});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("not a media file by its name"));
}

TEST(ProbeForced, TreatsSingleOperandAsName) {
  const TempDir folder;
  makeVideo(folder.path("video/a.mkv").substr(0, 0) + folder.path("a.mkv"));
  std::filesystem::create_directory(folder.path("video"));
  std::filesystem::rename(folder.path("a.mkv"), folder.path("video/a.mkv"));
  const Outcome run = kolum({"probe", "--json", "video"}, {.folder = folder.folder()});
  EXPECT_THAT(probedFiles(run), ElementsAre("video/a.mkv"));
}

struct Failure {
  const char* name;
  const char* reason;
};

TEST(ProbeFailures, NameTheFileAndTheReason) {
  const TempDir folder;
  folder.write("empty.mp4", "");
  folder.write("text.mp4", std::string(5000, 'x'));
  folder.write("list.m3u", "a.mp4\n");
  folder.write("notes.txt", "text");
  const Failure rows[] = {
      {"missing.mp4", "No such file or directory"},
      {"empty.mp4", "empty file"},
      {"text.mp4", "not a media file"},
      {"list.m3u", "a playlist has nothing to probe"},
      {"notes.txt", "not a media file by its name"},
      {"text.mp4/x.mp4", "Not a directory"},
      {"", "No such file or directory"},
  };
  for (const Failure& row : rows) {
    const Outcome run = kolum({"probe", row.name}, {.folder = folder.folder()});
    EXPECT_EQ(run.status, 1) << row.name;
    EXPECT_EQ(run.out, "") << row.name;
    EXPECT_THAT(run.err, HasSubstr(row.reason)) << row.name;
    EXPECT_THAT(run.err, HasSubstr(row.name)) << row.name;
  }
}

TEST(ProbeFailures, DoNotStopTheOthers) {
  const TempDir folder;
  const std::string good = makeVideo(folder.path("good.mkv"));
  const Outcome run = kolum({"probe", "--json", folder.path("missing.mp4"), good});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(probedFiles(run), ElementsAre(folder.path("missing.mp4"), good));
  EXPECT_TRUE(run.json()[0].contains("error"));
  EXPECT_FALSE(run.json()[1].contains("error"));
}

TEST(ProbeFailures, ReportTooLongPaths) {
  const TempDir folder;
  std::string deep = folder.folder();
  for (int i = 0; i < 5; ++i) deep += std::string(200, static_cast<char>('a' + i)) + "/";
  std::filesystem::create_directories(deep);
  makeVideo(folder.path("a.mkv"));
  std::filesystem::rename(folder.path("a.mkv"), deep + "a.mkv");
  const Outcome run = kolum({"probe", folder.folder()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("path longer than 1023 characters"));
}

TEST(ProbeHostileNames, AreTreatedAsFiles) {
  const TempDir folder;
  makeVideo(folder.path("a.mkv"));
  for (const std::string& name :
       {std::string("http:x.mkv"), std::string("-x.mkv"), std::string("pipe:0.mkv"),
        std::string("concat:a.mkv"), std::string("[a].mkv"), std::string("new\nline.mkv"),
        std::string("\x1b[2J.mkv"), std::string("$(id).mkv"), std::string("a b'c\"d.mkv"),
        std::string("%s%n.mkv"), std::string("\xff\xfe.mkv")}) {
    std::filesystem::copy(folder.path("a.mkv"), folder.path(name));
    const json line = single(kolum({"probe", "--json", "--", name}, {.folder = folder.folder()}));
    EXPECT_EQ(line["width"], 64) << testing::PrintToString(name);
  }
}

// Tags may hold anything; the output must stay valid and harmless.
TEST(ProbeHostileTags, StayValidJsonAndHarmlessText) {
  const struct {
    const char* tag;
    const char* json;
    const char* text;
  } rows[] = {
      {"plain", "plain", "plain"},
      {"quote\"back\\slash", "quote\"back\\slash", "quote\"back\\\\slash"},
      {"two\nlines\x1b[31m", "two\nlines\x1b[31m", "two\\nlines\\x1b[31m"},
      {"caf\xE9 \xFF", "caf\xEF\xBF\xBD \xEF\xBF\xBD", "caf\xEF\xBF\xBD \xEF\xBF\xBD"},
  };
  const TempDir folder;
  for (const auto& row : rows) {
    const std::string file =
        makeVideo(folder.path("tagged.mov"),
                  {"-movflags", "use_metadata_tags", "-metadata",
                   std::string("com.apple.quicktime.content.identifier=") + row.tag});
    EXPECT_EQ(single(kolum({"probe", "--json", file}))["contentIdentifier"], row.json);
    EXPECT_THAT(kolum({"probe", file}).out, HasSubstr(std::string(" ") + row.text + "\n"));
  }
}

TEST(ProbeHostileTags, SurviveMatroskaTitles) {
  const TempDir folder;
  const std::string file =
      makeVideo(folder.path("tagged.mkv"),
                {"-metadata", "title=\"}\n{\x1b\xFF", "-metadata", "creation_time=\xFFnonsense"});
  EXPECT_EQ(single(kolum({"probe", "--json", file}))["width"], 64);
}

// ffmpeg would convert a "rotate" tag, so the tag is written under another name and then renamed.
void renameTag(const std::string& file, const std::string& from, const std::string& to) {
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  const std::string content(std::istreambuf_iterator<char>(stream), {});
  const std::size_t at = content.find(from);
  ASSERT_NE(at, std::string::npos);
  stream.seekp(static_cast<std::streamoff>(at));
  stream.write(to.data(), static_cast<std::streamsize>(to.size()));
}

TEST(Tracks, AreCounted) {
  const TempDir folder;
  const std::string file = makeVideo(
      folder.path("three.mkv"), {"-f", "lavfi", "-i", "sine=duration=1", "-map", "0", "-map", "1",
                                 "-map", "1", "-c:a", "mp2", "-metadata:s:v", "rotaXe=90"});
  renameTag(file, "ROTAXE", "ROTATE");
  const json line = single(kolum({"tracks", "--json", file}));
  EXPECT_EQ(line["audioTracks"], 2);
  EXPECT_EQ(line["subtitleTracks"], 0);
  EXPECT_EQ(line["rotation"], 90);
  EXPECT_EQ(line["isProtected"], false);
  EXPECT_THAT(kolum({"probe", file}).out, HasSubstr("  Rotation     90 degrees\n"));
}

TEST(Tracks, SongsHaveNoRotation) {
  const Outcome run = kolum({"tracks", samples() + "Music/Tones/01-first-tone.mp3"});
  EXPECT_THAT(run.out, testing::EndsWith("  Audio tracks     1\n  Subtitle tracks  0\n"
                                         "  Protected        no\n"));
}

TEST(Tracks, AreNotCountedOnDiscs) {
  const Outcome found = kolum({"tracks", "--json", samples() + "Videos"});
  EXPECT_EQ(found.status, 0);
  EXPECT_EQ(found.json().size(), 4U);
  EXPECT_THAT(found.err, HasSubstr("discs are not opened"));
  const Outcome named = kolum({"tracks", samples() + "Videos/Sample DVD"});
  EXPECT_EQ(named.status, 1);
}

TEST(Dlna, NamesProfileAndMimeType) {
  const json line = single(kolum({"dlna", "--json", samples() + "Videos/harbour.mp4"}));
  EXPECT_EQ(line, json({{"file", samples() + "Videos/harbour.mp4"},
                        {"dlnaProfile", "AVC_MP4_BL_L31_HD_AAC"},
                        {"mimeType", "video/mp4"}}));
}

TEST(Dlna, ExplainsEveryNameThatWasConsidered) {
  const json line =
      single(kolum({"dlna", "--json", "--explain", samples() + "Videos/evening-news.ts"}));
  EXPECT_EQ(line["dlnaProfile"], "MPEG_TS_SD_EU_ISO");
  EXPECT_EQ(line["details"], json::parse(R"({"container":"MPEG transport stream",
      "video":"MPEG2VIDEO","frame size":"720 x 576","frames":"25 per second",
      "video bit rate":"unknown","overall bit rate":")" +
                                         line["details"]["overall bit rate"].get<std::string>() +
                                         R"(","audio":"MP2","packets":"188 bytes"})"));
  ASSERT_EQ(line["candidates"].size(), 2U);
  const json refused = json::parse(R"({"name":"MPEG_TS_HD_NA","taken":false,"tests":[
      {"wanted":"width at least 1280","actual":"720","held":false},
      {"wanted":"height at least 720","actual":"576","held":false}]})");
  EXPECT_EQ(line["candidates"][0], refused);
  EXPECT_EQ(line["candidates"][1]["name"], "MPEG_TS_SD_EU");
  EXPECT_EQ(line["candidates"][1]["taken"], true);
  EXPECT_EQ(line["next"], json({{"name", "MPEG_TS_HD_NA"}, {"missing", refused["tests"]}}));
  EXPECT_EQ(line["remarks"], json::array());
}

TEST(Dlna, ExplainsWhyThereIsNoProfile) {
  const Outcome run = kolum({"dlna", "--explain", samples() + "Videos/short-film.mkv"});
  EXPECT_EQ(run.out, samples() +
                         "Videos/short-film.mkv\n"
                         "  DLNA profile  (none)\n"
                         "  MIME type     video/x-matroska\n"
                         "  Remark        files of this container get a MIME type only\n");
}

TEST(Dlna, NamesSongs) {
  const std::string song = samples() + "Music/Tones/01-first-tone.mp3";
  EXPECT_EQ(single(kolum({"dlna", "--json", song})),
            json({{"file", song}, {"dlnaProfile", "MP3"}, {"mimeType", "audio/mpeg"}}));
  const Outcome explained = kolum({"dlna", "--json", "--explain", song});
  EXPECT_EQ(single(explained)["remarks"].size(), 1U);
  expectFitsSchema("dlna", explained);
}

TEST(Dlna, NamesSongsWithCoversAsSongs) {
  const TempDir folder;
  const std::string song = folder.path("cover.mp3");
  mustRun({"ffmpeg", "-nostdin", "-loglevel", "error", "-i",
           samples() + "Music/Tones/01-first-tone.mp3", "-i", samples() + "Music/Tones/cover.jpg",
           "-map", "0:a", "-map", "1", "-c", "copy", "-disposition:v", "attached_pic", song});
  EXPECT_EQ(single(kolum({"dlna", "--json", song}))["dlnaProfile"], "MP3");
}

TEST(Dlna, NamesSongsInAFolder) {
  const Outcome run = kolum({"dlna", "--json", samples() + "Music"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.json().size(), 4U);
}

TEST(ProbeAudio, PrintsTheSongAsJson) {
  const std::string file = samples() + "Music/Tones/01-first-tone.mp3";
  const json line = single(kolum({"probe", "--json", file}));
  EXPECT_EQ(line["kind"]["name"], "music");
  EXPECT_EQ(line["containerFormat"]["name"], "FORMAT_MP3");
  EXPECT_EQ(line["mimeType"], "audio/mpeg");
  EXPECT_EQ(line["dlnaProfile"], "MP3");
  EXPECT_NEAR(line["duration"].get<double>(), 3.024, 0.001);
  EXPECT_EQ(line["audioCodec"], json::parse(R"({"id":86017,"name":"CODEC_ID_MP3"})"));
  EXPECT_EQ(line["audioBitRate"], 192000);
  EXPECT_EQ(line["sampleRate"], 48000);
  EXPECT_EQ(line["channels"], 2);
}

TEST(ProbeAudio, LeavesOutUnknownValues) {
  const json line =
      single(kolum({"probe", "--json", samples() + "Music/Tones/02-second-tone.flac"}));
  for (const char* key : {"dlnaProfile", "audioProfile", "audioLevel"})
    EXPECT_FALSE(line.contains(key)) << key << " in " << line;
  const json lossy =
      single(kolum({"probe", "--json", samples() + "Music/Tones/01-first-tone.mp3"}));
  EXPECT_FALSE(lossy.contains("bitsPerSample")) << lossy;
  const json ogg =
      single(kolum({"probe", "--json", media("flac.ogg", "-f lavfi -i sine=d=1 -c:a flac")}));
  EXPECT_FALSE(ogg.contains("audioBitRate")) << ogg;
}

TEST(ProbeAudio, RejectsVideoWithoutSound) {
  const TempDir folder;
  const Outcome run = kolum({"probe", "audio", makeVideo(folder.path("silent.mkv")), "-"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("no sound in it; it has video only"));
}

TEST(ProbeAudio, TreatsVideoAsSongIfForced) {
  const json line =
      single(kolum({"probe", "--json", "audio", samples() + "Videos/harbour.mp4", "-"}));
  EXPECT_EQ(line["kind"]["name"], "music");
  EXPECT_EQ(line["dlnaProfile"], "AAC_ISO");
}

TEST(ProbePhoto, DescribesThePicture) {
  const std::string file = samples() + "Photos/pattern.jpg";
  const json line = single(kolum({"probe", "--json", file}));
  EXPECT_EQ(line["kind"]["name"], "photo");
  EXPECT_EQ(line["mimeType"], "image/jpeg");
  EXPECT_EQ(line["pictureFormat"], 1);
  EXPECT_EQ(line["width"], 1600);
  EXPECT_EQ(line["height"], 1200);
  EXPECT_EQ(line["isAlbumCover"], false);
  EXPECT_EQ(line["pixelFormat"], 12);
  EXPECT_EQ(line["pixelFormatName"], "yuvj420p");
  EXPECT_THAT(kolum({"probe", file}).out, HasSubstr("  Picture    1600 x 1200\n"));
}

// The number of times that files in a folder are opened while WORK runs.
int openingsDuring(const std::string& folder, const std::function<void()>& work) {
  const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  // Closing is watched, too, because identical consecutive events are merged.
  EXPECT_GE(inotify_add_watch(watch, folder.c_str(), IN_OPEN | IN_CLOSE), 0);
  work();
  int count = 0;
  alignas(inotify_event) char buffer[4096];
  for (ssize_t length = 0; (length = read(watch, buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < length;) {
      inotify_event event = {};
      std::memcpy(&event, buffer + at, sizeof event);
      count += (event.mask & IN_OPEN) != 0 && (event.mask & IN_ISDIR) == 0 ? 1 : 0;
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
  }
  close(watch);
  return count;
}

TEST(ProbePhoto, OpensTheFileOnce) {
  const TempDir folder;
  const std::string file = folder.path("pattern.jpg");
  std::filesystem::copy(samples() + "Photos/pattern.jpg", file);
  EXPECT_EQ(openingsDuring(folder.folder(),
                           [&] {
                             EXPECT_EQ(kolum({"probe", file}).status, 0);
                           }),
            1);
}

TEST(ProbePhoto, MarksCovers) {
  const json line = single(kolum({"probe", "--json", samples() + "Music/Tones/cover.jpg"}));
  EXPECT_EQ(line["isAlbumCover"], true);
}

TEST(ProbePhoto, FailsForNonPictures) {
  const TempDir folder;
  const Outcome text = kolum({"probe", folder.write("text.jpg", std::string(5000, 'x'))});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.err, HasSubstr("not a media file"));
  const Outcome song =
      kolum({"probe", "photo", samples() + "Music/Tones/02-second-tone.flac", "-"});
  EXPECT_EQ(song.status, 1);
}

TEST(Info, ListsTheStreams) {
  const json line = single(kolum({"info", "--json", samples() + "Videos/evening-news.ts"}));
  EXPECT_EQ(line["containerFormat"]["name"], "FORMAT_TS");
  EXPECT_EQ(line["duration"], 3);
  EXPECT_FALSE(line.contains("keyFrameTime"));
  ASSERT_EQ(line["streams"].size(), 2U);
  const json& video = line["streams"][0];
  EXPECT_EQ(video["type"]["name"], "video");
  EXPECT_EQ(video["streamId"], 256);
  EXPECT_EQ(video["codec"], json::parse(R"({"id":2,"name":"CODEC_ID_MPEG2VIDEO","ffmpeg":2})"));
  EXPECT_EQ(video["width"], 720);
  EXPECT_EQ(video["frameRateNum"], 25);
  const json& audio = line["streams"][1];
  EXPECT_EQ(audio["type"]["name"], "audio");
  EXPECT_EQ(audio["sampleRate"], 48000);
  EXPECT_FALSE(audio.contains("width"));
}

TEST(Info, PrintsTheRealFrameRateBesideTheRecordsNumber) {
  const TempDir folder;
  const std::string file = folder.path("film.mp4");
  mustRun({"ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
           "color=size=64x48:rate=30000/1001:duration=1", "-c:v", "mpeg4", file});
  const Outcome run = kolum({"info", "--json", file});
  const json stream = single(run)["streams"][0];
  EXPECT_NEAR(stream["realFrameRate"].get<double>(), 29.97, 0.001);
  EXPECT_EQ(stream["realFrameRate"], single(kolum({"probe", "--json", file}))["frameRate"]);
  // The number in the MediaInfo record: 30000 divided by the time base's 30000.
  EXPECT_EQ(stream["frameRate"], 1);
  expectFitsSchema("info", run);
}

TEST(Info, LeavesOutUnknownValues) {
  const json line = single(kolum({"info", "--json", samples() + "Music/Tones/01-first-tone.mp3"}));
  for (const char* key : {"containerFormat", "sourceKind"}) EXPECT_FALSE(line.contains(key)) << key;
  EXPECT_FALSE(line["streams"][0].contains("profile"));
}

// The record holds the profile of audio streams in the field for the bit rate.
TEST(Info, ShowsTheProfileOfAudioStreams) {
  const json line = single(kolum({"info", "--json", samples() + "Videos/harbour.mp4"}));
  EXPECT_EQ(line["streams"][1]["profile"], json::parse(R"({"id":4,"name":"PROFILE_AAC_LOW"})"));
  EXPECT_FALSE(line["streams"][1].contains("bitRate"));
}

TEST(Info, PrintsOneTextLinePerStream) {
  const Outcome run = kolum({"info", samples() + "Videos/evening-news.ts"});
  EXPECT_THAT(run.out,
              HasSubstr("  Video      MPEG2VIDEO main, main level, 720 x 576, 25 frames/s, id 256\n"
                        "  Audio      MP2, 48 kHz, 1 channel, id 257\n"));
}

TEST(Info, SeeksLikeKeyframe) {
  const json line =
      single(kolum({"info", "--json", "--seek", "1", samples() + "Videos/evening-news.ts"}));
  const json alone =
      single(kolum({"keyframe", "--json", "1", samples() + "Videos/evening-news.ts"}));
  EXPECT_NEAR(line["keyFrameTime"], alone["keyFrameTime"], 1e-6);
}

TEST(Info, DescribesTheMainTitleOfDisc) {
  const Outcome run = kolum({"info", samples() + "Videos/Sample DVD"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("  Source     main title of a DVD\n"));
  const json line = single(kolum({"info", "--json", samples() + "Videos/Sample DVD"}));
  EXPECT_EQ(line["sourceKind"]["name"], "FORMAT_DVDIFO");
}

TEST(Keyframe, PrintsWherePlaybackStarts) {
  const Outcome run = kolum({"keyframe", "1", samples() + "Videos/short-film.mkv"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("no key frame from there on"));
  EXPECT_EQ(
      single(kolum({"keyframe", "--json", "0", samples() + "Videos/short-film.mkv"})),
      json({{"file", samples() + "Videos/short-film.mkv"}, {"seconds", 0}, {"keyFrameTime", 0.0}}));
}

TEST(Keyframe, RefersToInfoForDiscs) {
  const Outcome run = kolum({"keyframe", "0", samples() + "Videos/Sample DVD"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("kolum info --seek"));
}

TEST(Dsf, PrintsTagsAndNumbers) {
  const std::string song = samples() + "Music/Tones/04-silence.dsf";
  EXPECT_EQ(single(kolum({"dsf", "--json", song})),
            json({{"file", song},
                  {"containerFormat", {{"id", 22}, {"name", "FORMAT_DSF"}}},
                  {"title", "Silence"},
                  {"artist", "The Oscillators"},
                  {"album", "Tones"},
                  {"track", 4},
                  {"year", 2015},
                  {"genre", "Electronic"},
                  {"duration", 1},
                  {"sampleRate", 2822400},
                  {"channels", 2},
                  {"bitRate", 5644000}}));
  EXPECT_THAT(kolum({"dsf", song}).out, HasSubstr("  Sample rate  2.8224 MHz\n"));
}

TEST(Dsf, DescribesDsdSongsOfFolderOnly) {
  EXPECT_EQ(single(kolum({"dsf", "--json", samples() + "Music"}))["title"], "Silence");
}

TEST(Dsf, ShowsTagsAndFailsWithoutTheToolsNumbers) {
  if (std::filesystem::exists("/usr/local/medialibrary/bin/dsf2flac"))
    GTEST_SKIP() << "this machine has the appliance's dsf2flac";
  // A copy of the program on its own finds no stand-ins.
  const TempDir folder;
  std::filesystem::copy(KOLUM_PROGRAM, folder.path("kolum"));
  const std::string song = samples() + "Music/Tones/04-silence.dsf";
  const RunResult result = run({folder.path("kolum"), "dsf", "--in-process", "--json", song});
  EXPECT_EQ(result.status, 1);
  const Outcome outcome = {result.status, result.out, result.err};
  ASSERT_EQ(outcome.json().size(), 1U);
  EXPECT_EQ(outcome.json()[0]["title"], "Silence");
  EXPECT_EQ(outcome.json()[0]["error"]["code"], "no-numbers");
  EXPECT_THAT(result.err, HasSubstr("kolum: " + song + ": dsf2flac reported no technical data\n"));
  expectFitsSchema("dsf", outcome);
}

TEST(Probe, DescribesDsdSongsWithAndWithoutTheirToolAlike) {
  if (std::filesystem::exists("/usr/local/medialibrary/bin/dsf2flac"))
    GTEST_SKIP() << "this machine has the appliance's dsf2flac";
  const TempDir folder;
  std::filesystem::copy(KOLUM_PROGRAM, folder.path("kolum"));
  const std::string song = samples() + "Music/Tones/04-silence.dsf";
  const RunResult without = run({folder.path("kolum"), "probe", "--in-process", "--json", song});
  ASSERT_EQ(without.status, 0) << without.err;
  json document = json::parse(without.out);
  document.erase("schema");
  EXPECT_EQ(document["title"], "Silence");
  EXPECT_EQ(document["bitsPerSample"], 1);
  EXPECT_EQ(document, single(kolum({"probe", "--json", song})));
}

TEST(Dsf, FailsForOtherMedia) {
  const TempDir folder;
  for (const std::string& file :
       {samples() + "Videos/harbour.mp4", samples() + "Music/Tones/02-second-tone.flac"}) {
    const Outcome run = kolum({"dsf", "--json", file});
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.json().size(), 1U);
    EXPECT_EQ(run.json()[0]["error"]["code"], "not-dsd");
    EXPECT_FALSE(run.json()[0].contains("containerFormat"));
    EXPECT_THAT(run.err, HasSubstr(file + ": not a DSD song, but "));
  }
}

TEST(Dsf, FailsForNonSongs) {
  const Outcome run = kolum({"dsf", KOLUM_SOURCE_FOLDER "/README.md"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("README.md: not a media file\n"));
}

TEST(Cover, IsFoundInFolderAndBesideSong) {
  const std::string tones = samples() + "Music/Tones";
  for (const std::string& name : {tones, tones + "/", tones + "/04-silence.dsf"}) {
    const json line = single(kolum({"cover", "--json", name}));
    EXPECT_EQ(line["file"], name);
    EXPECT_EQ(line["found"], true);
    EXPECT_EQ(line["cover"], tones + "/cover.jpg");
  }
}

TEST(Cover, MayBeMissing) {
  EXPECT_EQ(kolum({"cover", samples() + "Photos"}).out, samples() + "Photos\n  Cover  (none)\n");
  EXPECT_EQ(kolum({"cover", samples() + "Nothing"}).status, 1);
}

TEST(Cover, FailsForUnreadableFolder) {
  if (geteuid() == 0) GTEST_SKIP() << "root reads every folder";
  const TempDir folder;
  std::filesystem::create_directory(folder.path("closed"));
  chmod(folder.path("closed").c_str(), 0);
  const Outcome run = kolum({"cover", folder.path("closed")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("Permission denied"));
}

TEST(Cover, NamesCanBeChecked) {
  const auto lines =
      kolum({"cover", "--names", "--json", "a/cover.jpg", "Folder.jpg~", "altcover.jpg"}).json();
  EXPECT_EQ(lines[0]["isAlbumCover"], true);
  EXPECT_EQ(lines[1]["isAlbumCover"], true);
  EXPECT_EQ(lines[2]["isAlbumCover"], false);
}

}  // namespace
}  // namespace kolum::test
