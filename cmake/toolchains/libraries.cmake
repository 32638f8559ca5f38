# Where another machine's libraries are found: those of the cross compiler, and what scripts/fetch-libraries has fetched
# for the program `velk`. Without the latter the program is not built.
set(VELK_LIBRARIES "${CMAKE_CURRENT_LIST_DIR}/../../build/libraries/${VELK_MACHINE}")
get_filename_component(VELK_LIBRARIES "${VELK_LIBRARIES}" ABSOLUTE)
if(EXISTS "${VELK_LIBRARIES}")
    set(velk_run_root "${VELK_LIBRARIES}/root")
    set(CMAKE_FIND_ROOT_PATH "${velk_run_root}" "${velk_compiler_root}")
else()
    set(velk_run_root "${velk_compiler_root}")
    set(CMAKE_FIND_ROOT_PATH "${velk_compiler_root}")
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
# Header-only libraries of the build machine serve every machine.
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
