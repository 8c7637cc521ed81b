// The media-library server's configuration.
#ifndef KOLUM_CONFIG_CONFIG_H
#define KOLUM_CONFIG_CONFIG_H

#include <kolum/config.h>

#include <string>

namespace kolum::config {

// The implementations of parseConfig and updateConfig; see <kolum/config.h>.
int parse(lumCfg_s& cfg);
int update(const std::string& section, const std::string& key, const std::string& value);

// Fills CFG from both files, with defaults for absent keys; does not check the values. False, with
// CFG untouched, if a file cannot be read, which is logged.
bool readConfigFiles(const std::string& serverFile, const std::string& applianceFile,
                     lumCfg_s& cfg);

}  // namespace kolum::config

#endif
