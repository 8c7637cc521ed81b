// Compares the shortcut by headers with FFmpeg's own way: both must lead to the same answers.
#ifndef KOLUM_TESTS_ANSWERS_TWO_WAYS_H
#define KOLUM_TESTS_ANSWERS_TWO_WAYS_H

#include <functional>
#include <string>

namespace kolum::test {

enum class Extent {
  kFacts,    // all that readers report about a file, from which entry points take their answers
  kAnswers,  // also the answers of all entry points
};

// The lines in which the two ways differ; empty if they agree.
std::string differencesAbout(const std::string& path, Extent extent);

// Calls VISIT with copies of a file that are cut at COUNT places, and with copies of which COUNT
// bits are turned over; not of large ones. DAMAGE says what was done. The copies have the file's
// extension and exist during the call only.
void forEachDamaged(
    const std::string& path, int count,
    const std::function<void(const std::string& copy, const std::string& damage)>& visit);

}  // namespace kolum::test

#endif
