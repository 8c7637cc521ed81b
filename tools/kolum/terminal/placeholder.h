// The name of an operand or an option's value in the help, and what shells offer for it.
#ifndef KOLUM_TOOL_TERMINAL_PLACEHOLDER_H
#define KOLUM_TOOL_TERMINAL_PLACEHOLDER_H

#include <string>
#include <vector>

namespace kolum::tool {

using Words = std::vector<std::string>;

enum class Offer {
  kNothing,
  kWords,
  kWordList,    // several of the words, separated by commas
  kWordStarts,  // words that are not complete yet
  kFiles,       // file names; as the first operand also the words
  kCommands,    // the program's commands
};

struct Placeholder {
  std::string name;  // "FILE"
  Offer offer = Offer::kNothing;
  Words (*words)() = nullptr;
};

}  // namespace kolum::tool

#endif
