# Writes the enumerators of <kolum/identifiers.h> as lists, one file per enumeration, so that the
# tool can print whole tables without repeating the name of every identifier.
set(header ${PROJECT_SOURCE_DIR}/include/kolum/identifiers.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
file(READ ${header} text)
foreach(family IN ITEMS FORMAT MPEG4 CODEC_ID PROFILE PLAY_EXCEPTION)
  string(REGEX MATCHALL "[ \n]${family}_[A-Z0-9_]+ = " names "${text}")
  set(list "")
  foreach(name IN LISTS names)
    string(REGEX REPLACE "[ =\n]" "" name "${name}")
    string(APPEND list "KOLUM_NAMED_NUMBER(${name})\n")
  endforeach()
  if(list STREQUAL "")
    message(FATAL_ERROR "no ${family}_* enumerators in ${header}")
  endif()
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/generated/identifier_names/${family}.inc
    CONTENT "${list}")
endforeach()
