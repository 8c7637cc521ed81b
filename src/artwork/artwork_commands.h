// The shell commands that scale album artwork. Texts in, texts out: nothing runs here.
//
// Names stand in the commands as they are, in quotes. A command is empty when it would be longer
// than its buffer, or when a name would end its quotes: it would be another command then.
#ifndef KOLUM_ARTWORK_ARTWORK_COMMANDS_H
#define KOLUM_ARTWORK_ARTWORK_COMMANDS_H

#include <cstddef>
#include <optional>
#include <string>

namespace kolum::artwork {

inline constexpr std::size_t kCommandSize = 1024;  // with the terminator

// Scales the picture so that its shorter side has so many pixels, and crops the square in its
// middle. TOOLFOLDER closes with "/".
std::optional<std::string> ffmpegCommand(const std::string& toolFolder, const std::string& source,
                                         const std::string& target, int pixels);

// Fits the whole picture into the square: its longer side has so many pixels. That this differs
// from the other command is wanted, users' libraries hold pictures of both kinds.
std::optional<std::string> convertCommand(const std::string& temporaryFolder,
                                          const std::string& source, const std::string& target,
                                          int pixels);

}  // namespace kolum::artwork

#endif
