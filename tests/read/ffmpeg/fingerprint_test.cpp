#include "read/ffmpeg/fingerprint.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace ffmpeg = kolum::ffmpeg;
using kolum::test::run;
using kolum::test::TempDir;

namespace {

std::string fingerprintOf(const std::string& path) {
  const auto source = kolum::media::Source::open(path);
  return source ? ffmpeg::fingerprint(*source) : "no file";
}

std::string bytes(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; text.size() < count; ++i) text += std::to_string(i);
  text.resize(count);
  return text;
}

// As documented, by another program.
std::string expected(const std::string& content) {
  const std::size_t first = std::min<std::size_t>(content.size(), 65536);
  const std::size_t last = std::min<std::size_t>(content.size() - first, 65536);
  std::string counted;
  for (int i = 0; i < 8; ++i) counted += static_cast<char>(content.size() >> 8 * i);
  counted += content.substr(0, first) + content.substr(content.size() - last);
  const TempDir folder;
  return run({"sha256sum", folder.write("counted", counted)}).out.substr(0, 64);
}

TEST(Fingerprint, IsTheSumOfSizeHeadAndTail) {
  const TempDir folder;
  for (const std::size_t size : {0, 1, 1000, 65536, 65537, 100'000, 131'072, 131'073, 1'000'000}) {
    SCOPED_TRACE(size);
    const std::string content = bytes(size);
    EXPECT_EQ(fingerprintOf(folder.write("file", content)), expected(content));
  }
}

TEST(Fingerprint, DiffersWithSizeHeadAndTail) {
  const TempDir folder;
  const std::string content = bytes(300'000);
  std::set<std::string> found = {fingerprintOf(folder.write("file", content))};
  std::string other = content;
  other.front() = 'x';
  found.insert(fingerprintOf(folder.write("head", other)));
  other = content;
  other.back() = 'x';
  found.insert(fingerprintOf(folder.write("tail", other)));
  found.insert(fingerprintOf(folder.write("longer", content.substr(0, 150'000) + content)));
  EXPECT_EQ(found.size(), 4U);
}

// The middle is not read: that is what makes it quick.
TEST(Fingerprint, IgnoresTheMiddle) {
  const TempDir folder;
  const std::string content = bytes(300'000);
  std::string other = content;
  other[150'000] = 'x';
  EXPECT_EQ(fingerprintOf(folder.write("file", content)),
            fingerprintOf(folder.write("other", other)));
}

}  // namespace
