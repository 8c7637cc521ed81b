// Reads the tags of photos that tests make.
#ifndef KOLUM_TESTS_READ_EXIF_READING_H
#define KOLUM_TESTS_READ_EXIF_READING_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "read/exif/photo_tags.h"
#include "support/temp_dir.h"

namespace kolum::test {

// Whatever a file says, what is read of it is within the limits.
inline std::optional<media::PhotoTags> tagsOfFile(const std::string& path) {
  const auto source = media::Source::open(path);
  if (!source) return std::nullopt;
  auto tags = exif::readPhotoTags(*source);
  if (tags) {
    EXPECT_TRUE(isValid(*tags)) << path;
  }
  return tags;
}

inline std::optional<media::PhotoTags> tagsOf(const std::string& content,
                                              const std::string& name = "photo.jpg") {
  const TempDir folder;
  return tagsOfFile(folder.write(name, content));
}

}  // namespace kolum::test

#endif
