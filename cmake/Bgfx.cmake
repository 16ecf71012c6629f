# Finds or builds bgfx. Afterwards the targets bgfx::bgfx, bgfx::bx and bgfx::bimg exist, and these are set:
#   ZX3D_BGFX_ORIGIN       package, checkouts or crate
#   ZX3D_BGFX_API_VERSION  the number in bgfx/defines.h; unknown where a package hides that file
#   ZX3D_BGFX_SOURCE_DIR   the folder that holds bgfx/, bx/ and bimg/; empty when a package was taken
#
# Tried in this order:
#   1. find_package(bgfx CONFIG), which must offer the three targets. Point to it with -Dbgfx_DIR=<folder>;
#      skip it with -DCMAKE_DISABLE_FIND_PACKAGE_bgfx=ON.
#   2. -DBGFX_ROOT=<folder>, a folder with the sibling checkouts bgfx/, bx/ and bimg/, built from there.
#   3. The crate named in deps/bgfx/Cargo.toml, fetched by cargo once and built from the build folder.
#
# bgfx_DIR and BGFX_ROOT are promises: given but wrong, they stop the configuration.
include_guard(GLOBAL)

find_package(Threads REQUIRED)

include(${CMAKE_CURRENT_LIST_DIR}/Install.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/bgfx/FetchCrate.cmake)

set(BGFX_ROOT "" CACHE PATH "Folder with the sibling checkouts bgfx/, bx/ and bimg/")

set(zx3d_bgfx_debug_default OFF)
if(CMAKE_BUILD_TYPE STREQUAL "Debug" OR CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
  set(zx3d_bgfx_debug_default ON)
endif()
option(ZX3D_BGFX_DEBUG
  "Build bgfx with its own checks: asserts, leaked handles reported at shutdown, calls from the wrong thread"
  ${zx3d_bgfx_debug_default})

# The oldest API that the libraries are written for, and the newest they have been tried with.
set(ZX3D_BGFX_MINIMUM_API_VERSION 122)
set(ZX3D_BGFX_NEWEST_KNOWN_API_VERSION 155)

# Reads BGFX_API_VERSION from the first of the include folders that has bgfx/defines.h: (122), or UINT32_C(123) and so
# on from then on.
function(zx3d_read_bgfx_api_version out)
  foreach(folder IN LISTS ARGN)
    if(EXISTS "${folder}/bgfx/defines.h")
      file(STRINGS "${folder}/bgfx/defines.h" line REGEX "#define BGFX_API_VERSION ")
      string(REGEX MATCH "BGFX_API_VERSION +(UINT32_C)?\\(([0-9]+)\\)" unused "${line}")
      set(${out} "${CMAKE_MATCH_2}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

# Empty when the folder has what it takes to build bgfx, else says what is missing.
function(zx3d_check_bgfx_sources folder out)
  set(missing "")
  foreach(file IN ITEMS
      bgfx/include/bgfx/bgfx.h bgfx/include/bgfx/defines.h bgfx/src/amalgamated.cpp
      bx/include/bx/bx.h bx/src/amalgamated.cpp
      bimg/include/bimg/bimg.h bimg/src/image.cpp)
    if(NOT EXISTS "${folder}/${file}")
      list(APPEND missing "${file}")
    endif()
  endforeach()
  list(JOIN missing ", " missing)
  set(${out} "${missing}" PARENT_SCOPE)
endfunction()

# Way 1. A macro, because imported targets belong to the folder scope that find_package runs in.
macro(zx3d_take_bgfx_package)
  set(zx3d_bgfx_given_dir "${bgfx_DIR}")
  if(zx3d_bgfx_given_dir)
    # Typed, so that CMake takes a relative one from where it was started.
    set(bgfx_DIR "${bgfx_DIR}" CACHE PATH "Folder with bgfxConfig.cmake")
    set(zx3d_bgfx_given_dir "${bgfx_DIR}")
    if(NOT EXISTS "${bgfx_DIR}/bgfxConfig.cmake" AND NOT EXISTS "${bgfx_DIR}/bgfx-config.cmake")
      message(FATAL_ERROR
        "bgfx_DIR is \"${bgfx_DIR}\", which holds neither bgfxConfig.cmake nor bgfx-config.cmake.\n"
        "Correct it, or drop it with -Ubgfx_DIR.")
    endif()
  endif()
  find_package(bgfx CONFIG QUIET)
  if(bgfx_FOUND)
    foreach(zx3d_bgfx_target IN ITEMS bgfx::bgfx bgfx::bx bgfx::bimg)
      if(NOT TARGET ${zx3d_bgfx_target})
        message(FATAL_ERROR
          "The bgfx package in \"${bgfx_DIR}\" does not define the target ${zx3d_bgfx_target}; "
          "bgfx::bgfx, bgfx::bx and bgfx::bimg are needed.\n"
          "Point to another package with -Dbgfx_DIR=<folder>, or skip packages with "
          "-DCMAKE_DISABLE_FIND_PACKAGE_bgfx=ON.")
      endif()
    endforeach()
    set(ZX3D_BGFX_ORIGIN package)
  elseif(zx3d_bgfx_given_dir)
    message(FATAL_ERROR
      "The bgfx package in \"${zx3d_bgfx_given_dir}\" cannot be used: ${bgfx_NOT_FOUND_MESSAGE}")
  elseif(CMAKE_DISABLE_FIND_PACKAGE_bgfx)
    set(zx3d_bgfx_no_package "switched off by CMAKE_DISABLE_FIND_PACKAGE_bgfx")
  elseif(bgfx_CONSIDERED_CONFIGS)
    set(zx3d_bgfx_no_package "cannot use ${bgfx_CONSIDERED_CONFIGS}: ${bgfx_NOT_FOUND_MESSAGE}")
  else()
    set(zx3d_bgfx_no_package "no bgfxConfig.cmake was found")
  endif()
endmacro()

set(ZX3D_BGFX_ORIGIN "")
set(ZX3D_BGFX_SOURCE_DIR "")

if(BGFX_ROOT)
  zx3d_check_bgfx_sources("${BGFX_ROOT}" zx3d_bgfx_missing)
  if(zx3d_bgfx_missing)
    message(FATAL_ERROR
      "BGFX_ROOT is \"${BGFX_ROOT}\", which lacks ${zx3d_bgfx_missing}.\n"
      "It must be a folder with the sibling checkouts bgfx/, bx/ and bimg/.")
  endif()
endif()

zx3d_take_bgfx_package()

if(ZX3D_BGFX_ORIGIN)
  if(BGFX_ROOT)
    message(STATUS "bgfx: BGFX_ROOT is not used, because a package was found")
  endif()
elseif(BGFX_ROOT)
  set(ZX3D_BGFX_ORIGIN checkouts)
  get_filename_component(ZX3D_BGFX_SOURCE_DIR "${BGFX_ROOT}" ABSOLUTE BASE_DIR "${CMAKE_BINARY_DIR}")
else()
  zx3d_fetch_bgfx_crate(ZX3D_BGFX_SOURCE_DIR zx3d_bgfx_no_crate)
  if(NOT ZX3D_BGFX_SOURCE_DIR)
    message(FATAL_ERROR
      "No bgfx. Three ways to supply it were tried:\n"
      "  1. An installed CMake package (-Dbgfx_DIR=<folder>): ${zx3d_bgfx_no_package}.\n"
      "  2. Sibling checkouts of bgfx, bx and bimg (-DBGFX_ROOT=<folder>): BGFX_ROOT is not set.\n"
      "  3. The crate in deps/bgfx, fetched by cargo: ${zx3d_bgfx_no_crate}")
  endif()
  set(ZX3D_BGFX_ORIGIN crate)
endif()

if(ZX3D_BGFX_SOURCE_DIR)
  zx3d_read_bgfx_api_version(ZX3D_BGFX_API_VERSION "${ZX3D_BGFX_SOURCE_DIR}/bgfx/include")
  add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/bgfx ${CMAKE_BINARY_DIR}/bgfx)
  message(STATUS
    "bgfx: API version ${ZX3D_BGFX_API_VERSION}, built from the ${ZX3D_BGFX_ORIGIN} in ${ZX3D_BGFX_SOURCE_DIR}")
else()
  get_target_property(zx3d_bgfx_includes bgfx::bgfx INTERFACE_INCLUDE_DIRECTORIES)
  zx3d_read_bgfx_api_version(ZX3D_BGFX_API_VERSION ${zx3d_bgfx_includes})
  if(NOT ZX3D_BGFX_API_VERSION)
    # The package passes its include folders on in a way that cannot be followed here; it may still be fine.
    set(ZX3D_BGFX_API_VERSION unknown)
  endif()
  message(STATUS "bgfx: API version ${ZX3D_BGFX_API_VERSION}, from the package in ${bgfx_DIR}")

  get_target_property(zx3d_bgfx_type bgfx::bgfx TYPE)
  if(zx3d_bgfx_type STREQUAL "STATIC_LIBRARY")
    message(WARNING
      "The bgfx package in ${bgfx_DIR} holds a static library. zx3D and the application then each "
      "link a copy of it; they agree only as long as the linker folds the copies into one. "
      "A shared bgfx is the safe choice.")
  endif()
endif()

if(ZX3D_BGFX_API_VERSION LESS ZX3D_BGFX_MINIMUM_API_VERSION)
  message(FATAL_ERROR
    "This bgfx has API version ${ZX3D_BGFX_API_VERSION}; "
    "at least ${ZX3D_BGFX_MINIMUM_API_VERSION} is needed.")
elseif(ZX3D_BGFX_API_VERSION GREATER ZX3D_BGFX_NEWEST_KNOWN_API_VERSION)
  message(STATUS
    "bgfx: API version ${ZX3D_BGFX_API_VERSION} is newer than ${ZX3D_BGFX_NEWEST_KNOWN_API_VERSION}, the newest that was "
    "tried; it may do")
endif()
