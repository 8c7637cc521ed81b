// kolum: the library's functions on the command line.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>
#include <vector>

#include "commands.h"
#include "terminal/command_tree.h"
#include "terminal/context.h"
#include "terminal/help.h"
#include "terminal/interruption.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace {

using namespace kolum::tool;

enum ExitStatus { kAllDone = 0, kSomeFailed = 1, kUsage = 2 };

struct CommonOptions {
  bool json = false;
  bool debug = false;
  bool inProcess = false;
};

// The options of every command and sub-command.
void addCommonOptions(CLI::App& parser, CommonOptions& options) {
  parser.add_flag("--json", options.json, "Prints one JSON object per line");
  parser.add_flag("--debug", options.debug, "Shows the library's debug lines on standard error");
  parser.add_flag("--in-process", options.inProcess,
                  "Reads files in this process, not in isolated ones");
  for (CLI::App* nested : parser.get_subcommands({})) addCommonOptions(*nested, options);
}

// The library's debug lines: hidden unless requested. Sanitizers report on descriptor 2.
void routeLibrary(const Channels& channels, bool debug) {
  if (debug) setenv("KO_LOG_LEVEL", "7", 0);
#ifdef KOLUM_SANITIZED
  const bool show = true;
#else
  const bool show = std::getenv("KO_LOG_LEVEL") != nullptr;
#endif
  if (show) {
    channels.showLibrary();
  } else {
    channels.muteLibrary();
  }
}

// For the library and for the probes in this program.
void chooseIsolation(bool inProcess) {
  if (inProcess)
    setenv("KOLUM_ISOLATION", "off", 1);
  else
    setenv("KOLUM_ISOLATION", "on", 0);
}

// HELP is the command whose --help explains more.
int usage(const Channels& channels, const std::string& reason, const std::string& help) {
  channels.writeMessage("kolum: " + printable(reason) + "; see " + help + " --help\n");
  return kUsage;
}

// The innermost command that was named.
const CLI::App& innermost(const CLI::App& app) {
  const auto named = app.get_subcommands();
  return named.empty() ? app : innermost(*named.front());
}

// The first required operand that is missing.
std::string missingOperand(const CLI::App& command) {
  for (const CLI::Option* operand : listedOperands(command))
    if (operand->get_required() && operand->count() == 0) return operand->get_name();
  return "an operand";
}

// What is wrong with an option's value. Releases of the parser word that differently, but all name
// the option.
std::string valueFault(const CLI::App& command, const std::string& message) {
  const CLI::Option* named = nullptr;
  std::size_t first = message.size();
  for (const CLI::Option* option : listedOptions(command)) {
    const std::size_t place = message.find(longestName(*option));
    if (place >= first) continue;
    named = option;
    first = place;
  }
  if (named == nullptr) return message;
  return longestName(*named) + (takesValue(*named) ? " needs a value" : " takes no value");
}

std::string reasonOf(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = innermost(app);
  const bool wantsCommand = command.get_require_subcommand_min() > 0;
  if (const auto words = app.remaining(true); !words.empty())
    return unknownWord(command, unmarked(words.front()));
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError))
    return (wantsCommand ? "COMMAND" : missingOperand(command)) + " is required";
  return valueFault(command, error.what());
}

int run(const Channels& channels, int argc, char** argv) {
  CLI::App app("Describes media files, and talks to the media library around them.", "kolum");
  app.set_help_flag("-h,--help", "Shows this help");
  app.set_version_flag("-V,--version", "kolum " KOLUM_VERSION, "Shows the version");
  Grammar grammar;
  Syntax syntax(app, grammar);
  syntax.commands(commands());
  syntax.help(
      "\"kolum COMMAND --help\" describes a command.\n"
      "Exit status: 0 all done, 1 something failed, 2 wrong usage.");
  CommonOptions options;
  addCommonOptions(app, options);

  try {
    app.parse(protectedArguments(argc, argv));
    routeLibrary(channels, options.debug);
    chooseIsolation(options.inProcess);
    Context context(channels, options.json);
    grammar.actions.at (&innermost(app))(context);
    return context.failed() ? kSomeFailed : kAllDone;
  } catch (const CLI::CallForVersion& version) {
    channels.writeResults(std::string(version.what()) + "\n");
    return kAllDone;
  } catch (const CLI::Success&) {
    channels.writeResults(helpOf(innermost(app)));
    return kAllDone;
  } catch (const CLI::ParseError& error) {
    return usage(channels, reasonOf(app, error), commandLineOf(innermost(app)));
  } catch (const UsageError& error) {
    return usage(channels, error.what(), commandLineOf(innermost(app)));
  }
}

}  // namespace

namespace {

int runGuarded(const Channels& channels, int argc, char** argv) {
  try {
    return run(channels, argc, argv);
  } catch (const Interrupted& interrupted) {
    // So that shells see what ended it; every handler has been restored.
    std::raise(interrupted.signal);
  } catch (const OutputError& error) {
    if (!error.readerLeft()) {
      channels.writeMessage(std::string("kolum: cannot write the results: ") + error.what() + "\n");
    }
  } catch (const std::bad_alloc&) {
    channels.writeMessage("kolum: out of memory\n");
  } catch (const std::exception& error) {
    channels.writeMessage("kolum: " + printable(error.what()) + "\n");
  }
  return kSomeFailed;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runGuarded(Channels(), argc, argv);
  } catch (const std::system_error& error) {
    // There are no channels yet, and standard error is still the caller's.
    std::fprintf(stderr, "kolum: %s\n", error.what());
    return kSomeFailed;
  }
}
