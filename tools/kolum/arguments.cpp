#include "arguments.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

#include "numbers.h"

namespace kolum::tool {

namespace {

constexpr char kMark = '\x01';
constexpr int kAnyNumber = 1 << 29;
constexpr std::size_t kListLimit = std::size_t{256} << 20;

bool wouldBeMisread(std::string_view argument) {
  return argument == "++" || argument == "%%" || argument.starts_with('[') ||
         argument.starts_with('{') || argument.starts_with(kMark);
}

// False with errno set; a list beyond the limit is refused.
bool readList(int descriptor, std::string& content) {
  char buffer[65536];
  for (;;) {
    const ssize_t length = read(descriptor, buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return length == 0;
    content.append(buffer, static_cast<std::size_t>(length));
    if (content.size() > kListLimit) {
      errno = EFBIG;
      return false;
    }
  }
}

// Unless it is said, one NUL anywhere makes NUL the separator, else it is the newline; empty names
// are no names.
void splitList(std::string_view content, bool byNul, std::vector<std::string>& names) {
  const char separator = byNul || content.find('\0') != std::string_view::npos ? '\0' : '\n';
  while (!content.empty()) {
    const std::size_t end = std::min(content.find(separator), content.size());
    if (end > 0) names.emplace_back(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
  }
}

void appendList(Context& context, const std::string& listFile, bool byNul,
                std::vector<std::string>& names) {
  const bool standardInput = listFile == "-";
  const int descriptor =
      standardInput ? context.channels.input() : open(listFile.c_str(), O_RDONLY | O_CLOEXEC);
  std::string content;
  if (descriptor < 0 || !readList(descriptor, content)) {
    const int reason = standardInput && descriptor < 0 ? EBADF : errno;
    context.fail(standardInput ? "standard input" : listFile, std::strerror(reason));
  } else {
    splitList(content, byNul, names);
  }
  if (!standardInput && descriptor >= 0) close(descriptor);
}

// An option that takes one value. The parser is given leave to take several, so that the message
// for them is ours.
CLI::Option* addSingle(CLI::App& command, const std::string& name, const std::string& description,
                       std::function<void(const std::string&)> take) {
  const auto takeOnly = [name, take = std::move(take)](const CLI::results_t& results) {
    if (results.size() > 1) throw UsageError(name + " is given more than once");
    take(unmarked(results.back()));
    return true;
  };
  return command.add_option(name, takeOnly, description)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace

std::vector<std::string> protectedArguments(int argc, char** argv) {
  std::vector<std::string> arguments;
  bool operandsOnly = false;
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i];
    if (!operandsOnly && argument == "--") {
      operandsOnly = true;
      continue;
    }
    if (operandsOnly || wouldBeMisread(argument)) argument.insert(argument.begin(), kMark);
    arguments.push_back(std::move(argument));
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

std::string unmarked(const std::string& argument) {
  return argument.starts_with(kMark) ? argument.substr(1) : argument;
}

CLI::Option* addText(CLI::App& command, const std::string& name, std::string& value,
                     const std::string& description) {
  const auto take = [&value](const std::string& text) { value = text; };
  return addSingle(command, name, description, take)->type_name("");
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& values,
                      const std::string& description) {
  const auto take = [&values](const CLI::results_t& results) {
    values.clear();
    for (const std::string& result : results) values.push_back(unmarked(result));
    return true;
  };
  return command.add_option(name, take, description)
      ->expected(1, kAnyNumber)
      ->allow_extra_args()
      ->type_name("");
}

CLI::Option* addNumber(CLI::App& command, const std::string& name, int& value, NumberRange range,
                       const std::string& description) {
  const auto take = [name, range, &value](const std::string& text) {
    const auto number = parseNumber(text);
    if (!number || *number < range.least || *number > range.most) {
      throw UsageError(name + " takes a number from " + std::to_string(range.least) + " to " +
                       std::to_string(range.most) + ", not \"" + text + "\"");
    }
    value = static_cast<int>(*number);
  };
  return addSingle(command, name, description, take)->type_name("N");
}

void addAudioStreamOption(CLI::App& command, int& index) {
  addNumber(command, "--audio-stream", index, {0, INT_MAX},
            "The audio stream that counts, from 0; beyond the last the first");
}

void addFileArguments(CLI::App& command, FileArguments& arguments) {
  addTexts(command, "FILE", arguments.operands, "Files; \"-\" reads names from standard input");
  addText(command, "--files-from", arguments.listFile,
          "Reads file names from LIST, NUL- or newline-separated")
      ->type_name("LIST");
  command.add_flag("-0,--null", arguments.isNulSeparated, "Names in lists end with NUL only");
}

std::vector<std::string> fileNames(Context& context, const FileArguments& arguments) {
  if (arguments.operands.empty() && arguments.listFile.empty())
    throw UsageError("FILE is required");
  std::vector<std::string> names;
  for (const std::string& operand : arguments.operands) {
    if (operand == "-") {
      appendList(context, operand, arguments.isNulSeparated, names);
    } else {
      names.push_back(operand);
    }
  }
  if (!arguments.listFile.empty()) {
    appendList(context, arguments.listFile, arguments.isNulSeparated, names);
  }
  return names;
}

}  // namespace kolum::tool
