// Words of shell commands, and what commands print.
#ifndef KOLUM_SUPPORT_SHELL_H
#define KOLUM_SUPPORT_SHELL_H

#include <optional>
#include <string>

namespace kolum {

// PATH as one word of a shell command, as the host makes it.
std::string shellWord(const std::string& path);

// All that a command prints, which is waited for. Empty when it cannot be started. Of one that
// prints more than 16 MiB nothing is used: it is cut off there, as it may print without end.
std::optional<std::string> outputOf(const char* command);

}  // namespace kolum

#endif
