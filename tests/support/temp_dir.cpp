#include "support/temp_dir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kolum::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kolum-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + pattern);
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::write(std::string_view name, std::string_view content) const {
  const std::filesystem::path file = path_ / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
  return file.string();
}

std::string contentOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace kolum::test
