# cmake --install into a folder of its own.
include(${CMAKE_CURRENT_LIST_DIR}/Consumer.cmake)

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
# Nothing may lead back to where it was built.
file(RENAME "${WORK_DIR}/installed" "${WORK_DIR}/moved")
build_and_run_consumer("${WORK_DIR}/moved")
file(REMOVE_RECURSE "${WORK_DIR}")
