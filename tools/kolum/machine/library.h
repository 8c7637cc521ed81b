// The library's link to the machine: its external tools, and the notification channels.
#ifndef KOLUM_TOOL_MACHINE_LIBRARY_H
#define KOLUM_TOOL_MACHINE_LIBRARY_H

namespace kolum::tool {

// Passes the folder of the external tools to the library: the stand-ins built or installed with
// this program, else the appliance's. Call it before anything that needs such a tool or the
// notification channels; repeated calls do nothing. False if the channels cannot be opened; the
// tools work even then.
bool initLibrary();

}  // namespace kolum::tool

#endif
