# Every library that the project depends on.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib)
pkg_check_modules(DVDREAD REQUIRED IMPORTED_TARGET dvdread)
pkg_check_modules(UDFREAD REQUIRED IMPORTED_TARGET libudfread)
pkg_check_modules(SECCOMP REQUIRED IMPORTED_TARGET libseccomp)
pkg_check_modules(EXIV2 REQUIRED IMPORTED_TARGET exiv2>=0.27.4)
pkg_check_modules(EXPAT REQUIRED IMPORTED_TARGET expat)
pkg_check_modules(BROTLI REQUIRED IMPORTED_TARGET libbrotlidec)
find_package(ZLIB REQUIRED)
find_package(pugixml REQUIRED)
find_package(SQLite3 3.40 REQUIRED)

# iniparser ships no pkg-config file in Debian 12.
find_path(INIPARSER_INCLUDE_DIR iniparser.h PATH_SUFFIXES iniparser REQUIRED)
find_library(INIPARSER_LIBRARY iniparser REQUIRED)
add_library(iniparser::iniparser UNKNOWN IMPORTED)
set_target_properties(iniparser::iniparser PROPERTIES
  IMPORTED_LOCATION "${INIPARSER_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${INIPARSER_INCLUDE_DIR}")
