// DSD files and the external tool, which is a script in these tests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/audio.h>
#include <kolum/frame.h>
#include <kolum/identifiers.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/dsd_builder.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

constexpr uint32_t kUntouched = 4711;
constexpr int32_t kUntouchedSigned = -4711;

constexpr char kDocument[] =
    "<?xml version=\"1.0\"?>\n<ID3TAG><TITLE>Tool Title</TITLE><ARTIST>Tool Artist</ARTIST>"
    "<ALBUM>Tool Album</ALBUM><YEAR>1999</YEAR><TRACK>7</TRACK><DURATION>123</DURATION>"
    "<CHANNEL>2</CHANNEL><FREQUENCY>2822400</FREQUENCY></ID3TAG>\n";

// The working path that the library got, once per process.
const TempDir& toolFolder() {
  static const TempDir kFolder;
  return kFolder;
}

// A tool folder without a tool, and a folder of files.
class DsfTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(KoLUM_Init(tools_.folder().c_str()), 0);
    std::filesystem::remove(tools_.path("dsf2flac"));
  }

  // The script gets the tool's arguments.
  void setTool(const std::string& script) {
    const std::string path = tools_.write("dsf2flac", "#!/bin/sh\n" + script);
    chmod(path.c_str(), 0755);
  }
  void setToolOutput(const std::string& output) {
    tools_.write("output", output);
    setTool("exec cat '" + tools_.path("output") + "'\n");
  }

  const TempDir& tools_ = toolFolder();
  TempDir files_;
};

using GetDsfMetadata2Test = DsfTest;
using GetDsfMetadata3Test = DsfTest;
using GetDsfMetadataTest = DsfTest;
using GetAudioMetadataDsdTest = DsfTest;

struct Numbers {
  unsigned result = 9;
  uint32_t containerBitRate = kUntouched;
  uint32_t bitRate = kUntouched;
  uint32_t sampleRate = kUntouched;
  uint32_t bitsPerSample = kUntouched;
  uint32_t channels = kUntouched;
  uint32_t durationSec = kUntouched;
};

Numbers numbersOf(const std::string& folder, const std::string& name) {
  Numbers n;
  n.result = GetDsfMetadata2(folder.c_str(), name.c_str(), &n.containerBitRate, &n.bitRate,
                             &n.sampleRate, &n.bitsPerSample, &n.channels, &n.durationSec);
  return n;
}

void expectUntouched(const Numbers& n) {
  for (const uint32_t value :
       {n.containerBitRate, n.bitRate, n.sampleRate, n.bitsPerSample, n.channels, n.durationSec})
    EXPECT_EQ(value, kUntouched);
}

// Outputs of GetDsfMetadata3, each text followed by bytes that must stay unchanged.
struct Text {
  char value[256] = "";
  char guard[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
};

struct Tags {
  unsigned result = 9;
  Text title, artist, albumArtist, album;
  int32_t year = kUntouchedSigned;
  int32_t track = kUntouchedSigned;
  uint32_t duration = kUntouched;
  uint32_t channels = kUntouched;
  uint32_t sampleRate = kUntouched;
  uint32_t bitRate = kUntouched;
};

Tags tagsOf(const std::string& folder, const std::string& name) {
  Tags t;
  t.result = GetDsfMetadata3(folder.c_str(), name.c_str(), t.title.value, t.artist.value,
                             t.albumArtist.value, t.album.value, &t.year, &t.track, &t.duration,
                             &t.channels, &t.sampleRate, &t.bitRate);
  for (const Text* text : {&t.title, &t.artist, &t.albumArtist, &t.album})
    EXPECT_EQ(std::string(text->guard, 8), "########");
  return t;
}

std::vector<TextFrame> frames(TextEncoding encoding) {
  return {{"TIT2", "Title", encoding},
          {"TPE1", "Artist", encoding},
          {"TPE2", "Band", encoding},
          {"TALB", "Album", encoding}};
}

std::string taggedDsf(const std::vector<TextFrame>& all) {
  return dsfFile({.tag = id3v2Tag(all)});
}

void expectTexts(const Tags& tags, const std::vector<std::string>& expected) {
  EXPECT_EQ((std::vector<std::string>{tags.title.value, tags.artist.value, tags.albumArtist.value,
                                      tags.album.value}),
            expected);
}

TEST_F(GetDsfMetadata2Test, ReturnsTheToolsNumbers) {
  setToolOutput(kDocument);
  const Numbers n = numbersOf(files_.folder(), "song.dsf");
  EXPECT_EQ(n.result, 0U);
  EXPECT_EQ(n.durationSec, 123U);
  EXPECT_EQ(n.channels, 2U);
  EXPECT_EQ(n.sampleRate, 2822400U);
  EXPECT_EQ(n.bitRate, 5644U);
  EXPECT_EQ(n.containerBitRate, kUntouched);
  EXPECT_EQ(n.bitsPerSample, kUntouched);
}

TEST_F(GetDsfMetadata2Test, SkipsNullOutputs) {
  setToolOutput(kDocument);
  const std::string folder = files_.folder();
  const auto call = [&](uint32_t* bitRate, uint32_t* sampleRate, uint32_t* channels) {
    return GetDsfMetadata2(folder.c_str(), "x.dsf", nullptr, bitRate, sampleRate, nullptr, channels,
                           nullptr);
  };
  EXPECT_EQ(call(nullptr, nullptr, nullptr), 0U);
  uint32_t bitRate = kUntouched;
  uint32_t sampleRate = kUntouched;
  EXPECT_EQ(call(&bitRate, nullptr, nullptr), 0U);
  EXPECT_EQ(bitRate, kUntouched) << "only with the sample rate";
  EXPECT_EQ(call(nullptr, &sampleRate, nullptr), 0U);
  EXPECT_EQ(sampleRate, 2822400U);
  EXPECT_EQ(call(&bitRate, &sampleRate, nullptr), 0U);
  EXPECT_EQ(bitRate, 5644U);
  EXPECT_EQ(GetDsfMetadata2(nullptr, "x", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            1U);
  EXPECT_EQ(GetDsfMetadata2("/", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            1U);
}

TEST_F(GetDsfMetadata2Test, KeepsOutputsOfMissingElements) {
  setToolOutput("<ID3TAG><CHANNEL>6</CHANNEL></ID3TAG>");
  Numbers n = numbersOf(files_.folder(), "x.dsf");
  EXPECT_EQ(n.result, 0U);
  EXPECT_EQ(n.channels, 6U);
  n.channels = kUntouched;
  expectUntouched(n);

  setToolOutput("<ID3TAG/>");
  n = numbersOf(files_.folder(), "x.dsf");
  EXPECT_EQ(n.result, 0U);
  expectUntouched(n);
}

TEST_F(GetDsfMetadata2Test, UsesTheCallersChannelCountIfMissing) {
  setToolOutput("<ID3TAG><FREQUENCY>2822400</FREQUENCY></ID3TAG>");
  const auto bitRateWith = [&](uint32_t* channels) {
    uint32_t bitRate = kUntouched;
    uint32_t sampleRate = kUntouched;
    EXPECT_EQ(GetDsfMetadata2(files_.folder().c_str(), "x.dsf", nullptr, &bitRate, &sampleRate,
                              nullptr, channels, nullptr),
              0U);
    EXPECT_EQ(sampleRate, 2822400U);
    return bitRate;
  };
  uint32_t channels = 6;
  EXPECT_EQ(bitRateWith(&channels), 16934U);
  EXPECT_EQ(channels, 6U);
  EXPECT_EQ(bitRateWith(nullptr), 0U);
}

TEST_F(GetDsfMetadata2Test, ReadsLeadingDigits) {
  struct Row {
    const char* text;
    uint32_t expected;
  };
  const Row rows[] = {{"12", 12}, {"12.9", 12},    {"12abc", 12}, {"abc", 0},
                      {"", 0},    {" \n 12 ", 12}, {"007", 7},    {"0x10", 0}};
  for (const Row& row : rows) {
    setToolOutput("<ID3TAG><DURATION>" + std::string(row.text) + "</DURATION></ID3TAG>");
    EXPECT_EQ(numbersOf(files_.folder(), "x.dsf").durationSec, row.expected) << row.text;
  }
}

TEST_F(GetDsfMetadata2Test, WrapsBitRateToSigned32Bits) {
  setToolOutput("<ID3TAG><CHANNEL>100</CHANNEL><FREQUENCY>45158400</FREQUENCY></ID3TAG>");
  // 4515840000 wraps to 220872704 in 32 bits.
  EXPECT_EQ(numbersOf(files_.folder(), "x.dsf").bitRate, 220872U);
  setToolOutput("<ID3TAG><CHANNEL>50</CHANNEL><FREQUENCY>45158400</FREQUENCY></ID3TAG>");
  EXPECT_EQ(static_cast<int32_t>(numbersOf(files_.folder(), "x.dsf").bitRate), -2037047);
}

// A document of exactly SIZE bytes with its elements at the end.
std::string paddedDocument(std::size_t size) {
  const std::string document = kDocument;
  const std::string head = document.substr(0, document.find('\n') + 1);
  const std::string tail = document.substr(head.size());
  return head + std::string(size - document.size(), ' ') + tail;
}

TEST_F(GetDsfMetadata2Test, ReadsOutputOfUpTo4095BytesCompletely) {
  for (const std::size_t size : {1000U, 4094U, 4095U}) {
    setToolOutput(paddedDocument(size));
    EXPECT_EQ(numbersOf(files_.folder(), "x.dsf").durationSec, 123U) << size;
  }
}

TEST_F(GetDsfMetadata2Test, ReadsOnlyTheLaterPartOfLongerOutput) {
  struct Row {
    const char* what;
    std::string output;
    unsigned result;
  };
  const std::string document = kDocument;
  const Row rows[] = {
      {"exactly the first read", paddedDocument(4096), 1},
      {"one byte more", paddedDocument(4097), 1},
      {"document first", document + std::string(5000, ' '), 1},
      {"document in the second read", std::string(4096, ' ') + document, 0},
      {"document across both reads", paddedDocument(4096 + 20), 1},
      {"document that fills the second read", std::string(4096, ' ') + paddedDocument(6144), 1},
      {"document in the third read", std::string(4096 + 6144, ' ') + document, 0},
      {"document in the fourth read", std::string(4096 + 6144 + 8192, ' ') + document, 0},
  };
  for (const Row& row : rows) {
    setToolOutput(row.output);
    const Numbers n = numbersOf(files_.folder(), "x.dsf");
    EXPECT_EQ(n.result, row.result) << row.what;
    EXPECT_EQ(n.durationSec, row.result == 0 ? 123U : kUntouched) << row.what;
  }
}

TEST_F(GetDsfMetadata2Test, FailsForOtherOutput) {
  struct Row {
    const char* what;
    std::string script;
  };
  const Row rows[] = {
      {"no output", "exit 0\n"},
      {"no XML", "echo hello\n"},
      {"another root", "echo '<OTHER><DURATION>5</DURATION></OTHER>'\n"},
      {"killed", "kill -9 $$\n"},
      {"killed in the middle", "printf '<ID3T'; kill -9 $$\n"},
      {"failed", "echo 'dsf2flac: no such file' >/dev/null; exit 3\n"},
      {"NUL first", "printf '\\000<ID3TAG/>'\n"},
  };
  for (const Row& row : rows) {
    setTool(row.script);
    const Numbers n = numbersOf(files_.folder(), "x.dsf");
    EXPECT_EQ(n.result, 1U) << row.what;
    expectUntouched(n);
  }
}

TEST_F(GetDsfMetadata2Test, FailsWithoutTool) {
  const Numbers n = numbersOf(files_.folder(), "x.dsf");
  EXPECT_EQ(n.result, 1U);
  expectUntouched(n);
}

TEST_F(GetDsfMetadata2Test, FailsBeforeTheLibraryIsInitialised) {
  setToolOutput(kDocument);
  char* const initialised = std::exchange(g_localWorkingPath, nullptr);
  const Numbers n = numbersOf(files_.folder(), "x.dsf");
  g_localWorkingPath = initialised;
  EXPECT_EQ(n.result, 1U);
  expectUntouched(n);
}

TEST_F(GetDsfMetadata2Test, PrintsErrorIfTheToolCannotBeStarted) {
  setToolOutput(kDocument);
  testing::internal::CaptureStdout();
  rlimit before = {};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none = {0, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const Numbers n = numbersOf(files_.folder(), "x.dsf");
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "error\n");
  EXPECT_EQ(n.result, 1U);
  expectUntouched(n);
}

TEST_F(GetDsfMetadata2Test, PassesAnyFileNameToTheTool) {
  // The script reports the name's length and its last byte.
  setTool(
      "[ \"$1\" = -i ] && [ \"$3\" = -f ] && [ $# = 3 ] || exit 1\n"
      "printf %s \"$2\" >'" +
      tools_.path("name") + "'\necho '<ID3TAG/>'\n");
  for (const char* name :
       {"plain.dsf", "with space.dsf", "quote'.dsf", "double\".dsf", "$(touch x).dsf", "`id`.dsf",
        "a;b|c&d>e<f.dsf", "back\\slash.dsf", "new\nline.dsf", "star*?[a].dsf", "caf\xE9.dsf",
        "~!#%^(){}.dsf", "tab\t.dsf", "-i.dsf"}) {
    EXPECT_EQ(numbersOf(files_.folder(), name).result, 0U) << name;
    EXPECT_EQ(mustRun({"cat", tools_.path("name")}), files_.folder() + name);
  }
  EXPECT_TRUE(std::filesystem::is_empty(files_.folder()));
}

TEST_F(GetDsfMetadata2Test, NeverCutsEscapedNames) {
  setTool("printf %s \"$2\" >'" + tools_.path("name") + "'\necho '<ID3TAG/>'\n");
  const std::string folder = files_.folder();
  const std::string longest(1023 - folder.size(), '\'');
  EXPECT_EQ(numbersOf(folder, longest).result, 0U);
  EXPECT_EQ(mustRun({"cat", tools_.path("name")}), folder + longest);
  std::filesystem::remove(tools_.path("name"));
  EXPECT_EQ(numbersOf(folder, longest + "'").result, 1U);
  EXPECT_FALSE(std::filesystem::exists(tools_.path("name")));
}

TEST_F(GetDsfMetadata2Test, LeavesNoChildAndNoDescriptor) {
  numbersOf(files_.folder(), "x.dsf");
  const ExpectNoDescriptorLeak leak;
  for (const std::string& script :
       {std::string("echo '<ID3TAG/>'\n"), std::string("kill -9 $$\n"), std::string("exit 1\n"),
        std::string("head -c 20000 /dev/zero\n")}) {
    setTool(script);
    numbersOf(files_.folder(), "x.dsf");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }
}

TEST_F(GetDsfMetadata2Test, KillsToolThatNeverStopsPrinting) {
  setTool("yes '<ID3TAG>'\n");
  withinSeconds(30, [&] {
    const Numbers n = numbersOf(files_.folder(), "x.dsf");
    EXPECT_EQ(n.result, 1U);
    expectUntouched(n);
  });
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
}

TEST_F(GetDsfMetadata2Test, LosesNoOutputToSignals) {
  setTool("printf '<ID3TAG>'; sleep 0.2; echo '<CHANNEL>6</CHANNEL></ID3TAG>'\n");
  runInChild([&] {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval often{{0, 10'000}, {0, 10'000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_EQ(numbersOf(files_.folder(), "x.dsf").channels, 6U);
  });
}

TEST_F(GetDsfMetadata2Test, RunsInParallel) {
  setTool("echo \"<ID3TAG><DURATION>$(basename \"$2\" .dsf)</DURATION></ID3TAG>\"\n");
  std::vector<std::thread> threads;
  for (uint32_t i = 1; i <= 8; ++i)
    threads.emplace_back([&, i] {
      EXPECT_EQ(numbersOf(files_.folder(), std::to_string(i) + ".dsf").durationSec, i);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST_F(GetDsfMetadata3Test, ReadsUnicodeTextsFromTheTag) {
  setToolOutput(kDocument);
  for (const TextEncoding encoding :
       {TextEncoding::kUtf16, TextEncoding::kUtf16BigEndian, TextEncoding::kUtf8}) {
    files_.write("song.dsf", taggedDsf(frames(encoding)));
    const Tags tags = tagsOf(files_.folder(), "song.dsf");
    EXPECT_EQ(tags.result, 0U);
    expectTexts(tags, {"Title", "Artist", "Band", "Album"});
    EXPECT_EQ(tags.year, 1999);
    EXPECT_EQ(tags.track, 7);
    EXPECT_EQ(tags.duration, 123U);
    EXPECT_EQ(tags.channels, 2U);
    EXPECT_EQ(tags.sampleRate, 2822400U);
    EXPECT_EQ(tags.bitRate, 5644U);
  }
}

TEST_F(GetDsfMetadata3Test, ReadsTextsFromOlderTags) {
  setToolOutput(kDocument);
  files_.write("third.dsf", dsfFile({.tag = id3v2Tag(frames(TextEncoding::kUtf16), 3)}));
  expectTexts(tagsOf(files_.folder(), "third.dsf"), {"Title", "Artist", "Band", "Album"});
  const std::string second = id3v2Tag({{"TT2", "Title", TextEncoding::kUtf16},
                                       {"TP1", "Artist", TextEncoding::kUtf16},
                                       {"TP2", "Band", TextEncoding::kLatin1},
                                       {"TAL", "Album", TextEncoding::kUtf16}},
                                      2);
  files_.write("second.dsf", dsfFile({.tag = second}));
  expectTexts(tagsOf(files_.folder(), "second.dsf"), {"Title", "Artist", "", "Album"});
}

TEST_F(GetDsfMetadata3Test, ConvertsTextsToUtf8) {
  setToolOutput(kDocument);
  files_.write("song.dsf", taggedDsf({{"TIT2", "M\xC3\xBCnchen \xE6\x9D\xB1\xE4\xBA\xAC"}}));
  EXPECT_STREQ(tagsOf(files_.folder(), "song.dsf").title.value,
               "M\xC3\xBCnchen \xE6\x9D\xB1\xE4\xBA\xAC");
}

TEST_F(GetDsfMetadata3Test, LeavesLatin1TextsEmptyAndIgnoresTheToolsTexts) {
  setToolOutput(kDocument);
  files_.write("song.dsf", taggedDsf(frames(TextEncoding::kLatin1)));
  const Tags tags = tagsOf(files_.folder(), "song.dsf");
  EXPECT_EQ(tags.result, 0U);
  expectTexts(tags, {"", "", "", ""});
  EXPECT_EQ(tags.year, 1999);
}

TEST_F(GetDsfMetadata3Test, UsesTheEncodingOfAFieldsLastFrame) {
  setToolOutput(kDocument);
  files_.write("song.dsf", taggedDsf({{"TIT2", "first", TextEncoding::kLatin1},
                                      {"TIT2", "second", TextEncoding::kUtf8},
                                      {"TALB", "first", TextEncoding::kUtf8},
                                      {"TALB", "second", TextEncoding::kLatin1}}));
  expectTexts(tagsOf(files_.folder(), "song.dsf"), {"first", "", "", ""});
}

TEST_F(GetDsfMetadata3Test, ReturnsNoTextsForDsfFileWithoutTag) {
  setToolOutput(kDocument);
  const std::string tag = id3v2Tag(frames(TextEncoding::kUtf8));
  const struct {
    const char* what;
    std::string file;
  } rows[] = {
      {"no tag", dsfFile({})},
      {"beyond the end", dsfFile({.tag = tag, .tagOffset = 1U << 30})},
      {"at the last byte", dsfFile({.tag = tag, .tagOffset = dsfFile({.tag = tag}).size() - 1})},
      {"far beyond", dsfFile({.tag = tag, .tagOffset = UINT64_MAX})},
      {"negative", dsfFile({.tag = tag, .tagOffset = std::uint64_t{1} << 63})},
      {"in the header", dsfFile({.tag = tag, .tagOffset = 4})},
      {"in the audio", dsfFile({.tag = tag, .tagOffset = 200})},
      {"none at all", ""},
      {"only the header's begin", "DSD "},
      {"no DSF file", "RIFF" + dsfFile({.tag = tag}).substr(4)},
  };
  for (const auto& row : rows) {
    files_.write("song.dsf", row.file);
    const Tags tags = tagsOf(files_.folder(), "song.dsf");
    EXPECT_EQ(tags.result, 0U) << row.what;
    expectTexts(tags, {"", "", "", ""});
    EXPECT_EQ(tags.duration, 123U) << row.what;
  }
}

TEST_F(GetDsfMetadata3Test, ReturnsNoTextsForNonFiles) {
  setToolOutput(kDocument);
  mkdir(files_.path("folder.dsf").c_str(), 0700);
  ASSERT_EQ(mkfifo(files_.path("pipe.dsf").c_str(), 0600), 0);
  for (const char* name : {"folder.dsf", "pipe.dsf", "missing.dsf"})
    withinSeconds(20, [&] {
      const Tags tags = tagsOf(files_.folder(), name);
      EXPECT_EQ(tags.result, 0U) << name;
      expectTexts(tags, {"", "", "", ""});
    });
}

TEST_F(GetDsfMetadata3Test, SurvivesDamagedTags) {
  setToolOutput(kDocument);
  const std::string tag = id3v2Tag(frames(TextEncoding::kUtf16));
  const std::string whole = dsfFile({.sampleRate = 8192, .tag = tag});
  const std::size_t begin = whole.size() - tag.size();
  for (std::size_t i = 0; i < tag.size(); ++i) {
    std::string damaged = whole;
    damaged[begin + i] = static_cast<char>(damaged[begin + i] ^ 0xFF);
    files_.write("song.dsf", i % 2 == 0 ? damaged : whole.substr(0, begin + i));
    EXPECT_EQ(tagsOf(files_.folder(), "song.dsf").result, 0U) << i;
  }
}

TEST_F(GetDsfMetadata3Test, UsesTheToolsTextsForOtherFiles) {
  setToolOutput(kDocument);
  for (const char* name : {"song.dff", "song.DFF", "song", "song.dsf.bak", "dsf"}) {
    files_.write(name, dffFile({}));
    const Tags tags = tagsOf(files_.folder(), name);
    EXPECT_EQ(tags.result, 0U);
    expectTexts(tags, {"Tool Title", "Tool Artist", "Tool Artist", "Tool Album"});
  }
  files_.write("song.DSF", taggedDsf(frames(TextEncoding::kUtf8)));
  expectTexts(tagsOf(files_.folder(), "song.DSF"), {"Title", "Artist", "Band", "Album"});
}

TEST_F(GetDsfMetadata3Test, CutsTextsAt255Bytes) {
  const std::string longText(1000, 'x');
  setToolOutput("<ID3TAG><TITLE>" + longText + "</TITLE></ID3TAG>");
  files_.write("song.dff", "");
  EXPECT_EQ(tagsOf(files_.folder(), "song.dff").title.value, longText.substr(0, 255));
  files_.write("song.dsf", taggedDsf({{"TIT2", longText}}));
  EXPECT_EQ(tagsOf(files_.folder(), "song.dsf").title.value, longText.substr(0, 255));
}

TEST_F(GetDsfMetadata3Test, WritesYearAndTrackOnlyWithTheDuration) {
  setToolOutput(kDocument);
  int32_t year = kUntouchedSigned;
  int32_t track = kUntouchedSigned;
  EXPECT_EQ(GetDsfMetadata3(files_.folder().c_str(), "x.dff", nullptr, nullptr, nullptr, nullptr,
                            &year, &track, nullptr, nullptr, nullptr, nullptr),
            0U);
  EXPECT_EQ(year, kUntouchedSigned);
  EXPECT_EQ(track, kUntouchedSigned);
  uint32_t duration = kUntouched;
  EXPECT_EQ(GetDsfMetadata3(files_.folder().c_str(), "x.dff", nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, &duration, nullptr, nullptr, nullptr),
            0U);
  EXPECT_EQ(duration, 123U);
}

TEST_F(GetDsfMetadata3Test, HandlesZerosAndEmptyElements) {
  setToolOutput("<ID3TAG><TITLE/><YEAR>0</YEAR><TRACK>none</TRACK><DURATION/></ID3TAG>");
  files_.write("song.dff", "");
  const Tags tags = tagsOf(files_.folder(), "song.dff");
  EXPECT_EQ(tags.result, 0U);
  expectTexts(tags, {"", "", "", ""});
  EXPECT_EQ(tags.year, kUntouchedSigned);
  EXPECT_EQ(tags.track, kUntouchedSigned);
  EXPECT_EQ(tags.duration, 0U);
  EXPECT_EQ(tags.channels, kUntouched);
}

TEST_F(GetDsfMetadata3Test, ReportsMissingDurationAsZero) {
  setToolOutput("<ID3TAG><CHANNEL>6</CHANNEL></ID3TAG>");
  const Tags tags = tagsOf(files_.folder(), "song.dff");
  EXPECT_EQ(tags.result, 0U);
  EXPECT_EQ(tags.duration, 0U);
  EXPECT_EQ(tags.channels, 6U);
  EXPECT_EQ(tags.sampleRate, kUntouched);
  EXPECT_EQ(tags.bitRate, kUntouched);
}

TEST_F(GetDsfMetadata3Test, WritesBitRateOnlyWithTheSampleRate) {
  setToolOutput(kDocument);
  const auto call = [&](uint32_t* sampleRate, uint32_t* bitRate) {
    EXPECT_EQ(GetDsfMetadata3(files_.folder().c_str(), "x.dff", nullptr, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, sampleRate, bitRate),
              0U);
  };
  uint32_t sampleRate = kUntouched;
  uint32_t bitRate = kUntouched;
  call(nullptr, &bitRate);
  EXPECT_EQ(bitRate, kUntouched);
  call(&sampleRate, nullptr);
  EXPECT_EQ(sampleRate, 2822400U);
  call(&sampleRate, &bitRate);
  EXPECT_EQ(bitRate, 5644U);
}

TEST_F(GetDsfMetadata3Test, FailsWithTheTagsTextsIfTheToolFails) {
  files_.write("song.dsf", taggedDsf(frames(TextEncoding::kUtf8)));
  const Tags tags = tagsOf(files_.folder(), "song.dsf");
  EXPECT_EQ(tags.result, 1U);
  expectTexts(tags, {"Title", "Artist", "Band", "Album"});
  EXPECT_EQ(tags.duration, kUntouched);
}

songObject_st songOf(const std::string& folder, const std::string& name, unsigned expected = 0) {
  songObject_st song = {};
  EXPECT_EQ(GetDsfMetadata(folder.c_str(), name.c_str(), &song), expected) << name;
  return song;
}

TEST_F(GetDsfMetadataTest, FillsTheRecord) {
  setToolOutput(kDocument);
  auto all = frames(TextEncoding::kUtf8);
  all.push_back({"TCON", "Jazz"});
  files_.write("song.dsf", taggedDsf(all));
  const songObject_st song = songOf(files_.folder(), "song.dsf");
  EXPECT_STREQ(song.title, "Title");
  EXPECT_STREQ(song.artist, "Artist");
  EXPECT_STREQ(song.albumArtist, "Band");
  EXPECT_STREQ(song.album, "Album");
  EXPECT_STREQ(song.genre, "Jazz");
  EXPECT_EQ(song.year, 1999);
  EXPECT_EQ(song.track, 7);
  EXPECT_EQ(song.duration, 123U);
  EXPECT_EQ(song.channels, 2U);
  EXPECT_EQ(song.sampleRate, 2822400U);
  EXPECT_EQ(song.bitRate, 5644U);
  EXPECT_EQ(song.containerFormat, static_cast<uint32_t>(FORMAT_DSF));
  EXPECT_EQ(song.profile, -99);
  EXPECT_EQ(song.level, -99);
}

TEST_F(GetDsfMetadataTest, FillsLatin1TextsFromFfmpeg) {
  setToolOutput(kDocument);
  auto all = frames(TextEncoding::kLatin1);
  all[1].encoding = TextEncoding::kUtf8;
  files_.write("song.dsf", taggedDsf(all));
  const songObject_st song = songOf(files_.folder(), "song.dsf");
  EXPECT_STREQ(song.title, "Title");
  EXPECT_STREQ(song.artist, "Artist");
  EXPECT_STREQ(song.albumArtist, "Band");
}

TEST_F(GetDsfMetadataTest, FillsZeroNumbersFromFfmpeg) {
  struct Row {
    const char* date;
    const char* track;
    int32_t year;
    int32_t number;
  };
  const Row rows[] = {{"2015-03-01", "3/12", 2015, 3},
                      {"2015", "0", 2015, 0},
                      {"spring", "first", 0, 0},
                      {"0", "12", 0, 12}};
  for (const Row& row : rows) {
    files_.write("song.dsf", taggedDsf({{"TDRC", row.date}, {"TRCK", row.track}}));
    const songObject_st song = songOf(files_.folder(), "song.dsf");
    EXPECT_EQ(song.year, row.year) << row.date;
    EXPECT_EQ(song.track, row.number) << row.track;
  }
}

TEST_F(GetDsfMetadataTest, KeepsExistingValues) {
  files_.write("song.dsf", taggedDsf({{"TIT2", "Title", TextEncoding::kLatin1},
                                      {"TALB", "Album", TextEncoding::kLatin1},
                                      {"TDRC", "2015"}}));
  songObject_st song = {};
  std::strcpy(song.title, "kept");
  song.year = 1;
  EXPECT_EQ(GetDsfMetadata(files_.folder().c_str(), "song.dsf", &song), 0U);
  EXPECT_STREQ(song.title, "kept");
  EXPECT_STREQ(song.album, "Album");
  EXPECT_EQ(song.year, 1);
}

constexpr char (songObject_st::*kTexts[])[256] = {&songObject_st::title, &songObject_st::artist,
                                                  &songObject_st::albumArtist,
                                                  &songObject_st::album, &songObject_st::genre};

// A song whose container has these tags in exactly this spelling.
std::string songWithTags(const std::string& path, const std::vector<std::string>& entries) {
  std::vector<std::string> command = {"ffmpeg", "-loglevel", "error", "-nostdin",
                                      "-f",     "lavfi",     "-i",    "sine=d=1"};
  for (const std::string& entry : entries) command.insert(command.end(), {"-metadata", entry});
  command.push_back(path);
  mustRun(command);
  return path;
}

TEST_F(GetDsfMetadataTest, KeepsEveryExistingField) {
  songWithTags(files_.path("song.flac"), {"title=T", "artist=A", "album_artist=B", "album=C",
                                          "genre=G", "date=2015", "track=3"});
  const songObject_st empty = songOf(files_.folder(), "song.flac");
  songObject_st song = {};
  for (const auto text : kTexts) {
    EXPECT_EQ(std::strlen(empty.*text), 1U);
    std::strcpy(song.*text, "kept");
  }
  EXPECT_EQ(empty.year, 2015);
  EXPECT_EQ(empty.track, 3);
  song.year = 1;
  song.track = 2;
  EXPECT_EQ(GetDsfMetadata(files_.folder().c_str(), "song.flac", &song), 0U);
  for (const auto text : kTexts) EXPECT_STREQ(song.*text, "kept");
  EXPECT_EQ(song.year, 1);
  EXPECT_EQ(song.track, 2);
}

TEST_F(GetDsfMetadataTest, AcceptsTwoSpellingsOfAlbumArtistInExactCase) {
  songWithTags(files_.path("spaced.flac"), {"album artist=Band"});
  EXPECT_STREQ(songOf(files_.folder(), "spaced.flac").albumArtist, "Band");
  songWithTags(files_.path("underlined.mp3"), {"album_artist=Band"});
  EXPECT_STREQ(songOf(files_.folder(), "underlined.mp3").albumArtist, "Band");

  const std::string upper =
      songWithTags(files_.path("upper.mka"), {"GENRE=Jazz", "DATE=2015", "ALBUM_ARTIST=Band"});
  EXPECT_EQ(ffprobe(upper)["format"]["tags"]["GENRE"], "Jazz");
  const songObject_st song = songOf(files_.folder(), "upper.mka");
  EXPECT_STREQ(song.genre, "");
  EXPECT_STREQ(song.albumArtist, "");
  EXPECT_EQ(song.year, 0);
}

TEST_F(GetDsfMetadataTest, CutsEntriesAt255Bytes) {
  const std::string longText(400, 'x');
  songWithTags(files_.path("song.flac"),
               {"title=" + longText, "artist=" + longText, "album_artist=" + longText,
                "album=" + longText, "genre=" + longText});
  const songObject_st song = songOf(files_.folder(), "song.flac");
  for (const auto text : kTexts) EXPECT_EQ(song.*text, longText.substr(0, 255));
  EXPECT_EQ(song.year, 0) << "this field is between the texts";
}

TEST_F(GetDsfMetadataTest, UsesFfmpegsTagsWithoutTheTool) {
  files_.write("song.dsf", taggedDsf(frames(TextEncoding::kLatin1)));
  const songObject_st song = songOf(files_.folder(), "song.dsf");
  EXPECT_STREQ(song.album, "Album");
  EXPECT_EQ(song.channels, 2U);
  EXPECT_EQ(song.duration, 0U);
}

TEST_F(GetDsfMetadataTest, ReadsDffFiles) {
  setToolOutput("<ID3TAG><TITLE>Tool Title</TITLE></ID3TAG>");
  files_.write("song.dff", dffFile({}, "Artist", "Title"));
  const songObject_st song = songOf(files_.folder(), "song.dff");
  EXPECT_STREQ(song.title, "Tool Title");
  EXPECT_STREQ(song.artist, "Artist");
  EXPECT_EQ(song.containerFormat, static_cast<uint32_t>(FORMAT_DSF)) << "also for .dff files";
}

TEST_F(GetDsfMetadataTest, FailsPartlyFilledIfFfmpegCannotOpenTheFile) {
  setToolOutput(kDocument);
  files_.write("empty.dff", "");
  files_.write("streamless.dff", ";FFMETADATA1\ntitle=none\n");
  for (const char* name : {"empty.dff", "streamless.dff", "missing.dff"}) {
    const songObject_st song = songOf(files_.folder(), name, 1);
    EXPECT_STREQ(song.title, "Tool Title") << name;
    EXPECT_EQ(song.sampleRate, 2822400U) << name;
  }
}

TEST_F(GetDsfMetadataTest, RejectsNullArguments) {
  songObject_st song = {};
  EXPECT_EQ(GetDsfMetadata(nullptr, "x.dsf", &song), 1U);
  EXPECT_EQ(GetDsfMetadata("/", nullptr, &song), 1U);
  EXPECT_EQ(GetDsfMetadata("/", "x.dsf", nullptr), 1U);
  EXPECT_EQ(song.channels, 0U);
  EXPECT_EQ(GetDsfMetadata3(nullptr, "x", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr),
            1U);
}

TEST_F(GetAudioMetadataDsdTest, AsksTheToolInAnyLetterCase) {
  setToolOutput(kDocument);
  const struct {
    const char* name;
    uint32_t format;
  } rows[] = {{"song.dsf", FORMAT_DSF},
              {"song.DSF", FORMAT_DSF},
              {"song.dff", FORMAT_DFF},
              {"song.Dff", FORMAT_DFF}};
  for (const auto& row : rows) {
    files_.write(row.name, "no DSD file, which only the tool would notice");
    Numbers n;
    uint32_t format = kUntouched;
    uint32_t codec = kUntouched;
    int32_t profile = kUntouchedSigned;
    int32_t level = kUntouchedSigned;
    char dlna[16] = "none";
    const auto call = [&] {
      return GetAudioMetadata(files_.folder().c_str(), row.name, &n.containerBitRate, &n.bitRate,
                              &n.sampleRate, &n.bitsPerSample, &n.channels, &n.durationSec, &format,
                              &codec, &profile, &level, dlna);
    };
    EXPECT_EQ(call(), 0U);
    EXPECT_EQ(format, row.format) << row.name;
    EXPECT_EQ(n.bitRate, 5644U);
    EXPECT_EQ(n.durationSec, 123U);
    EXPECT_EQ(profile, -99);
    EXPECT_EQ(level, -99);
    EXPECT_EQ(codec, kUntouched);
    EXPECT_STREQ(dlna, "none");
  }
}

TEST_F(GetAudioMetadataDsdTest, UsesTheExtensionOfTheWholePath) {
  setToolOutput(kDocument);
  std::filesystem::create_directories(files_.path("folder.dsf"));
  std::filesystem::copy_file(media("song.wav", "-f lavfi -i sine=d=2:r=44100 -c:a pcm_s16le"),
                             files_.path("folder.dsf/song"));
  const auto sampleRateOf = [&](const std::string& folder, const char* name) {
    uint32_t sampleRate = kUntouched;
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetAudioMetadata(folder.c_str(), name, nullptr, nullptr, &sampleRate, nullptr,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    testing::internal::GetCapturedStderr();
    return sampleRate;
  };
  EXPECT_EQ(sampleRateOf(files_.path("folder.dsf/"), "song"), 44100U) << "FFmpeg's";
  EXPECT_EQ(sampleRateOf(files_.folder(), "folder.dsf"), 2822400U) << "the tool's";
  EXPECT_EQ(sampleRateOf(files_.path("folder"), ".dsf"), 2822400U) << "the tool's";
}

TEST_F(GetAudioMetadataDsdTest, FailsWithThePresetsIfTheToolFails) {
  files_.write("song.dsf", taggedDsf({}));
  Numbers n;
  uint32_t format = kUntouched;
  int32_t profile = kUntouchedSigned;
  int32_t level = kUntouchedSigned;
  EXPECT_EQ(GetAudioMetadata(files_.folder().c_str(), "song.dsf", &n.containerBitRate, &n.bitRate,
                             &n.sampleRate, &n.bitsPerSample, &n.channels, &n.durationSec, &format,
                             nullptr, &profile, &level, nullptr),
            1U);
  EXPECT_EQ(n.channels, 2U);
  EXPECT_EQ(format, static_cast<uint32_t>(FORMAT_DSF));
  EXPECT_EQ(profile, -99);
  EXPECT_EQ(level, -99);
  n.channels = kUntouched;
  expectUntouched(n);
}

}  // namespace
}  // namespace kolum::test
