// Real media, made by real tools once per build tree and kept there.
#ifndef KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H
#define KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace kolum::test {

// The path of the file NAME as made by `ffmpeg ARGUMENTS NAME`. Arguments are split like in a
// shell. Different arguments make a different file, even with the same name. On failure throws an
// exception with ffmpeg's messages.
std::string media(std::string_view name, std::string_view ffmpegArguments);

// The path of the file or folder that MAKE creates at the path it is given. RECIPE must include
// everything that the content depends on: a different recipe makes a different file. Concurrent
// test processes make it only once. Throws what MAKE throws, and if MAKE creates nothing; then
// nothing is kept.
std::string made(const std::string& name, const std::string& recipe,
                 const std::function<void(const std::string& path)>& make);

// A copy of the file at PATH, with the same name, in which TO replaces every FROM; both have the
// same length.
std::string replaced(const std::string& path, const std::string& from, const std::string& to);

// A Matroska file whose video stream has a real "rotate" tag.
std::string withRotateTag(const std::string& value);

// ffprobe's report on a file's format, streams, chapters and programs.
nlohmann::json ffprobe(const std::string& path);

// MediaInfo's report on a file.
nlohmann::json mediainfo(const std::string& path);

}  // namespace kolum::test

#endif
