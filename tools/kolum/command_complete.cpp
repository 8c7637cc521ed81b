#include <CLI/CLI.hpp>
#include <memory>

#include "arguments.h"
#include "commands.h"
#include "completion.h"
#include "context.h"

namespace kolum::tool {

namespace {

// A line of flags for the shell, then a line for each candidate: the word, a tab, its meaning.
std::string answerOf(const Completion& completion) {
  std::string answer = std::string(completion.takesFiles ? "files " : "") +
                       (completion.goesOn ? "nospace" : "") + "\n";
  for (const Candidate& candidate : completion.words)
    answer += candidate.word + "\t" + candidate.meaning + "\n";
  return answer;
}

}  // namespace

Action defineComplete(CLI::App& command) {
  auto words = std::make_shared<std::vector<std::string>>();
  addTexts(command, "WORD", *words, "The words after \"kolum\"; the last one is being typed");
  command.footer("What the completions of shells ask: \"kolum complete -- WORD...\".");
  const CLI::App* root = command.get_parent();
  return
      [root, words](Context& context) { context.printer.raw(answerOf(complete(*root, *words))); };
}

}  // namespace kolum::tool
