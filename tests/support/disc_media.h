// Real discs: DVD and Blu-ray folders, and images of them.
#ifndef KOLUM_TESTS_SUPPORT_DISC_MEDIA_H
#define KOLUM_TESTS_SUPPORT_DISC_MEDIA_H

#include <optional>
#include <string>

namespace kolum::test {

// The VIDEO_TS folder, with a trailing "/", of a PAL DVD with two title sets: the first plays for
// one second, the second for two and has a subtitle stream.
std::string dvdFolder();

// The same DVD with a second title set of 5420 MiB, nearly all of it a hole in its second part.
std::string largeDvdFolder();

// The VIDEO_TS folder, with a trailing "/", of a PAL DVD with three titles. Title set 1 has one
// with two chapters, sound in English and German, and French subtitles, and plays for two seconds.
// Title set 2 has one that plays for four, with French sound, and one for two.
std::string dvdWithLanguages();

// The BDMV folder, with a trailing "/", of a Blu-ray with two stream files, the second larger.
std::string blurayFolder();

// The folder that holds VIDEO_TS or BDMV: the root of a disc image.
std::string discRoot(const std::string& folder);

enum class ImageKind { kSquashfs, kExt4 };

// An image file of this name with the content of FOLDER; reused for all folders with that content.
std::string discImage(const std::string& folder, const std::string& name,
                      ImageKind kind = ImageKind::kSquashfs);

// The same with the file system that discs have, UDF.
std::string udfImage(const std::string& folder, const std::string& name);

// An image of the large DVD.
std::string largeDvdImage();

// Why images cannot be mounted here, if they cannot.
std::optional<std::string> loopMountUnavailable();

}  // namespace kolum::test

#endif
