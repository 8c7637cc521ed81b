#include "terminal/completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string_view>

#include "commands/languages.h"
#include "files/file_types.h"
#include "files/identifiers.h"
#include "terminal/command_tree.h"

namespace kolum::tool {

namespace {

using Words = std::vector<std::string>;

Words kinds() {
  Words words;
  for (const FileTypeTable& table : fileTypeTables()) words.emplace_back(table.name);
  return words;
}

Words masks() {
  Words words = kinds();
  for (std::string& word : words) word += '=';
  return words;
}

Words languages() {
  const auto known = placeLanguages();
  return {known.begin(), known.end()};
}

Words codecNames() {
  Words words;
  for (const NamedNumber& row : codecs().rows)
    words.emplace_back(row.name.substr(codecs().prefix.size()));
  return words;
}

Words identifierTables() {
  Words words;
  for (const NamedEnumeration& table : enumerations()) words.emplace_back(table.name);
  return words;
}

Words sections() {
  return {"KOLUMSERVER", "THUMBNAIL"};
}

Words nothing() {
  return {};
}

enum class Form { kWord, kFile, kList, kOpen };

// What may stand for a placeholder, the name that --help gives to an operand or an option's value;
// nothing is known of those that are not here.
struct Placeholder {
  std::string_view name;
  Form form;
  Words (*words)();
};

constexpr Placeholder kPlaceholders[] = {
    {"FILE", Form::kFile, nothing},           {"LIST", Form::kFile, nothing},
    {"PATH", Form::kFile, nothing},           {"BASE", Form::kFile, nothing},
    {"KIND,...", Form::kList, kinds},         {"KIND=MASK", Form::kOpen, masks},
    {"CODE", Form::kWord, languages},         {"CODEC", Form::kWord, codecNames},
    {"TABLE", Form::kWord, identifierTables}, {"SECTION", Form::kWord, sections},
};

// Words that "probe" takes in front of its files.
constexpr std::string_view kProbe = "probe";
constexpr const char* kProbeKinds[] = {"video", "audio", "photo"};

constexpr std::string_view kHelp = "help";

class Completer {
 public:
  explicit Completer(const CLI::App& root) : command_(&root) {}

  Completion run(Words words) {
    typed_ = std::move(words.back());
    words.pop_back();
    // Its operands are words like those that follow the program's name.
    const bool isHelp = !words.empty() && words.front() == kHelp && !typed_.starts_with('-');
    if (isHelp) words.erase(words.begin());
    for (const std::string& word : words) pass(word);
    if (isHelp) {
      addCommands();
    } else if (awaiting_ != nullptr) {
      addValues(awaiting_->get_type_name(), "");
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
    const CLI::App* nested = operands_ == 0 ? findCommand(*command_, word) : nullptr;
    if (nested != nullptr) {
      command_ = nested;
    } else {
      ++operands_;
    }
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
    for (const CLI::App* nested : listedCommands(*command_))
      add(nested->get_name(), nested->get_description());
  }

  void addOptions() {
    const std::size_t equals = typed_.find('=');
    if (equals != std::string::npos) {
      const CLI::Option* option = valuedOption(typed_.substr(0, equals));
      if (option != nullptr) addValues(option->get_type_name(), typed_.substr(0, equals + 1));
      return;
    }
    for (const CLI::Option* option : listedOptions(*command_))
      add(longestName(*option), option->get_description());
  }

  void addOperands() {
    const auto operands = listedOperands(*command_);
    if (operands_ == 0 && command_->get_name() == kProbe)
      for (const char* kind : kProbeKinds) add(kind);
    if (operands.empty()) return;
    const CLI::Option* last = operands.back();
    if (operands_ < operands.size()) {
      addValues(operands[operands_]->get_name(), "");
    } else if (last->get_items_expected_max() > 1) {
      addValues(last->get_name(), "");
    }
  }

  // The values of a placeholder behind BEFORE, what was typed in front of them.
  void addValues(const std::string& placeholder, std::string before) {
    const auto* values =
        std::find_if(std::begin(kPlaceholders), std::end(kPlaceholders),
                     [&](const Placeholder& known) { return known.name == placeholder; });
    if (values == std::end(kPlaceholders)) return;
    found_.takesFiles = values->form == Form::kFile;
    found_.goesOn = values->form == Form::kList || values->form == Form::kOpen;
    const std::size_t comma = typed_.rfind(',');
    if (values->form == Form::kList && comma != std::string::npos)
      before = typed_.substr(0, comma + 1);
    for (const std::string& word : values->words()) add(before + word);
  }

  const CLI::App* command_;
  const CLI::Option* awaiting_ = nullptr;  // the option whose value comes next
  std::size_t operands_ = 0;
  bool operandsOnly_ = false;
  std::string typed_;
  Completion found_;
};

}  // namespace

Completion complete(const CLI::App& root, std::vector<std::string> words) {
  if (words.empty()) words.emplace_back();
  return Completer(root).run(std::move(words));
}

}  // namespace kolum::tool
