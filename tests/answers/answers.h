// Every answer of the library about a file, as text, to compare two builds.
#ifndef KOLUM_TESTS_ANSWERS_ANSWERS_H
#define KOLUM_TESTS_ANSWERS_ANSWERS_H

#include <string>

namespace kolum::test {

// One line per value: "entry point.output value". Outputs are preset with a pattern, so that
// untouched ones are visible. Debug lines on standard output are not included.
std::string answersAbout(const std::string& path);

}  // namespace kolum::test

#endif
