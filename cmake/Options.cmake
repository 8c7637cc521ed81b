# Compiler settings shared by every target, as the interface library kolum::options.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(kolum_options INTERFACE)
add_library(kolum::options ALIAS kolum_options)
target_compile_features(kolum_options INTERFACE cxx_std_20 c_std_11)
target_compile_definitions(kolum_options INTERFACE _FILE_OFFSET_BITS=64)
target_compile_options(kolum_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${KOLUM_WARNINGS_AS_ERRORS}>:-Werror>)
target_include_directories(kolum_options INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)

# GCC 12 falsely reports overlapping copies in ordinary string concatenation.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kolum_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# Part of -Wconversion for Clang, but not for GCC.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(kolum_options INTERFACE -Wno-sign-conversion)
endif()

# Shared objects have no undefined symbols, except those defined by a sanitizer's run-time.
set(KOLUM_NO_UNDEFINED -Wl,--no-undefined)
if(KOLUM_SANITIZE)
  set(KOLUM_NO_UNDEFINED)
  target_compile_options(kolum_options INTERFACE
    -fsanitize=${KOLUM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # Needs two descriptors for each call, which some tests leave nobody.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(kolum_options INTERFACE -fno-sanitize=vptr)
  endif()
  target_link_options(kolum_options INTERFACE -fsanitize=${KOLUM_SANITIZE})
  target_compile_definitions(kolum_options INTERFACE KOLUM_SANITIZED)
  if(KOLUM_SANITIZE MATCHES address)
    target_compile_definitions(kolum_options INTERFACE KOLUM_SANITIZED_ADDRESS)
  endif()
endif()
