// Real media, made by real tools once per build tree and kept there.
#ifndef KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H
#define KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace kolum::test {

// The path of the file NAME as `ffmpeg ARGUMENTS NAME` makes it. Arguments are split like a shell
// does. Other arguments make another file, also under the same name. Throws with ffmpeg's words
// when it fails.
std::string media(std::string_view name, std::string_view ffmpegArguments);

// The path of what MAKE leaves under the path it is given: a file or a folder. RECIPE is all that
// the content depends on; another recipe makes another one. Test processes that want the same
// thing at once make it once. Throws what MAKE throws, and when MAKE leaves nothing; then nothing
// is kept.
std::string made(const std::string& name, const std::string& recipe,
                 const std::function<void(const std::string& path)>& make);

// A copy of the file at PATH, of the same name, in which TO stands wherever FROM stood; both are of
// one length.
std::string replaced(const std::string& path, const std::string& from, const std::string& to);

// A Matroska file whose video stream has a real "rotate" tag.
std::string withRotateTag(const std::string& value);

// What ffprobe tells about a file's format and streams.
nlohmann::json ffprobe(const std::string& path);

}  // namespace kolum::test

#endif
