// The external programs: where an appliance has them, and their replacements on other machines.
#ifndef KOLUM_TOOL_MACHINE_PROGRAMS_H
#define KOLUM_TOOL_MACHINE_PROGRAMS_H

#include <string>
#include <vector>

namespace kolum::tool {

bool isProgram(const std::string& path);
// The first of PATHS that is a program; empty if none is.
std::string firstProgram(const std::vector<std::string>& paths);
// A program in one of PATH's absolute folders: the working folder must not decide what is run.
std::string programOnPath(const std::string& name);

// The appliance's program, else the one installed here; empty if there is neither.
std::string setTool();      // setcfg: the stand-in
std::string convertTool();  // ImageMagick: convert on the PATH
std::string osmInfoTool();  // the stand-in

// The folder of the stand-in tools with its trailing "/", found by this program's own location;
// empty if there is none.
std::string standInFolder();

}  // namespace kolum::tool

#endif
