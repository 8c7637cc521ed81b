// What parseConfig reads, for files anywhere.
#ifndef KOLUM_CONFIG_CONFIGPARSER_H
#define KOLUM_CONFIG_CONFIGPARSER_H

#include <kolum/config.h>

#include <string>

namespace kolum {

// Fills CFG from both files, the defaults standing in for absent keys; nothing is tested. False,
// and CFG untouched, when a file cannot be read, which is logged.
bool readConfigFiles(const std::string& serverFile, const std::string& applianceFile,
                     lumCfg_s& cfg);

}  // namespace kolum

#endif
