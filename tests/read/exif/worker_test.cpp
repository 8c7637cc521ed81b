// Tags of photos, as workers read them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "isolation/isolation.h"
#include "read/exif/reading.h"
#include "support/exif_builder.h"

namespace kolum::test {

namespace {

using isolation::Mode;

class PhotoTagsOfWorker : public testing::Test {
 protected:
  void SetUp() override { isolate(true); }
  void TearDown() override { isolate(false); }

  static void isolate(bool isOn) {
    isolation::configure({.mode = isOn ? Mode::kOn : Mode::kOff, .worker = KOLUM_WORKER});
  }

  read::Findings findingsOf(const std::string& content, bool withTags = true) {
    const auto source = media::Source::open(folder_.write("photo.jpg", content));
    return isolation::look(*source, {.picture = true, .photoTags = withTags});
  }

 private:
  TempDir folder_;
};

std::string canonPhoto() {
  // Canon's settings: the number of the lens is the 22nd.
  ExifTag settings = {.tag = 1, .type = ExifType::kShort, .numbers = {}};
  settings.numbers.resize(46);
  settings.numbers[0] = 92;
  settings.numbers[22] = 61182;
  return canonRaw3({exifText(0x010F, "Canon"), exifText(0x0110, "Canon EOS R5")},
                   {exifText(0x9003, "2015:06:07 08:09:10"), exifShort(0x8827, 400)}, {settings},
                   {});
}

TEST_F(PhotoTagsOfWorker, AreThoseOfThisProcess) {
  const std::string content = jpegPhoto(
      {.exif = exifStructure({photoDirectory({exifText(0x010F, "Canon"), exifShort(0x0112, 6)},
                                             {exifText(0x9003, "2015:06:07 08:09:10")})}),
       .xmp = xmpDocument(xmpList("dc:subject", "Bag", {"alps"}))});
  const auto expected = tagsOf(content);
  const auto found = findingsOf(content);
  ASSERT_FALSE(found.failure);
  ASSERT_TRUE(found.picture && found.photoTags && expected);
  EXPECT_EQ(found.photoTags->make, "Canon");
  EXPECT_EQ(found.photoTags->taken, expected->taken);
  EXPECT_EQ(found.photoTags->keywords, expected->keywords);
  EXPECT_EQ(found.photoTags->orientation->degrees, 90);
}

// For a lens, Exiv2 looks for the user's settings: the worker must neither die of that nor give
// another answer.
TEST_F(PhotoTagsOfWorker, NameLenses) {
  const auto found = findingsOf(canonPhoto());
  ASSERT_FALSE(found.failure) << found.failure->reason;
  ASSERT_TRUE(found.photoTags);
  EXPECT_EQ(found.photoTags->iso, 400);
  EXPECT_EQ(found.photoTags->lensModel, tagsOf(canonPhoto())->lensModel);
}

TEST_F(PhotoTagsOfWorker, AreReadOnlyIfAskedFor) {
  const std::string content = jpegPhoto({.exif = exifStructure({{exifText(0x010F, "Canon")}})});
  EXPECT_FALSE(findingsOf(content, false).photoTags);
}

TEST_F(PhotoTagsOfWorker, AreUnknownInThisProcess) {
  isolate(false);
  const auto found = findingsOf(jpegPhoto({.exif = exifStructure({{exifText(0x010F, "Canon")}})}));
  EXPECT_TRUE(found.picture);
  EXPECT_FALSE(found.photoTags);
}

}  // namespace

}  // namespace kolum::test
