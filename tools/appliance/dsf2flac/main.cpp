// dsf2flac -i FILE -f: the part of the appliance's DSD tool that describes files.
#include <getopt.h>

#include <cstdio>
#include <exception>
#include <string>

#include "dsf2flac/document.h"
#include "dsf2flac/dsd_file.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char kHelp[] =
    "Usage: dsf2flac -i FILE -f\n"
    "Describes the DSD file FILE (DSF or DFF) as an XML document.\n"
    "\n"
    "  -i FILE      the file\n"
    "  -f           print its description; required\n"
    "  -h, --help   this text\n"
    "\n"
    "Exit status: 0 done, 1 not a readable DSD file, 2 wrong usage.\n";

bool print(const std::string& text) {
  return std::fputs(text.c_str(), stdout) != EOF && std::fflush(stdout) != EOF;
}

int usage(const char* reason) {
  std::fprintf(stderr, "dsf2flac: %s\nTry 'dsf2flac --help'.\n", reason);
  return kUsage;
}

int describe(const char* file) try {
  const auto facts = kolum::dsf2flac::readDsdFile(file);
  if (facts) return print(kolum::dsf2flac::documentOf(*facts)) ? kDone : kFailed;
  std::fprintf(stderr, "dsf2flac: %s: not a readable DSD file\n", file);
  return kFailed;
} catch (const std::exception& error) {
  std::fprintf(stderr, "dsf2flac: %s: %s\n", file, error.what());
  return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  const char* file = nullptr;
  bool isDescription = false;
  const option longOptions[] = {{"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
  for (int found = 0; (found = getopt_long(argc, argv, "i:fh", longOptions, nullptr)) != -1;) {
    if (found == 'i') {
      file = optarg;
    } else if (found == 'f') {
      isDescription = true;
    } else if (found == 'h') {
      return print(kHelp) ? kDone : kFailed;
    } else {
      return usage("unknown option");
    }
  }
  if (file == nullptr || !isDescription || optind != argc)
    return usage("-i FILE and -f are required");
  return describe(file);
}
