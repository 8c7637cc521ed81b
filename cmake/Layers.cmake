# kolum_layer(NAME [OBJECT] FOLDER folder SOURCES file... [USES layer...] [NEEDS library...])
#
# A layer of the library: the sources of src/FOLDER, which is the current folder. They see their own
# headers, those of the layers in USES and of what these use, and no others: an include that goes
# another way does not compile. To that end each layer has an include folder of its own in the build
# tree, with nothing in it but a link to the layer's sources. NEEDS are libraries from elsewhere,
# seen by this layer alone. OBJECT: an object library, for what nothing else refers to.
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
    # Tests of many processes and threads write the same counts.
    target_compile_options(kolum_${name} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(kolum_${name} PUBLIC --coverage)
  endif()
endfunction()
