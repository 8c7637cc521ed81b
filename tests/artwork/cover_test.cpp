#include <gtest/gtest.h>
#include <kolum/audio.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "support/temp_dir.h"

namespace kolum::test {
namespace {

constexpr const char* kNames[] = {"cover.jpg",  "Cover.jpg", "folder.jpg",
                                  "Folder.jpg", "front.jpg", "Front.jpg"};
constexpr std::size_t kPathSize = 1024;

struct Lookup {
  unsigned result;
  std::string path;
};

// Uses a buffer of the documented size; the bytes after it must stay unchanged.
Lookup lookUp(const std::string& folder) {
  struct {
    char path[kPathSize];
    char guard[16];
  } buffer = {};
  std::strcpy(buffer.path, "untouched");
  std::memset(buffer.guard, '#', sizeof buffer.guard);
  const unsigned result = KoLUM_CheckLocalAlbum(folder.c_str(), buffer.path);
  EXPECT_EQ(std::string(buffer.guard, sizeof buffer.guard), std::string(16, '#'));
  return {result, buffer.path};
}

TEST(CheckLocalAlbum, FindsEachName) {
  for (const char* name : kNames) {
    const TempDir folder;
    const std::string path = folder.write(name, "picture");
    const Lookup found = lookUp(folder.folder());
    EXPECT_EQ(found.result, 0U) << name;
    EXPECT_EQ(found.path, path);
  }
}

TEST(CheckLocalAlbum, PrefersEarlierNames) {
  const TempDir folder;
  for (std::size_t i = std::size(kNames); i-- > 0;) {
    const std::string path = folder.write(kNames[i], "picture");
    EXPECT_EQ(lookUp(folder.folder()).path, path) << "with " << kNames[i] << " added";
  }
}

TEST(CheckLocalAlbum, RejectsOtherSpellings) {
  for (const char* name : {"front.JPG", "COVER.JPG", "cover.jpeg", "FOLDER.jpg", "cover.jpg.bak",
                           "altcover.jpg", "cover.png"}) {
    const TempDir folder;
    folder.write(name, "picture");
    const Lookup found = lookUp(folder.folder());
    EXPECT_EQ(found.result, 1U) << name;
    EXPECT_EQ(found.path, "untouched") << name;
  }
}

TEST(CheckLocalAlbum, InsertsNothingBetweenFolderAndName) {
  const TempDir folder;
  const std::string path = folder.write("album-cover.jpg", "picture");
  EXPECT_EQ(lookUp(folder.path("album-")).path, path);
}

TEST(CheckLocalAlbum, FindsNothingWithoutFolder) {
  EXPECT_EQ(lookUp("/no/such/folder/").result, 1U);
  EXPECT_EQ(lookUp("/" + std::string(5000, 'x') + "/").result, 1U);
  EXPECT_EQ(KoLUM_CheckLocalAlbum(nullptr, nullptr), 1U);
  char path[kPathSize] = "untouched";
  EXPECT_EQ(KoLUM_CheckLocalAlbum(nullptr, path), 1U);
  EXPECT_STREQ(path, "untouched");
  EXPECT_EQ(KoLUM_CheckLocalAlbum("/tmp/", nullptr), 1U);
}

TEST(CheckLocalAlbum, CutsPathsAt1023Characters) {
  const TempDir folder;
  folder.write("cover.jpg", "picture");
  const auto padded = [&](std::size_t size) {
    std::string path = folder.folder();
    return path + std::string(size - path.size(), '/');
  };
  const std::size_t longest = kPathSize - 1 - std::strlen("cover.jpg");
  EXPECT_EQ(lookUp(padded(longest)).path, padded(longest) + "cover.jpg");
  EXPECT_EQ(lookUp(padded(longest + 1)).result, 1U);

  // The cut path is still looked for.
  folder.write("cover.jp", "no picture");
  EXPECT_EQ(lookUp(padded(longest + 1)).path, padded(longest + 1) + "cover.jp");
  EXPECT_EQ(lookUp(std::string(1500, '/')).path, std::string(kPathSize - 1, '/'));
}

TEST(CheckSpecialCover, AcceptsCoverNamesAndNamesThatBeginWithOne) {
  struct Row {
    const char* name;
    unsigned expected;
  };
  const Row rows[] = {
      {"cover.jpg", 0},   {"Cover.jpg", 0},
      {"folder.jpg", 0},  {"Folder.jpg", 0},
      {"front.jpg", 0},   {"Front.jpg", 0},
      {"front.jpg2", 0},  {"cover.jpg.bak", 0},
      {"Folder.jpg~", 0}, {"altcover.jpg", 1},
      {"COVER.JPG", 1},   {"cover.jpeg", 1},
      {"cover.jp", 1},    {"", 1},
      {"cOver.jpg", 1},   {"/music/cover.jpg", 1},
      {"photo.jpg", 1},   {"Front.JPG", 1},
      {"folder.JPG", 1},
  };
  for (const Row& row : rows)
    EXPECT_EQ(KoLUM_CheckSpecialCover(row.name), row.expected) << row.name;
  EXPECT_EQ(KoLUM_CheckSpecialCover(nullptr), 1U);
}

}  // namespace
}  // namespace kolum::test
