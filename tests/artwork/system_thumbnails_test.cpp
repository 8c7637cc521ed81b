#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/thumbnail.h>
#include <sys/stat.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/log_recorder.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using kolum::test::contentOf;
using kolum::test::ExpectNoDescriptorLeak;
using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::TempDir;
using kolum::test::withinSeconds;
using testing::ElementsAre;
using testing::IsEmpty;

struct NameCase {
  unsigned mediaType;
  long id;
  int size;
  const char* name;
};

TEST(GetSystemThumbFolderName, NamesByMediaTypeAndLowestByte) {
  constexpr NameCase kCases[] = {
      {3, 4660, 16, "334/"},
      {20, 255, 16, "14ff/"},
      {0, 256, 16, "000/"},
      {20, 1, 16, "1401/"},
      {0, 1, 16, "001/"},
      {10, 10, 16, "a0a/"},
      {20, 0x7FFF'FFFF'FFFF'FFAB, 16, "14ab/"},
      {20, 1, 6, "1401/"},
      {20, 1, 5, "1401"},
      {20, 1, 4, "140"},
      {3, 1, 4, "301"},
  };
  for (const NameCase& row : kCases) {
    SCOPED_TRACE(row.name);
    std::array<char, 17> name;
    name.fill('#');
    EXPECT_EQ(getSystemThumbFolderName(row.mediaType, row.id, row.size, name.data()), 0);
    EXPECT_STREQ(name.data(), row.name);
    EXPECT_EQ(name[static_cast<std::size_t>(row.size)], '#');
  }
}

TEST(GetSystemThumbFolderName, NamesAtMost256FoldersPerType) {
  std::array<char, 16> first{};
  std::array<char, 16> second{};
  EXPECT_EQ(getSystemThumbFolderName(1, 7, 16, first.data()), 0);
  EXPECT_EQ(getSystemThumbFolderName(1, 7 + 256, 16, second.data()), 0);
  EXPECT_STREQ(first.data(), second.data());
}

struct RefusedCase {
  unsigned mediaType;
  long id;
  bool hasBuffer;
  int size;
  const char* message;
};

// Each row breaks one rule and every rule after it.
TEST(GetSystemThumbFolderName, ReportsTheFirstBrokenRule) {
  constexpr RefusedCase kCases[] = {
      {21, 0, false, 0, "Invalid play media type.\n"},
      {0xFFFF'FFFF, 1, true, 16, "Invalid play media type.\n"},
      {20, 0, false, 0, "Invalid id.\n"},
      {20, -1, true, 16, "Invalid id.\n"},
      {20, 1, false, 0, "Invalid folder\n"},
      {20, 1, true, 3, "Invalid folder name length\n"},
      {20, 1, true, -1, "Invalid folder name length\n"},
  };
  for (const RefusedCase& row : kCases) {
    SCOPED_TRACE(row.message);
    LogRecorder log;
    std::array<char, 16> name{"untouched"};
    EXPECT_EQ(getSystemThumbFolderName(row.mediaType, row.id, row.size,
                                       row.hasBuffer ? name.data() : nullptr),
              1);
    EXPECT_STREQ(name.data(), "untouched");
    ASSERT_THAT(log.texts(), ElementsAre(row.message));
    const LogMessage message = log.messages()[0];
    EXPECT_EQ(message.level, 5);
    EXPECT_EQ(message.colour, std::nullopt);
    EXPECT_EQ(message.source, "kolum_util");
    EXPECT_EQ(message.function, "getSystemThumbFolderName");
  }
}

// The test's own data volume.
class SystemFolders : public testing::Test {
 protected:
  void SetUp() override { setenv("KO_DATA_DIR", volume_.folder().c_str(), 1); }
  void TearDown() override { unsetenv("KO_DATA_DIR"); }

  TempDir volume_;
};

using RemoveSystemThumbnail = SystemFolders;
using SaveLastBuildTime = SystemFolders;

TEST_F(RemoveSystemThumbnail, EmptiesTheFolder) {
  volume_.write(".system/thumbnail/334/1.jpg", "x");
  volume_.write(".system/thumbnail/2.jpg", "x");
  volume_.write(".system/other/3.jpg", "x");
  for (const char* folder : {".system/thumbnail", ".system/thumbnail/"}) {
    EXPECT_EQ(removeSystemThumbnail(folder), 0);
    EXPECT_TRUE(fs::is_directory(volume_.path(".system/thumbnail")));
    EXPECT_TRUE(fs::is_empty(volume_.path(".system/thumbnail")));
  }
  EXPECT_TRUE(fs::exists(volume_.path(".system/other/3.jpg")));
}

TEST_F(RemoveSystemThumbnail, CreatesMissingFolder) {
  LogRecorder log;
  fs::create_directory(volume_.path(".system"));
  EXPECT_EQ(removeSystemThumbnail(".system/thumbnail"), 0);
  EXPECT_TRUE(fs::is_directory(volume_.path(".system/thumbnail")));
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(RemoveSystemThumbnail, SucceedsIfTheFolderCannotBeCreated) {
  volume_.write("file", "x");
  EXPECT_EQ(removeSystemThumbnail("file/below"), 0);
  EXPECT_TRUE(fs::is_regular_file(volume_.path("file")));
}

// Nobody, not even root, can remove the kernel's folders.
TEST_F(RemoveSystemThumbnail, ReportsFolderThatCannotBeRemovedAndContinues) {
  LogRecorder log;
  setenv("KO_DATA_DIR", "/proc", 1);
  EXPECT_EQ(removeSystemThumbnail("self/fdinfo"), 0);
  ASSERT_THAT(log.texts(), ElementsAre("Remove /proc/self/fdinfo/ failed.\n"));
  EXPECT_EQ(log.messages()[0].source, "kolum_util");
  EXPECT_EQ(log.messages()[0].function, "removeSystemThumbnail");
}

TEST_F(RemoveSystemThumbnail, FailsWithoutDataVolume) {
  unsetenv("KO_DATA_DIR");
  EXPECT_EQ(removeSystemThumbnail(".system/thumbnail"), 1);
}

TEST_F(RemoveSystemThumbnail, NeverLeavesOrRemovesTheDataVolume) {
  volume_.write("volume/photo.jpg", "x");
  volume_.write("beside/photo.jpg", "x");
  setenv("KO_DATA_DIR", volume_.path("volume").c_str(), 1);
  for (const char* folder :
       {"", "/", ".", "./", "//./", "..", "../beside", "a/../../beside", "a/.."}) {
    SCOPED_TRACE(folder);
    EXPECT_EQ(removeSystemThumbnail(folder), 1);
  }
  EXPECT_EQ(removeSystemThumbnail(nullptr), 1);
  EXPECT_TRUE(fs::exists(volume_.path("volume/photo.jpg")));
  EXPECT_TRUE(fs::exists(volume_.path("beside/photo.jpg")));
}

TEST_F(RemoveSystemThumbnail, AcceptsDotsWithinNames) {
  volume_.write("..a/b../x", "x");
  EXPECT_EQ(removeSystemThumbnail("..a/b.."), 0);
  EXPECT_TRUE(fs::is_empty(volume_.path("..a/b..")));
}

// A cut path would name another folder.
TEST_F(RemoveSystemThumbnail, RejectsPathThatDoesNotFit) {
  const std::string deep = std::string(200, 'd') + "/";
  std::string folder;
  while (folder.size() < 1100) folder += deep;
  volume_.write(folder + "photo.jpg", "x");
  EXPECT_EQ(removeSystemThumbnail(folder.c_str()), 1);
  EXPECT_TRUE(fs::exists(volume_.path(folder + "photo.jpg")));
}

TEST(BuildTimeStamps, AreNamedBelowTheDataVolume) {
  EXPECT_STREQ(kThumbLastBuildTime, ".system/tmp/thumb_lastbuilttime.tmp");
  EXPECT_STREQ(kFaceLastBuildTime, ".system/tmp/face_lastbuilttime.tmp");
  EXPECT_STREQ(kImgClassifyLastBuildTime, ".system/tmp/imgClassify_lastbuilttime.tmp");
}

TEST_F(SaveLastBuildTime, WritesTheSecondsAndNothingElse) {
  const ExpectNoDescriptorLeak noLeak;
  fs::create_directories(volume_.path(".system/tmp"));
  for (const char* name : {kThumbLastBuildTime, kFaceLastBuildTime, kImgClassifyLastBuildTime}) {
    SCOPED_TRACE(name);
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(saveLastBuildTime(name), 0);
    const std::string content = contentOf(volume_.path(name));
    EXPECT_EQ(content.find_first_not_of("0123456789"), std::string::npos) << content;
    EXPECT_GE(std::stol(content), before);
    EXPECT_LE(std::stol(content), std::time(nullptr));
  }
}

TEST_F(SaveLastBuildTime, ReplacesExistingContent) {
  volume_.write(kFaceLastBuildTime, std::string(5000, '9'));
  EXPECT_EQ(saveLastBuildTime(kFaceLastBuildTime), 0);
  EXPECT_EQ(contentOf(volume_.path(kFaceLastBuildTime)).size(), 10U);
}

TEST_F(SaveLastBuildTime, ReportsFileThatCannotBeOpenedButReturnsZero) {
  const ExpectNoDescriptorLeak noLeak;
  LogRecorder log;
  EXPECT_EQ(saveLastBuildTime(kThumbLastBuildTime), 0);
  ASSERT_THAT(log.texts(), ElementsAre("Open " + volume_.path(kThumbLastBuildTime) + " failed.\n"));
  EXPECT_EQ(log.messages()[0].source, "kolum_util");
  EXPECT_EQ(log.messages()[0].function, "saveLastBuildTime");
  EXPECT_EQ(saveLastBuildTime(nullptr), 0);
  EXPECT_EQ(saveLastBuildTime(""), 0);
}

TEST_F(SaveLastBuildTime, CutsThePathToItsBuffer) {
  LogRecorder log;
  EXPECT_EQ(saveLastBuildTime(std::string(3000, 'x').c_str()), 0);
  ASSERT_EQ(log.texts().size(), 1U);
  const std::string text = log.texts()[0];
  EXPECT_EQ(text.size(), std::string("Open  failed.\n").size() + 1023);
}

TEST_F(SaveLastBuildTime, DoesNotWaitForPipes) {
  fs::create_directories(volume_.path(".system/tmp"));
  ASSERT_EQ(mkfifo(volume_.path(kThumbLastBuildTime).c_str(), 0666), 0);
  withinSeconds(20, [] { EXPECT_EQ(saveLastBuildTime(kThumbLastBuildTime), 0); });
}

TEST_F(SaveLastBuildTime, KeepsThreadsApart) {
  fs::create_directories(volume_.path(".system/tmp"));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([] {
      for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(saveLastBuildTime(kThumbLastBuildTime), 0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(contentOf(volume_.path(kThumbLastBuildTime)).size(), 10U);
}

}  // namespace
