#include "support/place_tool.h"

#include <filesystem>

namespace kolum::test {

std::string placeTool(const TempDir& folder, const std::string& script) {
  const std::string path = folder.write("osm_info", "#!/bin/sh\n" + script + "\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

std::string countingPlaceTool(const TempDir& folder, const std::string& notes) {
  return placeTool(folder, "echo start >>'" + notes +
                               "'\n"
                               "n=0\n"
                               "while read -r p; do\n"
                               "  n=$((n + 1))\n"
                               "  echo \"$p\" >>'" +
                               notes +
                               "'\n"
                               "  echo \"{\\\"position\\\":\\\"$p\\\",\\\"name\\\":\\\"Here\\\","
                               "\\\"country\\\":\\\"Land\\\",\\\"distance\\\":$n}\"\n"
                               "done");
}

}  // namespace kolum::test
