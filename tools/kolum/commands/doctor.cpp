#include <fcntl.h>
#include <kolum/host.h>
#include <link.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <utility>

#include "base/appliance.h"
#include "machine/licences.h"
#include "machine/programs.h"
#include "machine/protections.h"
#include "read/disc/mounting.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

// Who needs the things of a group; "here" means everybody who uses kolum.
struct Group {
  const char* name;
  const char* heading;
};

constexpr Group kHere = {"here", "Needed on every machine"};
constexpr Group kIsolation = {"isolation", "Protections of the workers that read files"};
constexpr Group kAppliance = {"appliance", "Needed on an appliance, and for disc images"};

// A thing to find: where it is or in which version, and what it is for.
struct Finding {
  const Group* group;
  const char* kind;
  std::string name;
  std::optional<std::string> found;
  const char* neededFor;
};

std::optional<std::string> unlessEmpty(const std::string& found) {
  return found.empty() ? std::nullopt : std::optional(found);
}

void addProgram(std::vector<Finding>& findings, const Group& group, const std::string& name,
                const std::string& found, const char* neededFor) {
  findings.push_back({&group, "program", name, unlessEmpty(found), neededFor});
}

// The programs that kolum runs: the appliance's if it has them, else the installed ones.
void findPrograms(std::vector<Finding>& findings) {
  const std::string standIns = standInFolder();
  const std::string tools = standIns.empty() ? kApplianceTools : standIns;
  const std::string ffmpeg = firstProgram({tools + "ffmpeg"});
  addProgram(findings, kHere, "ffmpeg or convert", ffmpeg.empty() ? convertTool() : ffmpeg,
             "album thumbnails");
  addProgram(findings, kHere, "dsf2flac", firstProgram({tools + "dsf2flac"}), "DSD songs");
  addProgram(findings, kHere, "osm_info", osmInfoTool(), "places");
  addProgram(findings, kHere, "setcfg", setTool(), "changing the configuration");
}

struct FixedProgram {
  const char* path;
  const char* neededFor;
};

// The programs that the library runs for its hosts.
constexpr FixedProgram kFixedPrograms[] = {
    {"/usr/local/medialibrary/bin/ffmpeg", "album thumbnails"},
    {kConvertTool, "album thumbnails if ffmpeg makes none"},
    {"/usr/local/medialibrary/bin/dsf2flac", "DSD songs"},
    {kOsmInfoTool, "places"},
    {kSetTool, "changing the configuration"},
    {"/bin/touch", "changing the configuration"},
    {"/bin/cp", "copying pictures"},
    {"/bin/chmod", "copying pictures"},
};

void findFixedPrograms(std::vector<Finding>& findings) {
  for (const FixedProgram& program : kFixedPrograms)
    addProgram(findings, kAppliance, program.path, firstProgram({program.path}), program.neededFor);
  for (const char* name : {"mount", "umount"})
    addProgram(findings, kAppliance, name, programOnPath(name), "disc images");
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
  findings.push_back({&kAppliance, "kernel", "loop devices",
                      when(access("/dev/loop-control", F_OK) == 0, "/dev/loop-control"),
                      "disc images"});
  findings.push_back(
      {&kAppliance, "kernel", "right to mount", when(geteuid() == 0, "superuser"), "disc images"});
  findings.push_back(
      {&kAppliance, "kernel", "iso9660", disc::fileSystem("iso9660", "isofs"), "disc images"});
  findings.push_back({&kAppliance, "kernel", "udf", disc::fileSystem("udf", "udf"), "disc images"});
  findings.push_back({&kAppliance, "kernel", "named semaphores", semaphores(), "notifications"});
}

void findProtections(std::vector<Finding>& findings) {
  for (const Protection& protection : protections())
    findings.push_back(
        {&kIsolation, "protection", protection.name, protection.state, protection.purpose});
}

void findConfiguration(std::vector<Finding>& findings) {
  std::string dir;
  KoUtil_GetDataDir(dir);
  findings.push_back({&kAppliance, "configuration", "data volume", when(!dir.empty(), dir),
                      "configuration, stamps"});
  for (const std::string& file :
       {std::string(kLibraryConfigFile), dir.empty() ? std::string() : dir + kServerConfigFile}) {
    if (file.empty()) continue;
    findings.push_back({&kAppliance, "configuration", file,
                        when(access(file.c_str(), R_OK) == 0, "readable"), "configuration"});
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

// The files of all libraries in this process, with links resolved, because their names contain the
// version.
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
    findings.push_back({&kHere, "library", name, version, row.neededFor});
  }
}

std::vector<Finding> examine() {
  std::vector<Finding> findings;
  findLibraries(findings);
  findPrograms(findings);
  findProtections(findings);
  findFixedPrograms(findings);
  findKernelFeatures(findings);
  findConfiguration(findings);
  return findings;
}

void startGroup(Context& context, const Group& group) {
  context.printer.heading(group.heading);
  context.printer.table({{"Kind", 13}, {"Name", 36}, {"Needed for", 40}, {"Found", 0}});
}

void print(Context& context, const Finding& finding) {
  Result result;
  result.data("group", finding.group->name);
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

void printLicences(Context& context) {
  context.printer.heading("Licences");
  context.printer.table({{"Part", 46}, {"Linked by", 40}, {"Licence", 0}});
  for (const Licence& licence : licences()) {
    Result result;
    result.data("group", "licences");
    result.data("kind", "licence");
    result.data("part", licence.part);
    result.data("isThere", licence.isThere);
    result.data("licence", licence.name);
    if (!licence.users.empty()) result.data("linkedBy", licence.users);
    result.show("", licence.part);
    result.show("", joined(licence.users));
    result.show("", licence.name + (licence.isThere ? "" : " (not here)"));
    context.printer.row(result);
  }
}

}  // namespace

Action defineDoctor(Syntax& syntax) {
  syntax.help(
      "Reports which libraries, external programs, features of the kernel and configuration files\n"
      "there are, and what each is needed for, in three groups: what kolum needs on every "
      "machine,\n"
      "the protections of the processes that read files, and what the library needs on an\n"
      "appliance or to open disc images. The exit status is 1 when something of the first group "
      "is\n"
      "missing. Then come the licences of kolum's parts and of the libraries in them.\n"
      "\nExample:\n  kolum doctor");
  return [](Context& context) {
    const Group* group = nullptr;
    bool isComplete = true;
    for (const Finding& finding : examine()) {
      if (std::exchange(group, finding.group) != finding.group) startGroup(context, *finding.group);
      print(context, finding);
      isComplete = isComplete && (finding.group != &kHere || finding.found.has_value());
    }
    printLicences(context);
    if (!isComplete) context.fail("something needed on every machine is missing");
  };
}

}  // namespace kolum::tool
