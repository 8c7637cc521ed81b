// What may follow the words of a command line, from the parser's tables and the commands' own
// descriptions. The completions of bash, zsh and fish (folder completion/) call "kolum complete"
// for it.
#ifndef KOLUM_TOOL_TERMINAL_COMPLETION_H
#define KOLUM_TOOL_TERMINAL_COMPLETION_H

#include <string>
#include <vector>

#include "terminal/syntax.h"

namespace kolum::tool {

struct Candidate {
  std::string word;
  std::string meaning;  // may be empty
};

struct Completion {
  std::vector<Candidate> words;  // that begin with the word being typed
  bool takesFiles = false;       // file names fit too
  bool goesOn = false;           // a word may continue without a space
};

// WORDS follow the program's name; the last one is being typed.
Completion complete(const CLI::App& root, const Grammar& grammar, Words words);

}  // namespace kolum::tool

#endif
