// Every answer that the library gives about a file, as text: what two builds are compared by.
#ifndef KOLUM_TESTS_ANSWERS_ANSWERS_H
#define KOLUM_TESTS_ANSWERS_ANSWERS_H

#include <string>

namespace kolum::test {

// One line per value: "entry point.output value". Outputs are preset with a pattern, so that one
// that stays untouched shows. Debug lines on standard output are not part of it.
std::string answersAbout(const std::string& path);

}  // namespace kolum::test

#endif
