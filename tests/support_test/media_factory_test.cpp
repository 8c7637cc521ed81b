#include "support/media_factory.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

void write(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

// Removes what earlier runs made.
void forget(const std::string& name, const std::string& recipe) {
  const auto makeAnything = [](const std::string& path) { write(path, "x"); };
  fs::remove_all(fs::path(made(name, recipe, makeAnything)).parent_path());
}

TEST(Media, IsARealFileInTheBuildTree) {
  const std::string path =
      media("factory.mkv", "-f lavfi -i testsrc=s=176x144:r=25:d=1 -c:v mpeg4 -bitexact");
  EXPECT_THAT(path, StartsWith(KOLUM_MEDIA_FOLDER "/"));
  EXPECT_EQ(fs::path(path).filename(), "factory.mkv");
  const nlohmann::json probed = ffprobe(path);
  EXPECT_EQ(probed.at("format").at("format_name"), "matroska,webm");
  EXPECT_EQ(probed.at("streams").at(0).at("codec_name"), "mpeg4");
  EXPECT_EQ(probed.at("streams").at(0).at("width"), 176);
}

TEST(Media, IsMadeOncePerArgumentList) {
  const std::string arguments = "-f lavfi -i sine=d=0.1 -bitexact";
  const std::string path = media("once.wav", arguments);
  const auto written = fs::last_write_time(path);
  EXPECT_EQ(media("once.wav", arguments), path);
  EXPECT_EQ(fs::last_write_time(path), written);
  EXPECT_NE(media("once.wav", arguments + " -ac 2"), path);
  EXPECT_NE(media("other.wav", arguments), path);
}

TEST(Media, AcceptsQuotedArguments) {
  const std::string path =
      media("quoted.mka",
            "-f lavfi -i sine=d=0.1 -metadata 'title=two  words' -metadata artist=\"it's\"");
  const nlohmann::json tags = ffprobe(path).at("format").at("tags");
  EXPECT_EQ(tags.at("title"), "two  words");
  EXPECT_EQ(tags.at("ARTIST"), "it's");
}

TEST(Media, ThrowsTheToolsMessagesOnFailure) {
  try {
    media("impossible.mkv", "-f lavfi -i no_such_source_of_pictures");
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("no_such_source_of_pictures"));
    EXPECT_THAT(error.what(), HasSubstr("No such filter"));
  }
}

TEST(Made, MayBeAFolder) {
  const std::string path = made("folder", "with one file", [](const std::string& folder) {
    fs::create_directory(folder);
    write(folder + "/file", "content");
  });
  EXPECT_EQ(contentOf(path + "/file"), "content");
}

TEST(Made, KeepsNothingAfterFailure) {
  forget("failing", "at first");
  const auto fails = [](const std::string& path) {
    write(path, "half");
    throw std::runtime_error("the maker's message");
  };
  EXPECT_THROW(made("failing", "at first", fails), std::runtime_error);
  EXPECT_THROW(made("failing", "at first", [](const std::string&) {}), std::runtime_error);
  const std::string path =
      made("failing", "at first", [](const std::string& out) { write(out, "whole"); });
  EXPECT_EQ(contentOf(path), "whole");
}

TEST(Made, MakesOnceForConcurrentProcesses) {
  forget("slow", "by many");
  const TempDir folder;
  const std::string log = folder.path("log");
  const auto makeSlowly = [&](const std::string& path) {
    std::ofstream(log, std::ios::app) << "made\n";
    write(path, "half");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    write(path, "whole");
  };
  std::vector<pid_t> processes;
  for (int i = 0; i < 4; ++i) {
    processes.push_back(fork());
    if (processes.back() != 0) continue;
    _exit(contentOf(made("slow", "by many", makeSlowly)) == "whole" ? 0 : 1);
  }
  for (const pid_t process : processes) {
    int status = -1;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(contentOf(log), "made\n");
}

TEST(Ffprobe, ThrowsForNonMedia) {
  const TempDir folder;
  EXPECT_THROW(ffprobe(folder.write("text.mp4", "no media")), std::runtime_error);
  EXPECT_THROW(ffprobe(folder.path("missing.mp4")), std::runtime_error);
}

}  // namespace

}  // namespace kolum::test
