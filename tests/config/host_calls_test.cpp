// How the library asks the host to change a setting. The program's own function replaces the host
// library's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/config.h>
#include <kolum/host.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace {

std::vector<std::string> arguments;
int waited = -1;

}  // namespace

int KoUtil_ExecSync(const char** argv, int wait) {
  for (; *argv != nullptr; ++argv) arguments.emplace_back(*argv);
  waited = wait;
  return 7;
}

namespace {

TEST(UpdateConfig, WaitsForTheToolAndReturnsItsStatus) {
  const kolum::test::TempDir volume;
  const std::string root = volume.folder().substr(0, volume.folder().size() - 1);
  std::filesystem::create_directory(root + "/.system");
  setenv("KO_DATA_DIR", root.c_str(), 1);
  EXPECT_EQ(updateConfig("KOLUMSERVER", "MC_VERSION", "two words; $x"), 7);
  EXPECT_THAT(arguments,
              testing::ElementsAre("/sbin/setcfg", "-f", root + "/.system/lumserver.conf",
                                   "KOLUMSERVER", "MC_VERSION", "two words; $x"));
  EXPECT_EQ(waited, 1);
}

}  // namespace
