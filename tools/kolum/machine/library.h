// The library's link to the machine: its external tools, and the notification channels.
#ifndef KOLUM_TOOL_MACHINE_LIBRARY_H
#define KOLUM_TOOL_MACHINE_LIBRARY_H

namespace kolum::tool {

// Hands the library the folder of its external tools: the stand-ins that were built or installed
// with this program, else the appliance's. Call it before anything that needs such a tool or the
// notification channels; repeated calls do nothing. False when the channels cannot be opened;
// the tools are there all the same.
bool initLibrary();

}  // namespace kolum::tool

#endif
