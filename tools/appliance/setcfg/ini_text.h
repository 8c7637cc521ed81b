// Edits the text of an ini file, leaving everything except one value as it was.
#ifndef KOLUM_SETCFG_INI_TEXT_H
#define KOLUM_SETCFG_INI_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace kolum::setcfg {

// The ways to write VALUE that may read back as VALUE, the likeliest first. QUOTE is the quote
// around the value in the file now, if any, and is tried before others. Which of them iniparser
// reads back correctly depends on its release, so each has to be tried.
std::vector<std::string> waysToWrite(std::string_view value, char quote);

// The position, existing or future, of a key in the text of an ini file.
class KeyPlace {
 public:
  // Finds the last KEY in SECTION, which is the one that counts.
  KeyPlace(std::string_view text, std::string_view section, std::string_view key);

  // The quote before the current value, 0 if there is none.
  char quote() const { return quote_; }

  // The whole text with the value replaced by WRITTEN. A new key goes after the last one of its
  // section, a new section to the end of the text.
  std::string with(std::string_view written) const;

 private:
  std::string before_;  // the text up to the value
  std::string after_;   // the text from the end of the value
  char quote_ = 0;
};

}  // namespace kolum::setcfg

#endif
