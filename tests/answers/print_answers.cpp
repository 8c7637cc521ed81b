// print_answers: prints every answer of the library about the files whose names it reads from
// standard input, one per line. If two builds print the same, hosts get the same answers from both.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "answers/answers.h"

int main() {
  std::string path;
  while (std::getline(std::cin, path)) {
    std::printf("== %s\n", path.c_str());
    const std::string answers = kolum::test::answersAbout(path);
    std::fwrite(answers.data(), 1, answers.size(), stdout);
    std::fflush(stdout);
  }
}
