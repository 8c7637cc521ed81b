// The tool's own ends of standard input, output and error. The library and FFmpeg write debug lines
// to descriptors 1 and 2, and the programs they start read descriptor 0; results, messages and file
// lists therefore go through private duplicates that nothing else can reach.
#ifndef KOLUM_TOOL_TERMINAL_CHANNELS_H
#define KOLUM_TOOL_TERMINAL_CHANNELS_H

#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kolum::tool {

// Writing results failed. READERLEFT: nobody reads them any more, which is not an error to report.
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
  // std::system_error if there are too few descriptors, with the third one unchanged.
  Channels();

  // Discards what the library writes to descriptors 1 and 2, or sends it to the original standard
  // error.
  void muteLibrary() const;
  void showLibrary() const;

  // Throws OutputError if not everything could be written.
  void writeResults(std::string_view text) const;
  // A message that cannot be written is lost.
  void writeMessage(std::string_view text) const;
  // Shows a line on a terminal, cut to its width, until the next message or progress replaces it;
  // an empty one clears it. For waiting people: nothing is shown if messages do not go to a
  // terminal, if results go to one too, or if the terminal cannot replace a line. AMONGRESULTS is
  // false for commands whose results come at the end, when the line is cleared.
  void showProgress(std::string_view text, bool amongResults = true) const;
  // Whether people read the results as they come and may see colours.
  bool mayColourResults() const;
  // Whether results go to a terminal, where names must not play tricks.
  bool areResultsShown() const;
  // The original standard input, -1 if it was closed.
  int input() const { return input_; }

  // What WORK writes to standard output.
  std::string capture(const std::function<void()>& work) const;

 private:
  void replaceProgress(std::string_view text, bool amongResults) const;

  int input_;
  int results_;
  int messages_;
  bool canReplaceLines_;
  bool areResultsElsewhere_;
  mutable std::mutex mutex_;  // of the progress and of messages
  mutable bool progressShown_ = false;
};

}  // namespace kolum::tool

#endif
