// The commands that use the appliance around the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/server.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "server/running_echo_server.h"
#include "support/appliance_sandbox.h"
#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

namespace wire = MediaLibrary::LUM::wire;
using nlohmann::json;
using testing::HasSubstr;

constexpr char kVolume[] = "/tmp/volume";
constexpr char kServerFile[] = "/tmp/volume/.system/lumserver.conf";
constexpr char kApplianceFile[] = "/etc/config/medialibrary.conf";
constexpr char kSetTool[] = "/sbin/setcfg";

class Appliance : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  }
};

using ToolNotify = Appliance;
using ToolSend = Appliance;
using ToolConfig = Appliance;
using ToolServeEcho = Appliance;
using ToolExtensions = Appliance;
using ToolArtwork = Appliance;
using ToolGeocode = Appliance;

const RunOptions kOnVolume = {.environment = {{"KO_DATA_DIR", kVolume}}};

TEST_F(ToolNotify, WaitConsumesOnePost) {
  runInAppliance([] {
    EXPECT_EQ(kolum({"notify", "post"}).status, 0);
    const Outcome got = kolum({"notify", "wait", "--seconds", "0"});
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(got.out, "Change received.\n");
    const Outcome none = kolum({"notify", "wait", "--seconds", "0"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.out, "");
    EXPECT_THAT(none.err, HasSubstr("kolum: nothing posted within 0 s"));
  });
}

TEST_F(ToolNotify, ChangesAndStopsAreSeparateChannels) {
  runInAppliance([] {
    EXPECT_EQ(kolum({"notify", "stop"}).status, 0);
    EXPECT_EQ(kolum({"notify", "wait", "--seconds", "0"}).status, 1);
    EXPECT_EQ(kolum({"notify", "wait", "--stop", "--seconds", "1"}).status, 0);
    EXPECT_EQ(kolum({"notify", "wait", "--stop", "--seconds", "0"}).status, 1);
  });
}

TEST_F(ToolNotify, PostWakesWaiter) {
  runInAppliance([] {
    Outcome waited;
    std::thread waiter([&] { waited = kolum({"notify", "wait", "--json"}); });
    EXPECT_EQ(kolum({"notify", "post", "--json"}).status, 0);
    waiter.join();
    EXPECT_EQ(waited.status, 0);
    EXPECT_EQ(waited.json().front(), json::parse(R"({"action":"wait","channel":"changes"})"));
  });
}

TEST_F(ToolNotify, ClearEmptiesBothChannels) {
  runInAppliance([] {
    for (const char* action : {"post", "post", "stop"}) kolum({"notify", action});
    EXPECT_EQ(kolum({"notify", "clear"}).status, 0);
    EXPECT_EQ(kolum({"notify", "wait", "--seconds", "0"}).status, 1);
    EXPECT_EQ(kolum({"notify", "wait", "--stop", "--seconds", "0"}).status, 1);
  });
}

TEST_F(ToolNotify, FailsWithoutChannelsWhileOtherCommandsWork) {
  const std::string song = samples() + "Music/Tones/04-silence.dsf";
  runInAppliance([&] {
    ASSERT_EQ(mount("none", "/dev/shm", "tmpfs", MS_RDONLY, nullptr), 0);
    const Outcome refused = kolum({"notify", "post"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "kolum: the notification channels cannot be opened\n");
    for (const char* command : {"dsf", "probe"}) {
      const Outcome run = kolum({command, "--json", song});
      EXPECT_EQ(run.status, 0) << run.err;
      EXPECT_EQ(run.json().at(0)["sampleRate"], 2822400);
    }
    EXPECT_EQ(umount("/dev/shm"), 0);
  });
}

TEST_F(ToolSend, PrintsTheAnswer) {
  runInAppliance([] {
    const RunningEchoServer server(wire::kSocketPath);
    const Outcome text = kolum({"send", "7", "--text", "hello"});
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out, "Result  1 (success)\nAnswer  hello\n");
    const Outcome answer = kolum({"send", "--json", "7", "--text", "hello"});
    EXPECT_EQ(answer.json().front()["text"], "hello");
    EXPECT_EQ(answer.json().front()["success"], true);
    expectFitsSchema("send", answer);
  });
}

TEST_F(ToolSend, SendsItsArguments) {
  runInAppliance([] {
    std::vector<tool::EchoRequest> requests;
    const RunningEchoServer server(wire::kSocketPath,
                                   [&](const tool::EchoRequest& r) { requests.push_back(r); });
    writeRootFile("/tmp/payload", std::string("\0\xff-", 3));
    const std::vector<std::vector<std::string>> rows = {
        {"send", "1"},
        {"send", "-2", "-1", "5"},
        {"send", "3", "--payload", "/tmp/payload"},
        {"send", "4", "--text", std::string(4080, 'x')}};
    for (const auto& arguments : rows) EXPECT_EQ(kolum(arguments).status, 0);
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_EQ(requests[0].payload, "");
    EXPECT_EQ(requests[1].command, -2);
    EXPECT_EQ(requests[1].payload, std::string(8, '\xff') + std::string("\5\0\0\0\0\0\0\0", 8));
    EXPECT_EQ(requests[2].payload, std::string("\0\xff-", 3));
    EXPECT_EQ(requests[3].payload.size(), 4080U);
  });
}

TEST_F(ToolSend, RejectsTooLongPayloadAsWrongUsage) {
  runInAppliance([] {
    EXPECT_EQ(kolum({"send", "4", "--text", std::string(4081, 'x')}).status, 2);
    writeRootFile("/tmp/payload", std::string(4081, 'x'));
    EXPECT_EQ(kolum({"send", "4", "--payload", "/tmp/payload"}).status, 2);
    EXPECT_EQ(kolum({"send", "4", "--payload", "/tmp/missing"}).status, 1);
  });
}

TEST_F(ToolSend, FailsWithoutServer) {
  runInAppliance([] {
    const Outcome run = kolum({"send", "7"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("kolum: no answer from a server at /tmp/.mllumsocket.xxx"));
  });
}

TEST_F(ToolServeEcho, ServesUntilInterrupted) {
  runInAppliance([] {
    Outcome served;
    std::thread server([&] {
      served = kolum({"--json", "serve-echo"}, {}, "& echo $! > /tmp/pid; wait $!");
    });
    Outcome answered;
    for (int attempt = 0; attempt < 100 && answered.status != 0; ++attempt) {
      answered = kolum({"send", "9", "--text", "hello"});
      if (answered.status != 0) usleep(50000);
    }
    EXPECT_EQ(answered.out, "Result  1 (success)\nAnswer  hello\n");
    kill(static_cast<pid_t>(std::stol(contentOf("/tmp/pid"))), SIGTERM);
    server.join();
    EXPECT_EQ(served.status, 0) << served.err;
    EXPECT_EQ(served.json().back(), json::parse(R"({"command":9,"length":5,"payload":"hello"})"));
    expectFitsSchema("serve-echo", served);
    EXPECT_FALSE(std::filesystem::exists(wire::kSocketPath));
  });
}

TEST_F(ToolServeEcho, EscapesPayloadsOnce) {
  runInAppliance([] {
    Outcome served;
    std::thread server(
        [&] { served = kolum({"serve-echo"}, {}, "& echo $! > /tmp/pid; wait $!"); });
    writeRootFile("/tmp/payload", "caf\xC3\xA9 \\ \n\xff");
    Outcome answered;
    for (int attempt = 0; attempt < 100 && answered.status != 0; ++attempt) {
      answered = kolum({"send", "9", "--payload", "/tmp/payload"});
      if (answered.status != 0) usleep(50000);
    }
    kill(static_cast<pid_t>(std::stol(contentOf("/tmp/pid"))), SIGTERM);
    server.join();
    EXPECT_EQ(served.out, "Command  9\nPayload  caf\xC3\xA9 \\\\ \\n\\xff\n");
  });
}

TEST(ToolServeEchoPath, IsRejectedIfTooLong) {
  const TempDir folder;
  const std::string path = folder.path(std::string(108 - folder.folder().size(), 's'));
  const Outcome run = kolum({"serve-echo", "--socket", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "kolum: " + path + ": File name too long\n");
  EXPECT_TRUE(std::filesystem::is_empty(folder.folder()));
}

TEST_F(ToolConfig, ShowsEverySetting) {
  runInAppliance([] {
    writeRootFile(kServerFile,
                  "[KOLUMSERVER]\nMODE = 2\nMC_VERSION = caf\xE9\n"
                  "[THUMBNAIL]\nPHOTO_BLACKLIST = /a:/b c\nMUSIC_BLACKLIST = :a:\nVIDEO_BLACKLIST "
                  "= ::\nQUALITY = 3\n");
    writeRootFile(kApplianceFile, "[PelmoCore]\nDeviceType = 1\n");
    const Outcome text = kolum({"config", "show"}, kOnVolume);
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("KOLUMSERVER MODE                2\n"));
    EXPECT_THAT(text.out, HasSubstr("THUMBNAIL PHOTO_BLACKLIST       /a:/b c\n"));
    EXPECT_THAT(text.out, HasSubstr("THUMBNAIL MUSIC_BLACKLIST       :a\n"));
    EXPECT_THAT(text.out, HasSubstr("THUMBNAIL VIDEO_BLACKLIST       ::\n"));
    EXPECT_THAT(text.out, HasSubstr("KOLUMSERVER MC_VERSION          caf\\xe9\n"));
    const Outcome shown = kolum({"config", "show", "--json"}, kOnVolume);
    expectFitsSchema("config", shown);
    const json config = shown.json().front();
    EXPECT_EQ(config["mode"], 2);
    EXPECT_EQ(config["enable"], true);
    EXPECT_EQ(config["deviceType"], 1);
    EXPECT_EQ(config["dailyBuildEndHH"], -1);
    EXPECT_EQ(config["photoBlacklist"], json::parse(R"(["/a","/b c"])"));
    EXPECT_EQ(config["musicBlacklist"], json::parse(R"(["","a"])"));
    EXPECT_EQ(config["videoBlacklist"], json::parse(R"(["",""])"));
    EXPECT_EQ(config["mcVersion"], "caf\xEF\xBF\xBD");
    EXPECT_EQ(config.size(), 20U);
  });
}

TEST_F(ToolConfig, ShowsAndReportsValueOutOfRange) {
  runInAppliance([] {
    writeRootFile(kServerFile, "[KOLUMSERVER]\nMODE = 9\n");
    writeRootFile(kApplianceFile, "");
    const Outcome run = kolum({"config", "show"}, kOnVolume);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("KOLUMSERVER MODE                9\n"));
    EXPECT_THAT(run.out, HasSubstr("THUMBNAIL VIDEO_BLACKLIST       (empty)\n"));
    EXPECT_THAT(run.err, HasSubstr("a value is out of its range"));
    EXPECT_THAT(kolum({"config", "show", "--debug"}, kOnVolume).err,
                HasSubstr("KOLUMSERVER:MODE:9"));
  });
}

TEST_F(ToolConfig, NamesMissingFiles) {
  runInAppliance([] {
    EXPECT_THAT(kolum({"config", "show"}).err, HasSubstr("the data volume is unknown"));
    EXPECT_THAT(kolum({"config", "show"}, kOnVolume).err,
                HasSubstr(std::string(kServerFile) + ": No such file or directory"));
    writeRootFile(kServerFile, "");
    std::filesystem::remove(kApplianceFile);
    const Outcome run = kolum({"config", "show"}, kOnVolume);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr(std::string(kApplianceFile) + ": No such file or directory"));
  });
}

TEST_F(ToolConfig, NamesFilesThatAreNotConfigurations) {
  runInAppliance([] {
    writeRootFile(kServerFile, "[KOLUMSERVER]\nno key\n");
    writeRootFile(kApplianceFile, "");
    Outcome run = kolum({"config", "show"}, kOnVolume);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "") << "defaults are not settings";
    EXPECT_THAT(run.err, HasSubstr(std::string(kServerFile) + ": not an ini file"));
    EXPECT_THAT(kolum({"config", "show", "--debug"}, kOnVolume).err, HasSubstr("no key"));
    writeRootFile(kServerFile, "");
    std::filesystem::remove(kApplianceFile);
    std::filesystem::create_symlink("/dev/null", kApplianceFile);
    run = kolum({"config", "show"}, kOnVolume);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(std::string(kApplianceFile) + ": not a regular file"));
  });
}

TEST_F(ToolConfig, SetChangesTheFile) {
  runInAppliance([] {
    writeRootFile(kServerFile, "# kept\n[THUMBNAIL]\nQUALITY = 1\n");
    writeRootFile(kApplianceFile, "");
    std::filesystem::copy_file(KOLUM_SETCFG, kSetTool,
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(kolum({"config", "set", "THUMBNAIL", "QUALITY", "3"}, kOnVolume).status, 0);
    EXPECT_EQ(
        kolum({"config", "set", "KOLUMSERVER", "MC_VERSION", "show me [1]"}, kOnVolume).status, 0);
    EXPECT_EQ(kolum({"config", "set", "--", "KOLUMSERVER", "MODE", "2"}, kOnVolume).status, 0);
    const json config = kolum({"config", "show", "--json"}, kOnVolume).json().front();
    EXPECT_EQ(config["quality"], 3);
    EXPECT_EQ(config["mcVersion"], "show me [1]");
    EXPECT_EQ(config["mode"], 2);
    EXPECT_THAT(contentOf(kServerFile), HasSubstr("# kept\n"));
  });
}

TEST_F(ToolConfig, SetUsesTheStandInWithoutTheAppliancesTool) {
  runInAppliance([] {
    std::filesystem::remove(kSetTool);
    writeRootFile(kApplianceFile, "");
    std::filesystem::create_directories(std::filesystem::path(kServerFile).parent_path());
    const Outcome run =
        kolum({"config", "set", "KOLUMSERVER", "MC_VERSION", "'a b' $c"}, kOnVolume);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(kolum({"config", "set", "THUMBNAIL", "QUALITY", "3"}, kOnVolume).status, 0);
    const json config = kolum({"config", "show", "--json"}, kOnVolume).json().front();
    EXPECT_EQ(config["mcVersion"], "'a b' $c");
    EXPECT_EQ(config["quality"], 3);
    EXPECT_EQ(kolum({"config", "set", "THUMBNAIL", "QUALITY", "a\nb"}, kOnVolume).status, 1);
    EXPECT_THAT(kolum({"config", "set", "THUMBNAIL", "QUALITY", "3"}).err,
                HasSubstr("the data volume is unknown"));
  });
}

TEST_F(ToolConfig, SetPrefersTheAppliancesTool) {
  runInAppliance([] {
    writeRootFile(kServerFile, "");
    writeRootFile(kSetTool, "#!/bin/sh\necho \"$@\" > /tmp/arguments\n", 0755);
    EXPECT_EQ(kolum({"config", "set", "THUMBNAIL", "QUALITY", "3"}, kOnVolume).status, 0);
    EXPECT_EQ(contentOf("/tmp/arguments"),
              "-f " + std::string(kServerFile) + " THUMBNAIL QUALITY 3\n");
  });
}

TEST_F(ToolConfig, SetFailsWithoutAnyTool) {
  runInAppliance([] {
    writeRootFile(kServerFile, "");
    std::filesystem::remove(kSetTool);
    const TempDir folder;
    const std::string program = copyOfKolum(folder.folder());
    const Outcome run =
        runKolum(program, {"config", "set", "THUMBNAIL", "QUALITY", "3"}, kOnVolume);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr("/sbin/setcfg: No such file or directory"));
    EXPECT_THAT(runKolum(program, {"config", "set", "THUMBNAIL", "QUALITY", "3"}).err,
                HasSubstr("the data volume is unknown"));
  });
}

TEST_F(ToolExtensions, XmlFollowsTheConfiguration) {
  runInAppliance([] {
    writeRootFile(kApplianceFile, "[OPTIONS]\nFileUmaskInternal3 = 5\n");
    const Outcome run = kolum({"extensions", "--xml"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out,
                testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n"));
    EXPECT_THAT(run.out, testing::EndsWith("\t<Media Type=\"Playlist\" MaxID=\"4\">\n"
                                           "\t\t<Extension ID=\"2\">pls</Extension>\n"
                                           "\t\t<Extension ID=\"4\">asx</Extension>\n"
                                           "\t</Media>\n</Root>\n"));
    std::filesystem::remove(kApplianceFile);
    const Outcome missing = kolum({"extensions", "--xml"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    EXPECT_THAT(missing.err, HasSubstr("medialibrary.conf: No such file or directory"));
  });
}

TEST_F(ToolArtwork, MakesAlbumThumbnails) {
  runInAppliance([] {
    std::filesystem::create_directories("/tmp/art/the oscillators");
    const std::string source = "/tmp/art/the oscillators/@_tones.jpg";
    std::filesystem::copy_file(samples() + "Photos/pattern.jpg", source);
    const Outcome run =
        kolum({"artwork", "album", "--json", "/tmp/art", "The Oscillators", "Tones"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.json().front(), json::parse(R"({"file":"/tmp/art/the oscillators/tones.jpg",
        "relativePath":"the oscillators/tones.jpg"})"));
    EXPECT_FALSE(std::filesystem::exists(source));
    const json picture =
        kolum({"probe", "--json", "/tmp/art/the oscillators/tones.jpg"}).json().front();
    EXPECT_EQ(picture["width"], 252);
    EXPECT_EQ(picture["height"], 252);
    EXPECT_EQ(kolum({"artwork", "album", "/tmp/art/", "The Oscillators", "Tones"}).status, 0);
  });
}

constexpr char kFixedConvert[] = "/usr/local/sbin/convert";
const std::vector<std::string> kAlbum = {"artwork",  "album",           "--json",
                                         "/tmp/art", "The Oscillators", "Tones"};

std::pair<json, json> sizeOf(const std::string& picture) {
  const json probed = kolum({"probe", "--json", picture}).json().front();
  return {probed["width"], probed["height"]};
}

TEST_F(ToolArtwork, UsesImageMagickOnThePathIfFfmpegIsMissing) {
  runInAppliance([] {
    std::filesystem::remove(kFixedConvert);
    std::filesystem::create_directories("/tmp/art/the oscillators");
    const std::string source = "/tmp/art/the oscillators/@_tones.jpg";
    mustRun({"convert", "-size", "640x360", "gradient:red-blue", source});
    const TempDir folder;
    const Outcome run = runKolum(copyOfKolum(folder.folder(), {"dsf2flac"}), kAlbum);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.json().front(), json::parse(R"({"file":"/tmp/art/the oscillators/tones.jpg",
        "relativePath":"the oscillators/tones.jpg"})"));
    EXPECT_FALSE(std::filesystem::exists(source));
    EXPECT_EQ(sizeOf("/tmp/art/the oscillators/tones.jpg"), std::pair(json(252), json(142)));
    EXPECT_EQ(sizeOf("/tmp/art/the oscillators/tones-1.jpg"), std::pair(json(126), json(71)));
  });
}

TEST_F(ToolArtwork, RunsImageMagickAsTheLibraryWould) {
  runInAppliance([] {
    std::filesystem::remove(kFixedConvert);
    const TempDir folder;
    const std::string program = copyOfKolum(folder.folder(), {"dsf2flac"});
    writeRootFile("/tmp/tools/convert",
                  "#!/bin/sh\necho $MAGICK_TMPDIR \"$@\" >> /tmp/arguments\n"
                  "for target; do :; done; echo picture > \"$target\"\n",
                  0755);
    writeRootFile("/tmp/art/the oscillators/@_tones.png", "picture");
    const RunOptions withOwnTool = {.environment = {{"PATH", "/tmp/tools"}}};
    const RunOptions inItsFolder = {.environment = {{"PATH", "."}}, .folder = "/tmp/tools"};
    EXPECT_EQ(runKolum(program, kAlbum, inItsFolder).status, 1);
    EXPECT_FALSE(std::filesystem::exists("/tmp/arguments"));
    const Outcome run = runKolum(program, kAlbum, withOwnTool);
    EXPECT_EQ(run.status, 0) << run.err;
    const std::string folderOfArtist = "/tmp/art/the oscillators/";
    const std::string start = "/tmp/art/ -limit memory 64 -limit map 128 -resize ";
    EXPECT_EQ(contentOf("/tmp/arguments"), start + "126x126 " + folderOfArtist + "@_tones.png " +
                                               folderOfArtist + "tones-1.jpg\n" + start +
                                               "252x252 " + folderOfArtist + "@_tones.png " +
                                               folderOfArtist + "tones.jpg\n");
  });
}

TEST_F(ToolArtwork, KeepsTheSourceIfNoToolMakesAThumbnail) {
  runInAppliance([] {
    std::filesystem::remove(kFixedConvert);
    const TempDir folder;
    const std::string program = copyOfKolum(folder.folder(), {"dsf2flac"});
    const std::string source = "/tmp/art/the oscillators/@_tones.jpg";
    writeRootFile(source, "no picture");
    const Outcome run = runKolum(program, kAlbum);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(std::filesystem::exists(source));
    std::filesystem::remove(source);
    ASSERT_EQ(mkfifo(source.c_str(), 0600), 0);
    EXPECT_EQ(runKolum(program, kAlbum, {.timeout = std::chrono::seconds(20)}).status, 1);
  });
}

TEST_F(ToolArtwork, FailsWithoutSource) {
  runInAppliance([] {
    std::filesystem::create_directories("/tmp/art");
    EXPECT_EQ(kolum({"artwork", "album", "/tmp/art", "Nobody", "Nothing"}).status, 1);
    EXPECT_EQ(kolum({"artwork", "artist", "/tmp/art", "Nobody"}).status, 1);
    writeRootFile("/tmp/art/nobody/artist.jpg", "picture");
    EXPECT_THAT(kolum({"artwork", "artist", "/tmp/art", "Nobody"}).out,
                HasSubstr("nobody/artist.jpg"));
  });
}

TEST_F(ToolArtwork, FindsTranscodedCopies) {
  runInAppliance([] {
    writeRootFile("/tmp/v/.@__thumb/transcode/a.mp4.mobile480p", "copy");
    const auto lines =
        kolum({"artwork", "transcoded", "--json", "/tmp/v/a.mp4", "/tmp/v/b.mp4"}).json();
    EXPECT_EQ(lines[0]["isTranscoded"], true);
    EXPECT_EQ(lines[1]["isTranscoded"], false);
  });
}

TEST(ToolSystemThumbnails, PrintsFolderNames) {
  EXPECT_EQ(kolum({"artwork", "folder", "3", "0x1234"}).out, "Folder  334/\n");
  EXPECT_EQ(kolum({"artwork", "folder", "20", "255"}).out, "Folder  14ff/\n");
  EXPECT_EQ(kolum({"artwork", "folder", "21", "1"}).status, 2);
  EXPECT_EQ(kolum({"artwork", "folder", "1", "0"}).status, 2);
}

// A tool that prints ANSWER and records its arguments.
void installOsmInfo(const std::string& answer) {
  writeRootFile("/tmp/answer", answer);
  writeRootFile("/usr/local/medialibrary/bin/osm_info",
                "#!/bin/sh\necho \"$@\" > /tmp/arguments\ncat /tmp/answer\n", 0755);
}

TEST_F(ToolGeocode, PrintsTheAddresses) {
  runInAppliance([] {
    installOsmInfo(
        "<output><reversegeocode language=\"en\">"
        "<result osm_type=\"way\" osm_id=\"42\">Caf\xC3\xA9 \"X\", Paris</result>"
        "<addressparts><city>Paris</city><country>France</country></addressparts>"
        "</reversegeocode><reversegeocode language=\"de\">"
        "<result osm_type=\"way\" osm_id=\"42\">Paris, Frankreich</result>"
        "<addressparts><city>Paris</city></addressparts></reversegeocode></output>");
    const Outcome text = kolum({"geocode", "48.8584", "-2.2945"});
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out,
              "Position    48.8584, -2.2945\n"
              "Map object  way, 42\n"
              "en: Caf\xC3\xA9 \"X\", Paris\n"
              "  city     Paris\n"
              "  country  France\n"
              "de: Paris, Frankreich\n"
              "  city  Paris\n");
    EXPECT_EQ(contentOf("/tmp/arguments"), "lat=48.85840000 lon=-2.29450000 zoom=18\n");
    const json german =
        kolum({"geocode", "--json", "48.8584", "2.2945", "--zoom", "10", "--language", "de"})
            .json()
            .front();
    EXPECT_EQ(german["osmType"], json::parse(R"({"id":2,"name":"way"})"));
    EXPECT_EQ(german["osmId"], "42");
    EXPECT_EQ(german["addresses"], json::parse(R"([{"language":{"id":2,"name":"de"},
        "address":"Paris, Frankreich","parts":[{"name":"city","value":"Paris"}]}])"));
  });
}

TEST_F(ToolGeocode, DoesNotRunToolInTheCurrentFolder) {
  runInAppliance([] {
    const TempDir folder;
    std::filesystem::copy_file(KOLUM_PROGRAM, folder.path("kolum"));
    folder.write("osm_info", "#!/bin/sh\ntouch ran\n");
    chmod(folder.path("osm_info").c_str(), 0755);
    const RunResult run =
        kolum::test::run({folder.path("kolum"), "geocode", "48.8584", "2.2945"},
                         {.environment = {{"PATH", folder.folder()}}, .folder = folder.folder()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "kolum: /usr/local/medialibrary/bin/osm_info: no such tool\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran")));
  });
}

TEST_F(ToolGeocode, ReportsTheToolsError) {
  runInAppliance([] {
    installOsmInfo("<error>Unable to geocode</error>");
    const Outcome run = kolum({"geocode", "0", "0"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr("the tool knows no place there"));
  });
}

TEST_F(ToolGeocode, RejectsUnknownLanguages) {
  const Outcome run = kolum({"geocode", "48.8584", "2.2945", "--language", "xx"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "kolum: --language takes one of cs, da, de, el, en, es, fi, fr, hu, it, ja, ko, nl, "
            "no, pl, pt, ro, ru, sv, th, tr, zh-cn, zh-tw, not \"xx\"; see kolum geocode "
            "--help\n");
}

TEST_F(ToolGeocode, FailsForAnswerWithoutAddress) {
  runInAppliance([] {
    installOsmInfo(
        "<output><reversegeocode language=\"en\">"
        "<result osm_type=\"way\" osm_id=\"42\">Paris</result>"
        "<addressparts><city>Paris</city></addressparts></reversegeocode></output>");
    const Outcome run = kolum({"geocode", "48.8584", "2.2945", "--language", "de"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(": the answer has no address in de\n"));
    EXPECT_EQ(kolum({"geocode", "48.8584", "2.2945", "--language", "en"}).status, 0);
    installOsmInfo("<output></output>");
    EXPECT_EQ(kolum({"geocode", "48.8584", "2.2945"}).status, 1);
  });
}

TEST_F(ToolGeocode, HelpNamesTheSourceOfPlaces) {
  EXPECT_THAT(kolum({"geocode", "--help"}).out,
              testing::AllOf(HasSubstr("GeoNames"), HasSubstr("CC BY 4.0"),
                             HasSubstr("https://www.geonames.org")));
}

TEST_F(ToolGeocode, RejectsPositionsBeyondTheEarthAsWrongUsage) {
  const std::vector<std::pair<const char*, const char*>> rows = {
      {"90.1", "0"}, {"0", "-180.5"}, {"nan", "0"}, {"0", "inf"}, {"1;id", "0"}, {"", "0"}};
  for (const auto& [latitude, longitude] : rows) {
    EXPECT_EQ(kolum({"geocode", latitude, longitude}).status, 2) << latitude << " " << longitude;
  }
}

}  // namespace
}  // namespace kolum::test
