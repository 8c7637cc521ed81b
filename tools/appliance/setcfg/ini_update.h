// Sets one key of an ini file, so that no other process ever sees half a change.
#ifndef KOLUM_SETCFG_INI_UPDATE_H
#define KOLUM_SETCFG_INI_UPDATE_H

#include <string>

namespace kolum::setcfg {

// Sets KEY of SECTION in the ini file FILE to VALUE; a missing file, section or key is added. Links
// are followed and kept, as are the file's mode and owner, its comments, order and spacing.
// iniparser reads the same from the new file as from the old one, except for this value: a value
// that cannot be written that way is refused.
//
// Concurrent runs wait for each other by a lock on the file's folder. The new file replaces the old
// one in one step. Throws std::runtime_error with the reason; the old file is then untouched.
void setKey(const std::string& file, const std::string& section, const std::string& key,
            const std::string& value);

}  // namespace kolum::setcfg

#endif
