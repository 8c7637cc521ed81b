// The licences of kolum's parts, and of the libraries that they are linked with.
#ifndef KOLUM_TOOL_MACHINE_LICENCES_H
#define KOLUM_TOOL_MACHINE_LICENCES_H

#include <string>
#include <vector>

namespace kolum::tool {

struct Licence {
  std::string part;
  std::string name;
  std::vector<std::string> users;  // the parts of kolum that are linked with it; none for these
  bool isThere = false;
};

// Starts a worker to find out whether it is there.
std::vector<Licence> licences();

}  // namespace kolum::tool

#endif
