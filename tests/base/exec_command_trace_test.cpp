// A separate program: its log goes to a file, which also gets the child process's line.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kolum/host.h>
#include <kolum/thumbnail.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temp_dir.h"

namespace {

int g_log = -1;

}  // namespace

// Replaces the host's function: writes "PROCESS COLOUR FORMAT" and a line break.
void koDebugUtilWrapperPrint(int, const char* colour, const char*, int, const char*,
                             const char* format, ...) {
  dprintf(g_log, "%s %s %s\n", colour, getpid() == getpgrp() ? "parent" : "child", format);
}

namespace {

TEST(ExecCommand, AlsoTracesInTheChild) {
  ASSERT_EQ(setpgid(0, 0), 0);
  const kolum::test::TempDir folder;
  const std::string log = folder.write("log", "");
  g_log = open(log.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  const char* argv[] = {"true", nullptr};
  EXPECT_EQ(ExecCommand(argv, 1), 0);
  close(g_log);

  std::ifstream in(log);
  std::ostringstream text;
  text << in.rdbuf();
  constexpr char kParentFirst[] =
      "\033[1;35m parent \n\n\033[1;35m child \n\n\033[1;35m parent  status = %d \n\n";
  constexpr char kChildFirst[] =
      "\033[1;35m child \n\n\033[1;35m parent \n\n\033[1;35m parent  status = %d \n\n";
  EXPECT_TRUE(text.str() == kParentFirst || text.str() == kChildFirst) << text.str();
}

}  // namespace
