// The shell commands that scale album artwork. Nothing runs here: names in, command lines out.
//
// Names are put into the commands in quotes. A command is empty if it would be longer than its
// buffer, or if a name would end its quotes and so change the command.
#ifndef KOLUM_ARTWORK_ARTWORK_COMMANDS_H
#define KOLUM_ARTWORK_ARTWORK_COMMANDS_H

#include <cstddef>
#include <optional>
#include <string>

namespace kolum::artwork {

inline constexpr std::size_t kCommandSize = 1024;  // with the terminator

// Scales the picture so that its shorter side has PIXELS pixels, and crops the square in its
// middle. TOOLFOLDER ends with "/".
std::optional<std::string> ffmpegCommand(const std::string& toolFolder, const std::string& source,
                                         const std::string& target, int pixels);

// Fits the whole picture into the square: its longer side has PIXELS pixels. The commands differ
// because users' libraries hold pictures of both kinds.
std::optional<std::string> convertCommand(const std::string& temporaryFolder,
                                          const std::string& source, const std::string& target,
                                          int pixels);

}  // namespace kolum::artwork

#endif
