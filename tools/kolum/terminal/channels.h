// The tool's own ends of standard input, output and error. The library and FFmpeg write debug lines
// to descriptors 1 and 2, and the programs they start read descriptor 0; results, messages and file
// lists therefore go through private duplicates that nothing else can reach.
#ifndef KOLUM_TOOL_TERMINAL_CHANNELS_H
#define KOLUM_TOOL_TERMINAL_CHANNELS_H

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kolum::tool {

// Results can be written no further. READERLEFT: nobody reads them any more, which is no error to
// tell anybody about.
class OutputError : public std::runtime_error {
 public:
  OutputError(const std::string& reason, bool readerLeft)
      : std::runtime_error(reason), readerLeft_(readerLeft) {}
  bool readerLeft() const { return readerLeft_; }

 private:
  bool readerLeft_;
};

class Channels {
 public:
  // Takes over the three standard descriptors; descriptor 0 reads nothing from then on. Throws
  // std::system_error when there are too few descriptors, with the third one as it was.
  Channels();

  // Sends what the library writes to descriptors 1 and 2 nowhere, or to the original standard
  // error.
  void muteLibrary() const;
  void showLibrary() const;

  // Throws OutputError when not everything could be written.
  void writeResults(std::string_view text) const;
  // A message that cannot be written is lost.
  void writeMessage(std::string_view text) const;
  // A line on a terminal that the next message or progress replaces, cut to the terminal's width;
  // an empty one clears it. For people who wait: nothing is shown when messages go elsewhere, or
  // results to a terminal, too, or when the terminal is too plain to replace a line.
  void showProgress(std::string_view text) const;
  // Whether people read the results as they come, and may see colours.
  bool mayColourResults() const;
  // The original standard input, -1 when it was closed.
  int input() const { return input_; }

  // What WORK writes to standard output.
  std::string capture(const std::function<void()>& work) const;

 private:
  int input_;
  int results_;
  int messages_;
  bool hasProgress_;
  mutable bool progressShown_ = false;
};

}  // namespace kolum::tool

#endif
