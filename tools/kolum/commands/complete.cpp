#include <memory>

#include "terminal/command.h"
#include "terminal/completion.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// A line of flags for the shell, then a line per candidate: the word, a tab, its meaning.
std::string answerOf(const Completion& completion) {
  std::string answer = std::string(completion.takesFiles ? "files " : "") +
                       (completion.goesOn ? "nospace" : "") + "\n";
  for (const Candidate& candidate : completion.words)
    answer += candidate.word + "\t" + candidate.meaning + "\n";
  return answer;
}

}  // namespace

Action defineComplete(Syntax& syntax) {
  auto words = std::make_shared<std::vector<std::string>>();
  syntax.operands({"WORD"}, *words, "The words after \"kolum\"; the last one is being typed");
  syntax.help("Used by the completions of shells: \"kolum complete -- WORD...\".");
  return [&root = syntax.root(), &grammar = syntax.grammar(), words](Context& context) {
    context.printer.raw(answerOf(complete(root, grammar, *words)));
  };
}

}  // namespace kolum::tool
