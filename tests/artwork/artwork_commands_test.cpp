#include "artwork/artwork_commands.h"

#include <gtest/gtest.h>

#include <string>

#include "support/child_process.h"

namespace {

using kolum::artwork::convertCommand;
using kolum::artwork::ffmpegCommand;
using kolum::artwork::kCommandSize;
using kolum::test::mustRun;

TEST(ArtworkCommands, ScalesAndCropsWithFfmpeg) {
  EXPECT_EQ(ffmpegCommand("/tools/", "/music/a/@_b.jpg", "/music/a/b-1.jpg", 126),
            "/tools/ffmpeg -y -i '/music/a/@_b.jpg' -vf "
            "scale='max(126\\,iw*126/ih):126/min(1\\,iw/ih)',crop=126:126 "
            "-vframes 1 -qscale:v 2 -an -f mjpeg '/music/a/b-1.jpg'");
  EXPECT_EQ(ffmpegCommand("/tools/", "/music/a/@_b.jpg", "/music/a/b.jpg", 252),
            "/tools/ffmpeg -y -i '/music/a/@_b.jpg' -vf "
            "scale='max(252\\,iw*252/ih):252/min(1\\,iw/ih)',crop=252:252 "
            "-vframes 1 -qscale:v 2 -an -f mjpeg '/music/a/b.jpg'");
}

TEST(ArtworkCommands, ResizesWithConvert) {
  EXPECT_EQ(convertCommand("/music/", "/music/a/@_b.png", "/music/a/b-1.jpg", 126),
            "MAGICK_TMPDIR=\"/music/\" /usr/local/sbin/convert -limit memory 64 -limit map 128 "
            "-resize 126x126 '/music/a/@_b.png' '/music/a/b-1.jpg'");
  EXPECT_EQ(convertCommand("/music/", "/music/a/@_b.png", "/music/a/b.jpg", 252),
            "MAGICK_TMPDIR=\"/music/\" /usr/local/sbin/convert -limit memory 64 -limit map 128 "
            "-resize 252x252 '/music/a/@_b.png' '/music/a/b.jpg'");
}

TEST(ArtworkCommands, RejectsCommandsTooLongForTheBuffer) {
  const std::size_t around = ffmpegCommand("", "", "t", 126)->size();
  const std::string longest(kCommandSize - 1 - around, 's');
  EXPECT_EQ(ffmpegCommand("", longest, "t", 126)->size(), kCommandSize - 1);
  EXPECT_FALSE(ffmpegCommand("", longest + "s", "t", 126));

  const std::size_t aroundToo = convertCommand("", "", "t", 126)->size();
  const std::string longestToo(kCommandSize - 1 - aroundToo, 's');
  EXPECT_EQ(convertCommand("", longestToo, "t", 126)->size(), kCommandSize - 1);
  EXPECT_FALSE(convertCommand("", longestToo + "s", "t", 126));
}

TEST(ArtworkCommands, RejectsNamesWithQuotes) {
  EXPECT_FALSE(ffmpegCommand("/t/", "/m/it's.jpg", "/m/b.jpg", 252));
  EXPECT_FALSE(ffmpegCommand("/t/", "/m/b.jpg", "/m/''.jpg", 252));
  EXPECT_FALSE(convertCommand("/m/", "/m/it's.jpg", "/m/b.jpg", 252));
  EXPECT_FALSE(convertCommand("/m/", "/m/b.jpg", "/m/it's.jpg", 252));
}

TEST(ArtworkCommands, PassesTheTemporaryFolderUnchanged) {
  for (const char* folder : {"/m\"/", "/$HOME/", "/`id`/", "/m\\/", "/a b/", "/it's/", "/m!*/"}) {
    SCOPED_TRACE(folder);
    const auto command = convertCommand(folder, "/m/b.jpg", "/m/c.jpg", 252);
    ASSERT_TRUE(command);
    // The environment that the shell would give the tool.
    const std::string assignment = command->substr(0, command->find(" /usr/local/sbin/convert"));
    EXPECT_EQ(mustRun({"sh", "-c", assignment + " printenv MAGICK_TMPDIR"}),
              folder + std::string("\n"));
  }
}

}  // namespace
