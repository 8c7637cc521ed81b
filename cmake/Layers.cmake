# kolum_layer(NAME [OBJECT] FOLDER folder SOURCES file... [USES layer...] [NEEDS library...])
#
# A layer of the library, or of what the tool adds to it: the sources of FOLDER (below src, or at the
# top), which is the current folder. They see their own headers, those of the layers in USES and of
# the layers these use, and no others: any other include does not compile. For this each layer has
# its own include folder in the build tree, which contains only a link to the layer's sources. NEEDS
# are external libraries, visible to this layer only.
# OBJECT: an object library, for code that nothing else refers to.
function(kolum_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OBJECT" "FOLDER" "SOURCES;USES;NEEDS")
  set(root ${PROJECT_BINARY_DIR}/layers/${name})
  cmake_path(GET arg_FOLDER PARENT_PATH above)
  file(REMOVE_RECURSE ${root})
  file(MAKE_DIRECTORY ${root}/${above})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${arg_FOLDER} SYMBOLIC)

  set(type STATIC)
  if(arg_OBJECT)
    set(type OBJECT)
  endif()
  list(TRANSFORM arg_USES PREPEND kolum_)
  add_library(kolum_${name} ${type} ${arg_SOURCES})
  set_target_properties(kolum_${name} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(kolum_${name} PUBLIC ${root})
  target_link_libraries(kolum_${name} PUBLIC kolum::options ${arg_USES} PRIVATE ${arg_NEEDS})
  if(KOLUM_COVERAGE)
    # Tests with several processes and threads update the same counters.
    target_compile_options(kolum_${name} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(kolum_${name} PUBLIC --coverage)
  endif()
endfunction()
