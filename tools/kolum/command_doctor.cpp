#include <fcntl.h>
#include <kolum/host.h>
#include <link.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>

#include "appliance.h"
#include "commands.h"
#include "context.h"
#include "mounting.h"

namespace kolum::tool {

namespace {

// What was looked for: where or in which version it is there, and what it is for.
struct Finding {
  const char* kind;
  std::string name;
  std::optional<std::string> found;
  const char* neededFor;
};

bool isProgram(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> firstProgram(const std::vector<std::string>& paths) {
  for (const std::string& path : paths)
    if (isProgram(path)) return path;
  return std::nullopt;
}

std::optional<std::string> onPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    std::string program = (std::filesystem::path(folder) / name).string();
    if (isProgram(program)) return program;
  }
  return std::nullopt;
}

void findPrograms(std::vector<Finding>& findings) {
  const std::string standIns = standInFolder();
  const std::string tools = standIns.empty() ? kApplianceTools : standIns;
  findings.insert(
      findings.end(),
      {{"program", "ffmpeg", firstProgram({tools + "ffmpeg"}), "album thumbnails"},
       {"program", "convert", firstProgram({"/usr/local/sbin/convert"}),
        "album thumbnails where ffmpeg makes none"},
       {"program", "dsf2flac", firstProgram({tools + "dsf2flac"}), "DSD songs"},
       {"program", "osm_info",
        firstProgram({kApplianceTools + std::string("osm_info"), standIn("osm_info")}), "places"},
       {"program", "setcfg", firstProgram({kSetTool}), "changing the configuration"},
       {"program", "touch", firstProgram({"/bin/touch"}), "changing the configuration"},
       {"program", "cp", firstProgram({"/bin/cp"}), "copying pictures"},
       {"program", "chmod", firstProgram({"/bin/chmod"}), "copying pictures"},
       {"program", "mount", onPath("mount"), "disc images"},
       {"program", "umount", onPath("umount"), "disc images"}});
}

std::optional<std::string> when(bool condition, const std::string& detail) {
  return condition ? std::optional(detail) : std::nullopt;
}

std::optional<std::string> semaphores() {
  constexpr char kName[] = "/kolum-doctor";
  sem_t* semaphore = sem_open(kName, O_CREAT, 0600, 0);
  if (semaphore == SEM_FAILED) return std::nullopt;
  sem_close(semaphore);
  sem_unlink(kName);
  return "work";
}

void findKernelFeatures(std::vector<Finding>& findings) {
  findings.push_back({"kernel", "loop devices",
                      when(access("/dev/loop-control", F_OK) == 0, "/dev/loop-control"),
                      "disc images"});
  findings.push_back(
      {"kernel", "right to mount", when(geteuid() == 0, "superuser"), "disc images"});
  findings.push_back({"kernel", "iso9660", fileSystem("iso9660", "isofs"), "disc images"});
  findings.push_back({"kernel", "udf", fileSystem("udf", "udf"), "disc images"});
  findings.push_back({"kernel", "named semaphores", semaphores(), "notifications"});
}

void findConfiguration(std::vector<Finding>& findings) {
  std::string dir;
  KoUtil_GetDataDir(dir);
  findings.push_back(
      {"configuration", "data volume", when(!dir.empty(), dir), "configuration, stamps"});
  for (const std::string& file :
       {std::string(kLibraryConfigFile), dir.empty() ? std::string() : dir + kServerConfigFile}) {
    if (file.empty()) continue;
    findings.push_back({"configuration", file, when(access(file.c_str(), R_OK) == 0, "readable"),
                        "configuration"});
  }
}

struct LibraryRow {
  std::string_view prefix;  // of the loaded file's name
  const char* neededFor;
};

constexpr LibraryRow kLibraries[] = {
    {"libkolum.so", "everything"},
    {"libkohost.so", "what a host supplies"},
    {"libavformat.so", "probing"},
    {"libavcodec.so", "probing"},
    {"libavutil.so", "probing"},
    {"libtag.so", "tags of DSD songs"},
    {"libiniparser.so", "configuration"},
    {"libpugixml.so", "what tools print"},
    {"libdvdread.so", "main title of DVDs"},
};

// The files of all libraries in this process, links followed, as their names tell the version.
std::set<std::string> loadedLibraries() {
  std::set<std::string> files;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* out) {
        std::error_code error;
        const auto file = std::filesystem::canonical(info->dlpi_name, error);
        if (!error) static_cast<std::set<std::string>*>(out)->insert(file.string());
        return 0;
      },
      &files);
  return files;
}

void findLibraries(std::vector<Finding>& findings) {
  const std::set<std::string> files = loadedLibraries();
  for (const LibraryRow& row : kLibraries) {
    std::optional<std::string> version;
    for (const std::string& file : files) {
      const std::string name = std::filesystem::path(file).filename().string();
      if (!name.starts_with(row.prefix)) continue;
      const std::string digits = name.substr(row.prefix.size());
      version = digits.empty() ? file : digits.substr(1);
    }
    const std::string name(row.prefix.substr(0, row.prefix.rfind('.')));
    findings.push_back({"library", name, version, row.neededFor});
  }
}

std::vector<Finding> examine() {
  std::vector<Finding> findings;
  findLibraries(findings);
  findPrograms(findings);
  findKernelFeatures(findings);
  findConfiguration(findings);
  return findings;
}

void print(Context& context, const Finding& finding) {
  Result result;
  result.data("kind", finding.kind);
  result.data("name", finding.name);
  result.data("isThere", finding.found.has_value());
  if (finding.found) result.data("state", *finding.found);
  result.data("neededFor", finding.neededFor);
  result.show("", finding.kind);
  result.show("", finding.name);
  result.show("", finding.neededFor);
  result.show("", finding.found.value_or("missing"));
  context.printer.row(result);
}

}  // namespace

Action defineDoctor(CLI::App& command) {
  command.footer(
      "Tells which libraries, external programs, features of the kernel and configuration files\n"
      "there are, and what is missing for what. The exit status is 1 when something is missing.\n"
      "\nExample:\n  kolum doctor");
  return [](Context& context) {
    context.printer.table({{"Kind", 13}, {"Name", 30}, {"Needed for", 40}, {"Found", 0}});
    bool isComplete = true;
    for (const Finding& finding : examine()) {
      print(context, finding);
      isComplete = isComplete && finding.found.has_value();
    }
    if (!isComplete) context.fail("something is missing");
  };
}

}  // namespace kolum::tool
