// Files of the appliance that more than one family reads.
#ifndef KOLUM_SUPPORT_APPLIANCE_H
#define KOLUM_SUPPORT_APPLIANCE_H

namespace kolum {

inline constexpr char kLibraryConfigFile[] = "/etc/config/medialibrary.conf";

}  // namespace kolum

#endif
