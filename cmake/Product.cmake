# One target for everything that gets installed, without the tests: cmake --build FOLDER --target
# kolum-product. Included before every install(), because the check below must run first.
add_custom_target(kolum-product)
add_dependencies(kolum-product kolum kolum-tool kolum-man dsf2flac osm_info setcfg)

# Without this check, installing would stop at the first missing file and leave earlier ones in
# place.
install(CODE "
  foreach(file IN ITEMS
      [==[$<TARGET_FILE:kolum>]==]
      [==[$<TARGET_FILE:kolum-tool>]==]
      [==[$<TARGET_FILE:dsf2flac>]==]
      [==[$<TARGET_FILE:osm_info>]==]
      [==[$<TARGET_FILE:setcfg>]==]
      [==[${PROJECT_BINARY_DIR}/tools/kolum/man/kolum.1]==])
    if(NOT EXISTS \"\${file}\")
      message(FATAL_ERROR \"\${file} is not built, so nothing was installed. Build the target kolum-product first.\")
    endif()
  endforeach()"
  ALL_COMPONENTS)
