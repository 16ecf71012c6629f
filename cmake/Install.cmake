# What `cmake --install` puts where: the component "runtime" has the libraries that a finished application needs, the
# component "development" what it takes to build one.
include_guard(GLOBAL)
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Installs a library, its headers, and its target into the package of its EXPORT.
function(zx3d_install_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT" "")
  # Libraries of one folder find each other, wherever that folder is.
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  get_target_property(header_sets ${target} INTERFACE_HEADER_SETS)
  set(headers "")
  if(header_sets)
    set(headers FILE_SET HEADERS COMPONENT development)
  endif()
  install(TARGETS ${target} EXPORT ${arg_EXPORT}
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    RUNTIME COMPONENT runtime
    ${headers})
endfunction()

# Installs the CMake package NAME with the targets of the export NAMETargets.
function(zx3d_install_cmake_package name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAMESPACE;VERSION;CONFIG;COMPATIBILITY" "")
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  configure_package_config_file(${arg_CONFIG} ${name}Config.cmake INSTALL_DESTINATION ${folder})
  write_basic_package_version_file(${name}ConfigVersion.cmake
    VERSION ${arg_VERSION} COMPATIBILITY ${arg_COMPATIBILITY})
  install(EXPORT ${name}Targets NAMESPACE ${arg_NAMESPACE} DESTINATION ${folder} COMPONENT development)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}Config.cmake ${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${folder} COMPONENT development)
endfunction()
