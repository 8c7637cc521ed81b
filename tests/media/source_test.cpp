#include "media/source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <kolum/video.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "support/mp4_builder.h"
#include "support/temp_dir.h"

namespace kolum::media {

namespace {

using test::TempDir;

std::string read(const Source& source, std::int64_t position, std::size_t size) {
  std::string bytes(size, '#');
  const auto got =
      source.readAt(position, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()});
  return got < 0 ? "error" : bytes.substr(0, static_cast<std::size_t>(got));
}

TEST(Source, OpensFilesOnlyAndNeverWaits) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  EXPECT_FALSE(Source::open(folder.path("fifo")).has_value());
  EXPECT_FALSE(Source::open(folder.folder()).has_value());
  EXPECT_FALSE(Source::open("/dev/null").has_value());
  EXPECT_FALSE(Source::open(folder.path("missing")).has_value());
  EXPECT_FALSE(Source::open("").has_value());
  const auto source = Source::open(folder.write("file", "content"));
  ASSERT_TRUE(source.has_value());
  EXPECT_EQ(source->size(), 7);
  EXPECT_EQ(source->name(), folder.path("file"));
}

TEST(Source, FollowsLinks) {
  const TempDir folder;
  std::filesystem::create_symlink(folder.write("file", "content"), folder.path("link"));
  const auto source = Source::open(folder.path("link"));
  ASSERT_TRUE(source.has_value());
  EXPECT_EQ(read(*source, 0, 100), "content");
}

TEST(Source, IsTheFileThatWasOpenedWhateverBecomesOfItsName) {
  const TempDir folder;
  const std::string path = folder.write("file", "content");
  const auto source = Source::open(path);
  ASSERT_TRUE(source.has_value());
  std::filesystem::remove(path);
  folder.write("file", "something else");
  EXPECT_EQ(read(*source, 0, 100), "content");
}

TEST(Source, TakesOverADescriptor) {
  const TempDir folder;
  const std::string path = folder.write("file", "content");
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const auto source = Source::adopt(Descriptor(descriptor), "a name");
  ASSERT_TRUE(source.has_value());
  EXPECT_EQ(source->name(), "a name");
  EXPECT_EQ(read(*source, 3, 100), "tent");
}

TEST(Source, ReadsTheSameWithItsHeadKeptAndWithout) {
  const TempDir folder;
  std::string content;
  for (int i = 0; content.size() < Source::kHeadSize + 1000; ++i)
    content += std::to_string(i) + ",";
  const auto plain = Source::open(folder.write("file", content));
  const auto kept = Source::open(folder.path("file"));
  ASSERT_TRUE(plain && kept);
  kept->head();
  const auto head = static_cast<std::int64_t>(Source::kHeadSize);
  for (const std::int64_t position :
       {std::int64_t{0}, std::int64_t{1}, head - 10, head - 1, head, head + 1, head + 5000}) {
    for (const std::size_t size : {0U, 1U, 9U, 10U, 11U, 100U, 40000U}) {
      const std::string expected = position < static_cast<std::int64_t>(content.size())
                                       ? content.substr(static_cast<std::size_t>(position), size)
                                       : "";
      EXPECT_EQ(read(*plain, position, size), expected) << position << " " << size;
      EXPECT_EQ(read(*kept, position, size), expected) << position << " " << size;
    }
  }
}

TEST(Source, KnowsWhereDataFollowsAHole) {
  constexpr std::int64_t kMebibyte = 1 << 20;
  const TempDir folder;
  const std::string path = folder.write("file", "data");
  std::filesystem::resize_file(path, 8 * kMebibyte);
  const auto holed = Source::open(path);
  ASSERT_TRUE(holed.has_value());
  EXPECT_EQ(holed->distanceToData(0), 0);
  // File systems without holes count everything as data.
  EXPECT_LE(holed->distanceToData(4 * kMebibyte).value_or(0), 4 * kMebibyte);
}

// Between a look at a name and its opening, somebody else may put a pipe there.
TEST(Probes, NeverWaitForAPipeThatReplacesAFile) {
  const TempDir folder;
  const std::string file = folder.write("a.mp4", test::ftyp("isom") + test::box("mdat", "x"));
  const std::string fifo = folder.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::atomic<bool> done = false;
  std::thread swapping([&] {
    while (!done) {
      // Exchanges the two names.
      renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, fifo.c_str(), RENAME_EXCHANGE);
    }
  });
  for (int i = 0; i < 300; ++i) {
    unsigned count = 0;
    GetAudioTrack(file.c_str(), &count);
    CheckMp4MoovAtEnd(file.c_str());
  }
  done = true;
  swapping.join();
}

}  // namespace

}  // namespace kolum::media
