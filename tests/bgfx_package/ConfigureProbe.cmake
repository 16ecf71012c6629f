# Configures the probe project with ARGUMENTS (separated by |) and looks for the phrases that a user needs to read then. It
# must fail, unless the first of them is "Configuring done".
set(ExplainsWhenNothingWorks
  "No bgfx. Three ways to supply it were tried"
  "An installed CMake package (-Dbgfx_DIR=<folder>): switched off by"
  "Sibling checkouts of bgfx, bx and bimg (-DBGFX_ROOT=<folder>): BGFX_ROOT is not set"
  "ZX3D_CARGO is /nowhere/cargo, which does not exist")
set(ExplainsAnOldCargo
  "No bgfx. Three ways to supply it were tried"
  "cargo/old is version 1.65, at least 1.70 is needed")
set(ExplainsAnUnreachableRegistry
  "No bgfx. Three ways to supply it were tried"
  "cargo vendor failed (101), three times over"
  "error: the registry does not answer")
set(RejectsAnotherChecksum
  "the fetched crate has the checksum 0123456789abcdef, expected")
set(RejectsAWrongPackageFolder
  "bgfx_DIR is \"/nowhere\", which holds neither bgfxConfig.cmake nor bgfx-config.cmake")
set(RejectsAnIncompletePackage
  "does not define the target bgfx::bimg"
  "Point to another package with -Dbgfx_DIR=<folder>")
set(RejectsAnOldPackage
  "This bgfx has API version 121; at least 122 is needed")
set(ReadsAVersionInParentheses
  "Configuring done" "bgfx: API version 122, from the package")
set(ReadsAVersionInAMacro
  "Configuring done" "bgfx: API version 129, from the package")
set(TellsOfANewerVersion
  "Configuring done" "bgfx: API version 999 is newer than 155, the newest that was tried")
set(RejectsAnotherUseOfPrograms
  "uses OpenGL's programs, vertex array objects or mipmaps in another way than cmake/bgfx/Bgfx.cpp knows"
  "or an installed package with -Dbgfx_DIR=<folder>")
set(RejectsAnotherUseOfVertexArrays ${RejectsAnotherUseOfPrograms})
set(RejectsAnotherUseOfMipmaps ${RejectsAnotherUseOfPrograms})
set(RejectsAWrongRoot
  "BGFX_ROOT is \"/nowhere\", which lacks bgfx/include/bgfx/bgfx.h, bgfx/include/bgfx/defines.h, bgfx/src/amalgamated.cpp"
  "It must be a folder with the sibling checkouts bgfx/, bx/ and bimg/")

string(REPLACE "|" ";" ARGUMENTS "${ARGUMENTS}")

file(REMOVE_RECURSE "${BINARY_DIR}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BINARY_DIR}" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" ${ARGUMENTS}
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
list(FIND ${NAME} "Configuring done" success_expected)
if(result EQUAL 0 AND success_expected EQUAL -1)
  message(FATAL_ERROR "The configuration went through:\n${output}")
endif()

# CMake breaks long messages into lines.
string(REGEX REPLACE "[ \n]+" " " flowing "${output}")
if(NOT ${NAME})
  message(FATAL_ERROR "Nothing is expected of ${NAME}")
endif()
foreach(phrase IN LISTS ${NAME})
  string(FIND "${flowing}" "${phrase}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "Expected \"${phrase}\" in:\n${output}")
  endif()
endforeach()
