// setcfg -f FILE SECTION KEY VALUE: the appliance's tool for changing a configuration file.
#include <getopt.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "ini_update.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char kHelp[] =
    "Usage: setcfg -f FILE SECTION KEY VALUE\n"
    "Sets KEY of [SECTION] in the ini file FILE to VALUE; adds a missing section or key.\n"
    "\n"
    "Comments, order, spacing and line ends are kept, as are the file's mode and owner.\n"
    "SECTION and KEY may be in any letter case. VALUE is quoted if necessary.\n"
    "The file is replaced in one step; concurrent runs wait for each other.\n"
    "\n"
    "  -f FILE      the ini file; created if it is missing\n"
    "  -h, --help   this text\n"
    "\n"
    "Exit status: 0 done, 1 the file could not be changed and is untouched, 2 wrong usage.\n";

int usage(const char* reason) {
  std::fprintf(stderr, "setcfg: %s\nTry 'setcfg --help'.\n", reason);
  return kUsage;
}

bool hasNewline(std::string_view text) {
  return text.find('\n') != text.npos;
}

}  // namespace

int main(int argc, char** argv) {
  const char* file = nullptr;
  const option longOptions[] = {{"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
  // "+": options end at SECTION, so that a VALUE may begin with "-".
  for (int found = 0; (found = getopt_long(argc, argv, "+f:h", longOptions, nullptr)) != -1;) {
    if (found == 'f') {
      file = optarg;
    } else if (found == 'h') {
      return std::fputs(kHelp, stdout) == EOF || std::fflush(stdout) == EOF ? kFailed : kDone;
    } else {
      return usage("unknown option");
    }
  }
  if (file == nullptr || *file == '\0') return usage("no file given");
  if (argc - optind != 3) return usage("SECTION, KEY and VALUE are needed");

  const std::string section = argv[optind];
  const std::string key = argv[optind + 1];
  const std::string value = argv[optind + 2];
  if (section.empty()) return usage("SECTION is empty");
  if (key.empty()) return usage("KEY is empty");
  if (hasNewline(section) || hasNewline(key) || hasNewline(value)) {
    return usage("an ini file cannot hold a line break in SECTION, KEY or VALUE");
  }
  try {
    kolum::setcfg::setKey(file, section, key, value);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "setcfg: %s: %s\n", file, error.what());
    return kFailed;
  }
  return kDone;
}
