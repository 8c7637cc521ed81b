// Scans of hostile folders by the real program: a.jpg and z.jpg are good files, and what lies
// between them attacks.
#ifndef KOLUM_TESTS_TOOL_SCANNED_FOLDER_H
#define KOLUM_TESTS_TOOL_SCANNED_FOLDER_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum::test {

// A picture of 40 x 30.
std::string goodPicture();

struct ScanResult {
  int status = -1;  // exit status, or the negated number of the signal
  std::string out;
  std::string err;
  std::chrono::milliseconds elapsed{0};
  std::size_t peak = 0;  // of the memory of the scan's own process, in bytes
  // It was done, but the kernel still held it, and it had to be killed.
  bool isHeld = false;
};

// A scan that has begun. It is killed at the end.
class RunningScan {
 public:
  RunningScan(const std::vector<std::string>& command, const Environment& environment,
              const std::string& outputs);
  ~RunningScan();
  RunningScan(const RunningScan&) = delete;
  RunningScan& operator=(const RunningScan&) = delete;

  pid_t process() const { return process_; }
  // Whether it has ended, or said that it is done. Notes its memory.
  bool isDone();
  bool hasEnded() const { return hasEnded_; }
  // Waits until it has ended or is done, and fails the test if that takes longer.
  ScanResult finish(std::chrono::milliseconds limit);

 private:
  void look();

  std::string outputs_;  // what the names of the files with its outputs begin with
  pid_t process_ = -1;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::size_t peak_ = 0;
  int status_ = -1;
  bool hasEnded_ = false;
};

struct ScanSettings {
  std::vector<std::string> arguments = {};  // more than root and library
  std::vector<std::string> before = {};     // a program that runs the scan
  std::string program = {};                 // empty: the build tree's
  std::string root = {};                    // empty: the folder
  Environment environment = {};
  std::chrono::milliseconds limit{60'000};  // for its time
};

class ScannedFolder {
 public:
  // Orphans become children of this process, where they are seen.
  ScannedFolder();
  // Expects that nothing is left but the library.
  ~ScannedFolder();
  ScannedFolder(const ScannedFolder&) = delete;
  ScannedFolder& operator=(const ScannedFolder&) = delete;

  // Of the folder that is scanned.
  std::string folder() const { return folder_.path("media/"); }
  std::string path(const std::string& name) const { return folder() + name; }
  std::string write(const std::string& name, const std::string& content) const;
  // Beside the folder that is scanned.
  std::string outside(const std::string& name) const { return folder_.path(name); }
  std::string library() const { return folder_.path("data/library.db"); }

  std::vector<std::string> command(const ScanSettings& settings = {}) const;
  // Expects little memory, too.
  ScanResult scan(const ScanSettings& settings = {}) const;
  RunningScan begin(const ScanSettings& settings = {}) const;

  // What the library knows of all files: "name", "state", and either what describes them or
  // "error".
  std::vector<nlohmann::json> rows() const;
  // Of the file with that name in whatever folder; null if there is none.
  nlohmann::json row(const std::string& name) const;
  void expectGoodFiles() const;
  // Expects a file to be there with this code and words of the reason.
  void expectFailure(const std::string& name, const std::string& code,
                     const std::string& reason = "") const;

 private:
  void expectNothingLeft() const;

  TempDir folder_;
};

}  // namespace kolum::test

#endif
