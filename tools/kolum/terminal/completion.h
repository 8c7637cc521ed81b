// What may follow the words of a command line, from the parser's own tables and what commands said.
// The completions of bash, zsh and fish (folder completion/) ask for it with "kolum complete".
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
  std::vector<Candidate> words;  // that begin with what is being typed
  bool takesFiles = false;       // names of files fit, too
  bool goesOn = false;           // more may follow a word without a blank
};

// WORDS: those after the program's name; the last one is being typed.
Completion complete(const CLI::App& root, const Grammar& grammar, Words words);

}  // namespace kolum::tool

#endif
