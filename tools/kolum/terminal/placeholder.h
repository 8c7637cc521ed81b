// What stands in the help for an operand or an option's value, and what shells offer in its place.
#ifndef KOLUM_TOOL_TERMINAL_PLACEHOLDER_H
#define KOLUM_TOOL_TERMINAL_PLACEHOLDER_H

#include <string>
#include <vector>

namespace kolum::tool {

using Words = std::vector<std::string>;

enum class Offer {
  kNothing,
  kWords,
  kWordList,    // several of the words, with commas between them
  kWordStarts,  // words that are not complete yet
  kFiles,       // names of files; in the first place the words, too
  kCommands,    // the program's commands
};

struct Placeholder {
  std::string name;  // "FILE"
  Offer offer = Offer::kNothing;
  Words (*words)() = nullptr;
};

}  // namespace kolum::tool

#endif
