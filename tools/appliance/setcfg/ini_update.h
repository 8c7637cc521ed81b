// Sets one key of an ini file, so that no other process ever sees half a change.
#ifndef KOLUM_SETCFG_INI_UPDATE_H
#define KOLUM_SETCFG_INI_UPDATE_H

#include <string>

namespace kolum::setcfg {

// Sets KEY of SECTION in the ini file FILE to VALUE; a missing file, section or key is added. Links
// are followed and stay, and so do the file's mode and owner, its comments, order and spacing. What
// iniparser reads from the new file is what it read from the old one but for this value: a value
// that cannot be written so is refused.
//
// Several of these at once wait for each other, by a lock on the file's folder. The new file takes
// the old one's place in one step. Throws std::runtime_error with the reason, the old file then
// being untouched.
void setKey(const std::string& file, const std::string& section, const std::string& key,
            const std::string& value);

}  // namespace kolum::setcfg

#endif
