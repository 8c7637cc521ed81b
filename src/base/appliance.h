// Where an appliance has its files and programs.
#ifndef KOLUM_BASE_APPLIANCE_H
#define KOLUM_BASE_APPLIANCE_H

namespace kolum {

inline constexpr char kServerConfigFile[] = "/.system/lumserver.conf";  // below the data volume
inline constexpr char kLibraryConfigFile[] = "/etc/config/medialibrary.conf";
inline constexpr char kSetTool[] = "/sbin/setcfg";
inline constexpr char kConvertTool[] = "/usr/local/sbin/convert";
inline constexpr char kApplianceTools[] = "/usr/local/medialibrary/bin/";
inline constexpr char kOsmInfoTool[] = "/usr/local/medialibrary/bin/osm_info";

}  // namespace kolum

#endif
