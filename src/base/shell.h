// Words of shell commands.
#ifndef KOLUM_BASE_SHELL_H
#define KOLUM_BASE_SHELL_H

#include <string>

namespace kolum {

// PATH as one word of a shell command, quoted by the host.
std::string shellWord(const std::string& path);

}  // namespace kolum

#endif
