// Real media, made by real tools once per build tree and kept there.
#ifndef KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H
#define KOLUM_TESTS_SUPPORT_MEDIA_FACTORY_H

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace kolum::test {

// The path of the file NAME as `ffmpeg ARGUMENTS NAME` makes it. Arguments are split like a shell
// does. Other arguments make another file, also under the same name.
std::string media(const std::string& name, const std::string& ffmpegArguments);

// The path of what MAKE leaves under the path it is given: a file or a folder. RECIPE is all that
// the content depends on; another recipe makes another one.
std::string made(const std::string& name, const std::string& recipe,
                 const std::function<void(const std::string& path)>& make);

// What ffprobe tells about a file's format and streams.
nlohmann::json ffprobe(const std::string& path);

}  // namespace kolum::test

#endif
