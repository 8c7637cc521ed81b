// A fresh folder for a test, removed with its content at the end; and the content of files.
#ifndef KOLUM_TESTS_SUPPORT_TEMP_DIR_H
#define KOLUM_TESTS_SUPPORT_TEMP_DIR_H

#include <filesystem>
#include <string>
#include <string_view>

namespace kolum::test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  // The folder's path with a trailing "/", as the library's entry points expect.
  std::string folder() const { return path_.string() + "/"; }
  std::string path(std::string_view name) const { return folder() + std::string(name); }

  // Writes a file (parent folders are made) and returns its path.
  std::string write(std::string_view name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

// All bytes of a file; empty when it cannot be read.
std::string contentOf(const std::string& path);

}  // namespace kolum::test

#endif
