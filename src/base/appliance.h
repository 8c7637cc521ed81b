// Files of the appliance that several families read.
#ifndef KOLUM_BASE_APPLIANCE_H
#define KOLUM_BASE_APPLIANCE_H

namespace kolum {

inline constexpr char kLibraryConfigFile[] = "/etc/config/medialibrary.conf";

}  // namespace kolum

#endif
