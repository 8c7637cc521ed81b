// Detects descriptor leaks.
#ifndef KOLUM_TESTS_SUPPORT_DESCRIPTORS_H
#define KOLUM_TESTS_SUPPORT_DESCRIPTORS_H

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

namespace kolum::test {

// How many descriptors this process has open.
inline int openDescriptorCount() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  // This includes the iterator's own, every time.
  return static_cast<int>(std::distance(begin(all), end(all)));
}

// Fails the test when more or fewer descriptors are open at its end than at its beginning.
class ExpectNoDescriptorLeak {
 public:
  ExpectNoDescriptorLeak() : before_(openDescriptorCount()) {}
  ~ExpectNoDescriptorLeak() { EXPECT_EQ(openDescriptorCount(), before_); }
  ExpectNoDescriptorLeak(const ExpectNoDescriptorLeak&) = delete;
  ExpectNoDescriptorLeak& operator=(const ExpectNoDescriptorLeak&) = delete;

 private:
  int before_;
};

}  // namespace kolum::test

#endif
