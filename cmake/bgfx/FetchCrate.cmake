# Fetches the crate that packages the sources of bgfx, bx and bimg. cargo serves as the package client only:
# it resolves, downloads and unpacks; no Rust is compiled and no Rust compiler is needed.

# Older ones cannot read today's package index.
set(ZX3D_MINIMUM_CARGO_VERSION 1.70)

# Sets `out` to why the cargo at `program` cannot be used, or to nothing.
function(zx3d_check_cargo program out)
  set(problem "")
  if(NOT program)
    set(problem "no cargo was found on the PATH.")
  elseif(NOT EXISTS "${program}")
    set(problem "ZX3D_CARGO is ${program}, which does not exist.")
  else()
    execute_process(COMMAND "${program}" --version
      OUTPUT_VARIABLE text ERROR_VARIABLE text RESULT_VARIABLE result)
    string(REGEX MATCH "cargo ([0-9]+\\.[0-9]+)" unused "${text}")
    if(NOT result EQUAL 0 OR NOT CMAKE_MATCH_1)
      set(problem "${program} --version failed (${result}): ${text}")
    elseif(CMAKE_MATCH_1 VERSION_LESS ZX3D_MINIMUM_CARGO_VERSION)
      set(problem "${program} is version ${CMAKE_MATCH_1}, at least ${ZX3D_MINIMUM_CARGO_VERSION} is needed.")
    endif()
  endif()
  set(${out} "${problem}" PARENT_SCOPE)
endfunction()

# Runs `cargo vendor` in `folder`: first with what cargo's own cache holds, so that a machine that has the
# crate needs no network, then up to three times over the network. Sets `out` to cargo's last words on failure.
function(zx3d_vendor_crate folder out)
  set(command "${CMAKE_COMMAND}" -E env CARGO_TERM_COLOR=never "${ZX3D_CARGO}" vendor --quiet)
  foreach(attempt IN ITEMS cache 1 2 3)
    set(options "")
    if(attempt STREQUAL "cache")
      set(options --offline)
    elseif(attempt GREATER 1)
      execute_process(COMMAND "${CMAKE_COMMAND}" -E sleep 5)
    endif()
    file(REMOVE_RECURSE "${folder}/vendor")
    execute_process(COMMAND ${command} ${options} vendor
      WORKING_DIRECTORY "${folder}" OUTPUT_QUIET ERROR_VARIABLE text RESULT_VARIABLE result)
    if(result EQUAL 0)
      set(${out} "" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  # Indented, because CMake reflows the lines of a message that are not.
  string(REPLACE "\n" "\n     " text "${text}")
  set(${out} "cargo vendor failed (${result}), three times over:\n     ${text}" PARENT_SCOPE)
endfunction()

# Sets `out` to why the unpacked crate is not the pinned one, or to nothing. cargo has compared the archive
# with the checksum in the package index and left that checksum beside the files.
function(zx3d_check_crate_checksum folder pinned out)
  file(READ "${folder}/.cargo-checksum.json" json)
  string(JSON actual GET "${json}" package)
  set(problem "")
  if(NOT actual STREQUAL pinned)
    set(problem "the fetched crate has the checksum ${actual}, expected ${pinned} (deps/bgfx/bgfx-sys.sha256).")
  endif()
  set(${out} "${problem}" PARENT_SCOPE)
endfunction()

# Sets `out_folder` to the folder that holds bgfx/, bx/ and bimg/, or to nothing and `out_problem` to the reason.
# The crate lands in the build folder and is fetched once; later runs need neither cargo nor network.
function(zx3d_fetch_bgfx_crate out_folder out_problem)
  get_filename_component(manifest_folder "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../deps/bgfx" ABSOLUTE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${manifest_folder}/Cargo.toml" "${manifest_folder}/bgfx-sys.sha256")
  file(READ "${manifest_folder}/bgfx-sys.sha256" pinned)
  string(REGEX MATCH "^[0-9a-f]+" pinned "${pinned}")

  set(work_folder "${CMAKE_BINARY_DIR}/bgfx-crate")
  string(SUBSTRING "${pinned}" 0 12 short)
  set(crate_folder "${work_folder}/bgfx-sys-${short}")
  set(${out_folder} "" PARENT_SCOPE)
  set(${out_problem} "" PARENT_SCOPE)

  if(NOT EXISTS "${crate_folder}")
    find_program(ZX3D_CARGO cargo DOC "Fetches the sources of bgfx")
    zx3d_check_cargo("${ZX3D_CARGO}" problem)
    if(NOT problem)
      message(STATUS "bgfx: fetching the crate with ${ZX3D_CARGO}")
      # A copy, because cargo writes beside the manifest and the source tree stays untouched.
      file(COPY "${manifest_folder}/Cargo.toml" "${manifest_folder}/src" DESTINATION "${work_folder}")
      zx3d_vendor_crate("${work_folder}" problem)
    endif()
    if(NOT problem)
      zx3d_check_crate_checksum("${work_folder}/vendor/bgfx-sys" "${pinned}" problem)
    endif()
    if(NOT problem)
      zx3d_check_bgfx_sources("${work_folder}/vendor/bgfx-sys" missing)
      if(missing)
        set(problem "the fetched crate lacks ${missing}.")
      endif()
    endif()
    if(problem)
      set(${out_problem} "${problem}" PARENT_SCOPE)
      return()
    endif()
    # Last, so that a folder of this name is always complete.
    file(RENAME "${work_folder}/vendor/bgfx-sys" "${crate_folder}")
    file(REMOVE_RECURSE "${work_folder}/vendor")
  endif()
  set(${out_folder} "${crate_folder}" PARENT_SCOPE)
endfunction()
