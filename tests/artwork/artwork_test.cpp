#include <gtest/gtest.h>
#include <kolum/frame.h>
#include <kolum/thumbnail.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using kolum::test::ExpectNoDescriptorLeak;
using kolum::test::ffprobe;
using kolum::test::media;
using kolum::test::runInAppliance;
using kolum::test::sandboxUnavailable;
using kolum::test::TempDir;
using kolum::test::withinSeconds;
using kolum::test::writeRootFile;

constexpr char kTools[] = "/tmp/tools/";
constexpr char kFfmpeg[] = "/tmp/tools/ffmpeg";
constexpr char kConvert[] = "/usr/local/sbin/convert";
constexpr char kRuns[] = "/tmp/runs";  // where tools record their calls

#define NEEDS_SANDBOX() \
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why

constexpr char kRealFfmpeg[] = "exec /usr/bin/ffmpeg -loglevel fatal \"$@\"";
constexpr char kRealConvert[] = "exec /usr/bin/convert \"$@\"";

// A test picture of this size.
std::string picture(const std::string& size, const std::string& extension) {
  return media("picture-" + size + extension, "-f lavfi -i testsrc=size=" + size + " -frames:v 1");
}

// A tool that records its name and arguments and then runs the script.
void putTool(const std::string& path, const std::string& script) {
  fs::remove(path);
  writeRootFile(
      path,
      "#!/bin/sh\necho \"$(basename \"$0\") $*\" >> " + std::string(kRuns) + "\n" + script + "\n",
      0755);
}

std::vector<std::string> runs() {
  std::ifstream in(kRuns);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// An appliance: the tools, and the base folder with its content.
struct Appliance {
  TempDir music;
  std::array<char, 1024> relPath{};

  std::string base() const { return music.folder(); }

  void put(const std::string& source, const std::string& name) const {
    fs::create_directories(fs::path(music.path(name)).parent_path());
    fs::copy_file(source, music.path(name));
  }

  int albumArt(const std::string& artist, const std::string& album) {
    return LUM_CheckMusicAlbumArt(base().c_str(), artist.c_str(), album.c_str(), relPath.data());
  }

  bool has(const std::string& name) const { return fs::exists(music.path(name)); }

  // "WIDTHxHEIGHT" of a JPEG picture; "no JPEG" for any other format.
  std::string sizeOf(const std::string& name) const {
    const nlohmann::json stream = ffprobe(music.path(name))["streams"][0];
    if (stream["codec_name"] != "mjpeg") return "no JPEG";
    return stream["width"].dump() + "x" + stream["height"].dump();
  }
};

void inAppliance(const std::function<void(Appliance&)>& body) {
  runInAppliance([&] {
    putTool(kFfmpeg, kRealFfmpeg);
    putTool(kConvert, kRealConvert);
    ASSERT_EQ(KoLUM_Init(kTools), 0);
    Appliance appliance;
    const ExpectNoDescriptorLeak noLeak;
    withinSeconds(60, [&] { body(appliance); });
  });
}

struct SourceCase {
  const char* size;
  const char* extension;
  const char* fitted;  // in 252 by 252
  const char* fittedSmall;
};

constexpr SourceCase kSources[] = {
    {"640x360", ".jpg", "252x142", "126x71"},  {"360x640", ".jpg", "142x252", "71x126"},
    {"640x360", ".png", "252x142", "126x71"},  {"360x640", ".png", "142x252", "71x126"},
    {"300x300", ".jpg", "252x252", "126x126"}, {"40x32", ".png", "252x202", "126x101"},
};

TEST(CheckMusicAlbumArt, CropsToSquaresWithFfmpeg) {
  NEEDS_SANDBOX();
  for (const SourceCase& source : kSources) {
    SCOPED_TRACE(std::string(source.size) + source.extension);
    const std::string file = picture(source.size, source.extension);
    inAppliance([&](Appliance& appliance) {
      const std::string left = std::string("artist/@_album") + source.extension;
      appliance.put(file, left);
      EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
      EXPECT_STREQ(appliance.relPath.data(), "artist/album.jpg");
      EXPECT_EQ(appliance.sizeOf("artist/album.jpg"), "252x252");
      EXPECT_EQ(appliance.sizeOf("artist/album-1.jpg"), "126x126");
      EXPECT_FALSE(appliance.has(left)) << "the source picture is deleted";
      EXPECT_EQ(runs().size(), 2U);
    });
  }
}

// Unlike ffmpeg, which crops. Users' libraries hold pictures of both kinds.
TEST(CheckMusicAlbumArt, FitsIntoSquaresWithConvertIfFfmpegIsMissing) {
  NEEDS_SANDBOX();
  for (const SourceCase& source : kSources) {
    SCOPED_TRACE(std::string(source.size) + source.extension);
    const std::string file = picture(source.size, source.extension);
    inAppliance([&](Appliance& appliance) {
      fs::remove(kFfmpeg);
      const std::string left = std::string("artist/@_album") + source.extension;
      appliance.put(file, left);
      EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
      EXPECT_EQ(appliance.sizeOf("artist/album.jpg"), source.fitted);
      EXPECT_EQ(appliance.sizeOf("artist/album-1.jpg"), source.fittedSmall);
      EXPECT_FALSE(appliance.has(left));
    });
  }
}

TEST(CheckMusicAlbumArt, UsesConvertIfFfmpegLeavesAnEmptyPicture) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    putTool(kFfmpeg, "for last; do :; done; : > \"$last\"");
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_EQ(appliance.sizeOf("artist/album.jpg"), "252x142");
    EXPECT_EQ(appliance.sizeOf("artist/album-1.jpg"), "126x71");
  });
}

TEST(CheckMusicAlbumArt, UsesConvertBeforeTheLibraryIsInitialised) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  runInAppliance([&] {
    putTool(kConvert, kRealConvert);
    ASSERT_EQ(g_localWorkingPath, nullptr);
    Appliance appliance;
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_EQ(appliance.sizeOf("artist/album.jpg"), "252x142");
  });
}

TEST(CheckMusicAlbumArt, KeepsTheSourceWithoutTools) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    fs::remove(kFfmpeg);
    fs::remove(kConvert);
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_STREQ(appliance.relPath.data(), "artist/album.jpg");
    EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    EXPECT_FALSE(appliance.has("artist/album.jpg"));
  });
}

TEST(CheckMusicAlbumArt, KeepsTheSourceIfFfmpegsSecondStepFails) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    putTool(kFfmpeg, std::string("case \"$*\" in *crop=252:252*) exit 3;; esac\n") + kRealFfmpeg);
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    EXPECT_TRUE(appliance.has("artist/album-1.jpg"));
    EXPECT_EQ(runs().size(), 2U) << "convert is not tried";
  });
}

TEST(CheckMusicAlbumArt, KeepsTheSourceIfConvertsSecondStepFails) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    fs::remove(kFfmpeg);
    putTool(kConvert, std::string("case \"$*\" in *252x252*) exit 3;; esac\n") + kRealConvert);
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    EXPECT_TRUE(appliance.has("artist/album-1.jpg"));
  });
}

// The status of the first step is ignored for both tools.
TEST(CheckMusicAlbumArt, SucceedsIfOnlyConvertsFirstStepFails) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    fs::remove(kFfmpeg);
    putTool(kConvert, std::string("case \"$*\" in *126x126*) exit 3;; esac\n") + kRealConvert);
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_FALSE(appliance.has("artist/album-1.jpg"));
    EXPECT_FALSE(appliance.has("artist/@_album.jpg"));
  });
}

TEST(CheckMusicAlbumArt, TreatsOldSmallThumbnailAsFfmpegSuccess) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    fs::remove(kFfmpeg);
    appliance.put(file, "artist/@_album.jpg");
    appliance.music.write("artist/album-1.jpg", "from earlier");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    EXPECT_TRUE(runs().empty()) << "convert is not tried";
  });
}

TEST(CheckMusicAlbumArt, KeepsSourceThatIsNotAPicture) {
  NEEDS_SANDBOX();
  for (const char* content : {"", "no picture at all", "\xFF\xD8\xFF\xE0 cut short"}) {
    SCOPED_TRACE(content);
    inAppliance([&](Appliance& appliance) {
      appliance.music.write("artist/@_album.jpg", content);
      EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
      EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    });
  }
}

TEST(CheckMusicAlbumArt, RejectsPipeOrFolderAsSource) {
  NEEDS_SANDBOX();
  inAppliance([&](Appliance& appliance) {
    fs::create_directories(appliance.music.path("artist/@_folder.jpg"));
    ASSERT_EQ(mkfifo(appliance.music.path("artist/@_pipe.jpg").c_str(), 0666), 0);
    EXPECT_EQ(appliance.albumArt("Artist", "Folder"), 0);
    EXPECT_EQ(appliance.albumArt("Artist", "Pipe"), 0);
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, ReturnsAtOnceIfTheThumbnailExists) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    appliance.music.write("artist/album.jpg", "x");
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_STREQ(appliance.relPath.data(), "artist/album.jpg");
    EXPECT_TRUE(appliance.has("artist/@_album.jpg"));
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, RemakesEmptyThumbnail) {
  NEEDS_SANDBOX();
  const std::string file = picture("640x360", ".jpg");
  inAppliance([&](Appliance& appliance) {
    appliance.music.write("artist/album.jpg", "");
    appliance.music.write("artist/album-1.jpg", "");
    appliance.put(file, "artist/@_album.jpg");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_EQ(appliance.sizeOf("artist/album.jpg"), "252x252");
    EXPECT_EQ(appliance.sizeOf("artist/album-1.jpg"), "126x126");
  });
}

TEST(CheckMusicAlbumArt, DeletesEmptyThumbnailWithoutSource) {
  NEEDS_SANDBOX();
  inAppliance([](Appliance& appliance) {
    appliance.music.write("artist/album.jpg", "");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_FALSE(appliance.has("artist/album.jpg"));
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, RunsNoToolWithoutSource) {
  NEEDS_SANDBOX();
  inAppliance([](Appliance& appliance) {
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 0);
    EXPECT_STREQ(appliance.relPath.data(), "artist/album.jpg");
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, PrefersTheJpegSource) {
  NEEDS_SANDBOX();
  const std::string jpeg = picture("640x360", ".jpg");
  const std::string png = picture("640x360", ".png");
  inAppliance([&](Appliance& appliance) {
    appliance.put(jpeg, "artist/@_album.jpg");
    appliance.put(png, "artist/@_album.png");
    EXPECT_EQ(appliance.albumArt("Artist", "Album"), 1);
    EXPECT_FALSE(appliance.has("artist/@_album.jpg"));
    EXPECT_TRUE(appliance.has("artist/@_album.png"));
  });
}

struct NameCase {
  std::string artist;
  std::string album;
  std::string relPath;
};

TEST(CheckMusicAlbumArt, KeepsNamesThatBeginWithUppercaseUnknown) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  const NameCase kCases[] = {
      {"UNKNOWN", "UNKNOWN", "UNKNOWN/UNKNOWN.jpg"},
      {"Unknown", "unknown", "unknown/unknown.jpg"},
      {"UNKNOW", "unKNOWN", "unknow/unknown.jpg"},
      {"UNKNOWN Artist?", "UNKNOWNS", "UNKNOWN Artist?/UNKNOWNS.jpg"},
      {" UNKNOWN", "Björk: \"Début\"", " unknown/björk_ _début_.jpg"},
      {"Bob's", "$(touch x) `y`", "bob_s/_(touch x) _y_.jpg"},
  };
  for (const NameCase& names : kCases) {
    SCOPED_TRACE(names.relPath);
    inAppliance([&](Appliance& appliance) {
      std::string source = names.relPath;
      source.insert(source.rfind('/') + 1, "@_");
      appliance.put(file, source);
      EXPECT_EQ(appliance.albumArt(names.artist, names.album), 1);
      EXPECT_EQ(appliance.relPath.data(), names.relPath);
      EXPECT_EQ(appliance.sizeOf(names.relPath), "252x252");
    });
  }
}

TEST(CheckMusicAlbumArt, PutsThePrefixBeforeAlbumNamesWithSlash) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  inAppliance([&](Appliance& appliance) {
    appliance.put(file, "artist/@_UNKNOWN/x.jpg");
    fs::create_directories(appliance.music.path("artist/UNKNOWN"));
    EXPECT_EQ(appliance.albumArt("Artist", "UNKNOWN/x"), 1);
    EXPECT_EQ(appliance.sizeOf("artist/UNKNOWN/x.jpg"), "252x252");
  });
}

TEST(CheckMusicAlbumArt, CutsNamesToTheirMaximumLength) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  const std::string unknown = "UNKNOWN" + std::string(300, 'X');
  const NameCase kCases[] = {
      {std::string(300, 'A'), "b", std::string(255, 'a') + "/b.jpg"},
      {"a", std::string(300, 'B'), "a/" + std::string(249, 'b') + ".jpg"},
      {unknown, "b", unknown.substr(0, 255) + "/b.jpg"},
  };
  for (const NameCase& names : kCases) {
    SCOPED_TRACE(names.relPath);
    inAppliance([&](Appliance& appliance) {
      std::string source = names.relPath;
      source.insert(source.rfind('/') + 1, "@_");
      appliance.put(file, source);
      EXPECT_EQ(appliance.albumArt(names.artist, names.album), 1);
      EXPECT_EQ(appliance.relPath.data(), names.relPath);
      EXPECT_EQ(appliance.sizeOf(names.relPath), "252x252");
    });
  }
}

TEST(CheckMusicAlbumArt, NeedsNoLargerPathBufferThanDocumented) {
  NEEDS_SANDBOX();
  const std::string longest = "UNKNOWN" + std::string(500, 'X');
  inAppliance([&](Appliance& appliance) {
    appliance.relPath.fill('#');
    EXPECT_EQ(appliance.albumArt(longest, longest), 0);
    EXPECT_EQ(strlen(appliance.relPath.data()), 515U);
    EXPECT_EQ(appliance.relPath[516], '#');
  });
}

TEST(CheckMusicAlbumArt, RejectsPathsThatDoNotFit) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  const std::string artist(250, 'a');
  const std::string album(240, 'b');
  inAppliance([&](Appliance& appliance) {
    appliance.put(file, artist + "/@_" + album + ".jpg");
    EXPECT_EQ(appliance.albumArt(artist, album), 0);
    EXPECT_TRUE(appliance.has(artist + "/@_" + album + ".jpg"));
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, RejectsCommandsThatDoNotFit) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  const std::string artist(240, 'a');
  const std::string album(200, 'b');
  inAppliance([&](Appliance& appliance) {
    appliance.put(file, artist + "/@_" + album + ".jpg");
    EXPECT_EQ(appliance.albumArt(artist, album), 0);
    EXPECT_TRUE(appliance.has(artist + "/@_" + album + ".jpg"));
    EXPECT_TRUE(runs().empty());
  });
}

TEST(CheckMusicAlbumArt, RunsNothingForNamesWithQuotes) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  for (const std::string artist :
       {"UNKNOWN's", "UNKNOWN''s", "UNKNOWN'; echo hello > \"$HOME\"; '"}) {
    SCOPED_TRACE(artist);
    inAppliance([&](Appliance& appliance) {
      setenv("HOME", "/tmp/ran", 1);
      appliance.put(file, artist + "/@_album.jpg");
      EXPECT_EQ(appliance.albumArt(artist, "Album"), 0);
      EXPECT_TRUE(runs().empty());
      EXPECT_FALSE(fs::exists("/tmp/ran"));
    });
  }
}

TEST(CheckMusicAlbumArt, EscapesTheBaseFolderForTheShell) {
  NEEDS_SANDBOX();
  const std::string file = picture("300x300", ".jpg");
  inAppliance([&](Appliance& appliance) {
    fs::remove(kFfmpeg);
    const std::string folder = appliance.music.path("$(touch ran)/");
    appliance.put(file, "$(touch ran)/artist/@_album.jpg");
    ASSERT_EQ(chdir("/tmp"), 0);
    EXPECT_EQ(LUM_CheckMusicAlbumArt(folder.c_str(), "a", "b", appliance.relPath.data()), 0);
    EXPECT_TRUE(runs().empty());
    EXPECT_EQ(LUM_CheckMusicAlbumArt(folder.c_str(), "artist", "album", appliance.relPath.data()),
              1);
    EXPECT_EQ(appliance.sizeOf("$(touch ran)/artist/album.jpg"), "252x252");
    EXPECT_FALSE(fs::exists("/tmp/ran"));
  });
}

TEST(CheckMusicAlbumArt, FailsOnNamesThatCannotBeConverted) {
  std::array<char, 1024> relPath{"untouched"};
  EXPECT_EQ(LUM_CheckMusicAlbumArt("/nowhere/", "", "b", relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicAlbumArt("/nowhere/", "a", "", relPath.data()), 0);
  EXPECT_STREQ(relPath.data(), "untouched");
}

TEST(CheckMusicAlbumArt, FailsOnNullArguments) {
  std::array<char, 1024> relPath{"untouched"};
  EXPECT_EQ(LUM_CheckMusicAlbumArt(nullptr, "a", "b", relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicAlbumArt("/", nullptr, "b", relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicAlbumArt("/", "a", nullptr, relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicAlbumArt("/", "a", "b", nullptr), 0);
  EXPECT_STREQ(relPath.data(), "untouched");
}

TEST(CheckMusicArtistThumbnail, FindsThePictureInTheArtistsFolder) {
  const NameCase kCases[] = {
      {"UNKNOWN", "", "UNKNOWN/artist.jpg"},
      {"Unknown", "", "unknown/artist.jpg"},
      {"AC/DC", "", "ac_dc/artist.jpg"},
      {std::string(300, 'A'), "", std::string(255, 'a') + "/artist.jpg"},
  };
  for (const NameCase& names : kCases) {
    SCOPED_TRACE(names.relPath);
    const TempDir base;
    std::array<char, 267> relPath{};
    const auto check = [&] {
      return LUM_CheckMusicArtistThumbnail(base.folder().c_str(), names.artist.c_str(),
                                           relPath.data());
    };
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(relPath.data(), names.relPath) << "also written without the picture";
    base.write(names.relPath, "");
    EXPECT_EQ(check(), 1);
  }
}

TEST(CheckMusicArtistThumbnail, KeepsThePathIfTheNameCannotBeConverted) {
  const TempDir base;
  std::array<char, 267> relPath{"untouched"};
  EXPECT_EQ(LUM_CheckMusicArtistThumbnail(base.folder().c_str(), "", relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicArtistThumbnail(nullptr, "a", relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicArtistThumbnail("/", nullptr, relPath.data()), 0);
  EXPECT_EQ(LUM_CheckMusicArtistThumbnail("/", "a", nullptr), 0);
  EXPECT_STREQ(relPath.data(), "untouched");
}

TEST(CheckMusicArtistThumbnail, FindsNothingIfThePathDoesNotFit) {
  const TempDir base;
  const std::string deep(250, 'd');
  const std::string artist(250, 'a');
  base.write(deep + "/" + artist + "/artist.jpg", "");
  std::array<char, 267> relPath{};
  EXPECT_EQ(
      LUM_CheckMusicArtistThumbnail(base.path(deep + "/").c_str(), artist.c_str(), relPath.data()),
      0);
}

TEST(IsTranscodeFileExist, FindsEverySuffix) {
  for (const std::string suffix :
       {".mobile240p", ".mobile360p", ".ipad720p", ".mobile480p", ".mobile1080p"}) {
    SCOPED_TRACE(suffix);
    const TempDir folder;
    EXPECT_EQ(LUM_IsTranscodeFileExist(folder.folder().c_str(), "film.mkv"), -1);
    folder.write(".@__thumb/transcode/film.mkv" + suffix, "");
    EXPECT_EQ(LUM_IsTranscodeFileExist(folder.folder().c_str(), "film.mkv"), 0);
    EXPECT_EQ(LUM_IsTranscodeFileExist(folder.folder().c_str(), "other.mkv"), -1);
  }
}

TEST(IsTranscodeFileExist, FindsNoOtherSuffix) {
  const TempDir folder;
  folder.write(".@__thumb/transcode/film.mkv", "");
  folder.write(".@__thumb/transcode/film.mkv.mobile720p", "");
  folder.write(".@__thumb/film.mkv.mobile240p", "");
  EXPECT_EQ(LUM_IsTranscodeFileExist(folder.folder().c_str(), "film.mkv"), -1);
}

TEST(IsTranscodeFileExist, FindsNothingForNullOrOverlongNames) {
  const std::string endless(5000, 'x');
  EXPECT_EQ(LUM_IsTranscodeFileExist(nullptr, "film.mkv"), -1);
  EXPECT_EQ(LUM_IsTranscodeFileExist("/", nullptr), -1);
  EXPECT_EQ(LUM_IsTranscodeFileExist(endless.c_str(), endless.c_str()), -1);
}

TEST(IsFileExist, FindsAnyKindOfFile) {
  const TempDir folder;
  const std::string file = folder.write("file", "");
  fs::create_symlink("nowhere", folder.path("dangling"));
  EXPECT_EQ(isFileExist(file.c_str()), 1);
  EXPECT_EQ(isFileExist(folder.folder().c_str()), 1);
  EXPECT_EQ(isFileExist("/dev/null"), 1);
  EXPECT_EQ(isFileExist(folder.path("missing").c_str()), 0);
  EXPECT_EQ(isFileExist(folder.path("dangling").c_str()), 0);
  EXPECT_EQ(isFileExist(""), 0);
  EXPECT_EQ(isFileExist(nullptr), 0);
}

TEST(CopyAndChmod, MakesTheCopyReadableAndWritableForAll) {
  const TempDir folder;
  const std::string source = folder.write("source", "content");
  ASSERT_EQ(chmod(source.c_str(), 0600), 0);
  const std::string copy = folder.path("it's a $(copy)");
  EXPECT_EQ(copyAndChmod(source.c_str(), copy.c_str()), 0);
  EXPECT_EQ(fs::file_size(copy), 7U);
  EXPECT_EQ(fs::status(copy).permissions(), fs::perms{0666});
}

// The result is that of the second step only.
TEST(CopyAndChmod, SucceedsIfOnlyTheCopyFails) {
  const TempDir folder;
  const std::string copy = folder.write("copy", "old");
  EXPECT_EQ(copyAndChmod(folder.path("missing").c_str(), copy.c_str()), 0);
  EXPECT_EQ(fs::file_size(copy), 3U);
  EXPECT_EQ(fs::status(copy).permissions(), fs::perms{0666});
}

TEST(CopyAndChmod, FailsWithoutACopy) {
  const TempDir folder;
  EXPECT_NE(copyAndChmod(folder.path("a").c_str(), folder.path("b").c_str()), 0);
  EXPECT_EQ(copyAndChmod(nullptr, "/tmp/x"), -1);
  EXPECT_EQ(copyAndChmod("/tmp/x", nullptr), -1);
}

TEST(CopyAndChmod, DoesNotTreatNamesAsOptions) {
  const TempDir folder;
  folder.write("-a", "content");
  kolum::test::runInChild([&] {
    fs::current_path(folder.folder());
    EXPECT_EQ(copyAndChmod("-a", "--help"), 0);
    EXPECT_TRUE(fs::exists(folder.path("--help")));
  });
}

TEST(VideoPosterExtensions, AreInOrderOfPreference) {
  ASSERT_EQ(kVideoPosterExtNum, 3);
  EXPECT_STREQ(kVideoPosterExtList[0], ".jpeg");
  EXPECT_STREQ(kVideoPosterExtList[1], ".png");
  EXPECT_STREQ(kVideoPosterExtList[2], ".jpg");
}

}  // namespace
