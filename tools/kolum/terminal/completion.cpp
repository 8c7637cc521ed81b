#include "terminal/completion.h"

#include <CLI/CLI.hpp>
#include <string_view>

#include "terminal/command_tree.h"

namespace kolum::tool {

namespace {

class Completer {
 public:
  Completer(const CLI::App& root, const Grammar& grammar)
      : grammar_(grammar), root_(root), command_(&root), names_(&root) {}

  Completion run(Words words) {
    typed_ = std::move(words.back());
    words.pop_back();
    for (const std::string& word : words) pass(word);
    if (awaiting_ != nullptr) {
      addValues(awaiting_, "");
    } else if (!operandsOnly_ && typed_.starts_with('-')) {
      addOptions();
    } else {
      addCommands();
      addOperands();
    }
    return std::move(found_);
  }

 private:
  void pass(const std::string& word) {
    if (awaiting_ != nullptr) {
      awaiting_ = nullptr;
    } else if (operandsOnly_ || !word.starts_with('-') || word == "-") {
      passOperand(word);
    } else if (word == "--") {
      operandsOnly_ = true;
    } else {
      awaiting_ = valuedOption(word);
    }
  }

  void passOperand(const std::string& word) {
    const CLI::App* nested = operands_ == 0 ? findCommand(*names_, word) : nullptr;
    if (nested == nullptr) {
      ++operands_;
    } else if (names_ == command_) {
      command_ = nested;
      names_ = takesCommands(*nested) ? &root_ : nested;
    } else {
      names_ = nested;
    }
  }

  // Whether its operands are commands, as those of "help" are.
  bool takesCommands(const CLI::App& command) const {
    const auto operands = listedOperands(command);
    return !operands.empty() && placeholderOf(operands.front()).offer == Offer::kCommands;
  }

  const Placeholder& placeholderOf(const CLI::Option* option) const {
    static const Placeholder kUnknown;
    const auto known = grammar_.placeholders.find(option);
    return known == grammar_.placeholders.end() ? kUnknown : known->second;
  }

  const CLI::Option* valuedOption(const std::string& name) const {
    for (const CLI::Option* option : listedOptions(*command_))
      if (longestName(*option) == name && takesValue(*option)) return option;
    return nullptr;
  }

  void add(const std::string& word, const std::string& meaning = "") {
    if (word.starts_with(typed_)) found_.words.push_back({word, meaning});
  }

  void addCommands() {
    if (operands_ > 0) return;
    for (const CLI::App* nested : listedCommands(*names_))
      add(nested->get_name(), nested->get_description());
  }

  void addOptions() {
    const std::size_t equals = typed_.find('=');
    if (equals != std::string::npos) {
      const CLI::Option* option = valuedOption(typed_.substr(0, equals));
      if (option != nullptr) addValues(option, typed_.substr(0, equals + 1));
      return;
    }
    for (const CLI::Option* option : listedOptions(*command_))
      add(longestName(*option), option->get_description());
  }

  void addOperands() {
    const auto operands = listedOperands(*command_);
    if (operands.empty()) return;
    const CLI::Option* last = operands.back();
    if (operands_ < operands.size()) {
      addValues(operands[operands_], "");
    } else if (last->get_items_expected_max() > 1) {
      addValues(last, "");
    }
  }

  // The values of an option or operand, each after BEFORE, which is already typed.
  void addValues(const CLI::Option* option, std::string before) {
    const Placeholder& placeholder = placeholderOf(option);
    const Offer offer = placeholder.offer;
    found_.takesFiles = offer == Offer::kFiles;
    found_.goesOn = offer == Offer::kWordList || offer == Offer::kWordStarts;
    const bool isBehindOthers = offer == Offer::kFiles && operands_ > 0;
    if (placeholder.words == nullptr || isBehindOthers) return;
    const std::size_t comma = typed_.rfind(',');
    if (offer == Offer::kWordList && comma != std::string::npos)
      before = typed_.substr(0, comma + 1);
    for (const std::string& word : placeholder.words()) add(before + word);
  }

  const Grammar& grammar_;
  const CLI::App& root_;
  const CLI::App* command_;                // whose options and operands apply
  const CLI::App* names_;                  // whose commands may follow
  const CLI::Option* awaiting_ = nullptr;  // the option whose value comes next
  std::size_t operands_ = 0;
  bool operandsOnly_ = false;
  std::string typed_;
  Completion found_;
};

}  // namespace

Completion complete(const CLI::App& root, const Grammar& grammar, Words words) {
  if (words.empty()) words.emplace_back();
  return Completer(root, grammar).run(std::move(words));
}

}  // namespace kolum::tool
