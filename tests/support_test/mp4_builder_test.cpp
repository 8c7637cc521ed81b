#include "support/mp4_builder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {

namespace {

using namespace std::string_literals;

std::string movie() {
  return media("builder.mp4",
               "-f lavfi -i testsrc=s=176x144:r=25:d=0.2 -c:v mpeg4 -bitexact -threads 1");
}

// The angle that ffprobe reads, counter-clockwise; empty for a file without a display matrix.
std::optional<int> rotationOf(const std::string& path) {
  const nlohmann::json stream = ffprobe(path).at("streams").at(0);
  if (!stream.contains("side_data_list")) return std::nullopt;
  for (const auto& data : stream.at("side_data_list"))
    if (data.contains("rotation")) return data.at("rotation").get<int>();
  return std::nullopt;
}

TEST(BigEndian, PutsTheHighestByteFirst) {
  EXPECT_EQ(bigEndian(0x0102030405060708U, 8), "\1\2\3\4\5\6\7\10");
  EXPECT_EQ(bigEndian(0xFFFE, 2), "\xFF\xFE");
  EXPECT_EQ(bigEndian(1, 4), "\0\0\0\1"s);
}

TEST(Boxes, HaveTheContainersLayout) {
  EXPECT_EQ(box("free", ""), "\0\0\0\10free"s);
  EXPECT_EQ(box("free", "abc"), "\0\0\0\13freeabc"s);
  EXPECT_EQ(largeBox("mdat", "abc"), "\0\0\0\1mdat\0\0\0\0\0\0\0\23abc"s);
  EXPECT_EQ(fullBox("hdlr", 1, 0x020304, "abc"), "\0\0\0\17hdlr\1\2\3\4abc"s);
  EXPECT_EQ(ftyp("mp42", {}), "\0\0\0\20ftypmp42\0\0\0\0"s);
  EXPECT_EQ(ftyp("M4V ", {"isom", "iso2"}), "\0\0\0\30ftypM4V \0\0\0\0isomiso2"s);
}

// The boxes of a real file, rebuilt.
TEST(Boxes, AreReadableByFfprobe) {
  const std::string file = contentOf(movie());
  const TempDir folder;
  // The media data stays where the index says it is.
  const std::size_t media = file.find("mdat") - 4;
  const std::string head = ftyp("M4V ");
  const std::string filling(media - head.size() - box("free", "").size(), ' ');
  const std::string path =
      folder.write("rebuilt.mp4", head + box("free", filling) + file.substr(media));
  const nlohmann::json probed = ffprobe(path);
  EXPECT_EQ(probed.at("format").at("tags").at("major_brand"), "M4V ");
  EXPECT_EQ(probed.at("streams").at(0).at("codec_name"), "mpeg4");
}

TEST(TrackMatrix, IsReadByFfprobeAsRotation) {
  struct Row {
    int degrees;
    int counterClockwise;
  };
  for (const Row& row : {Row{90, -90}, Row{180, -180}, Row{270, 90}, Row{45, -45}}) {
    const std::string path = withTrackMatrix(movie(), rotationMatrix(row.degrees));
    EXPECT_EQ(rotationOf(path).value_or(0), row.counterClockwise) << row.degrees;
    EXPECT_EQ(ffprobe(path).at("streams").at(0).at("width"), 176);
  }
  EXPECT_EQ(rotationOf(withTrackMatrix(movie(), rotationMatrix(0))), std::nullopt);
  EXPECT_TRUE(rotationOf(withTrackMatrix(movie(), rotationMatrix(0, true))).has_value());
}

TEST(TrackMatrix, FlipsOneAxisWhenMirrored) {
  for (const int degrees : {0, 90, 180, 270}) {
    const TrackMatrix plain = rotationMatrix(degrees);
    const TrackMatrix mirrored = rotationMatrix(degrees, true);
    const auto determinant = [](const TrackMatrix& m) {
      return std::int64_t{m[0]} * m[4] - std::int64_t{m[1]} * m[3];
    };
    EXPECT_GT(determinant(plain), 0) << degrees;
    EXPECT_EQ(determinant(mirrored), -determinant(plain)) << degrees;
  }
}

TEST(TrackMatrix, ChangesACopyOnly) {
  const std::string before = contentOf(movie());
  const std::string turned = withTrackMatrix(movie(), rotationMatrix(90));
  EXPECT_NE(turned, movie());
  EXPECT_EQ(contentOf(movie()), before);
  EXPECT_EQ(contentOf(turned).size(), before.size());
  EXPECT_EQ(withTrackMatrix(movie(), rotationMatrix(90)), turned);
  EXPECT_NE(withTrackMatrix(movie(), rotationMatrix(180)), turned);
}

TEST(TrackMatrix, RejectsNonMovie) {
  const TempDir folder;
  for (const std::string& content : {""s, "text"s, "\0\0\0\0\0\0\0\0\0\0\0\0"s, ftyp("isom"),
                                     ftyp("isom") + box("moov", box("trak", ""))}) {
    EXPECT_THROW(withTrackMatrix(folder.write("file.mp4", content), rotationMatrix(90)),
                 std::exception);
  }
}

TEST(SphericalBox, IsReadByFfprobe) {
  const nlohmann::json stream = ffprobe(withSphericalBox(movie())).at("streams").at(0);
  ASSERT_TRUE(stream.contains("side_data_list"));
  EXPECT_EQ(stream.at("side_data_list").at(0).at("projection"), "equirectangular");
}

}  // namespace

}  // namespace kolum::test
