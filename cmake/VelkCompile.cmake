# How every target of this project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(VELK_CCACHE ccache)
if(VELK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${VELK_CCACHE}")
endif()

add_library(velk_compile INTERFACE)
target_compile_options(velk_compile INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
    -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Werror
    # Among joined sources, a local name may well be that of something in another one.
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> # GCC 12 raises false alarms at assignments to std::string
    -ffunction-sections -fdata-sections) # so that the linker can leave out what the module does not use
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    # The compiler remarks on a change of the calling convention in its release 7; nothing here was built with an older one.
    target_compile_options(velk_compile INTERFACE -Wno-psabi)
endif()
target_include_directories(velk_compile INTERFACE "${PROJECT_SOURCE_DIR}")

if(VELK_SANITIZERS)
    set(VELK_SANITIZER_FLAGS "-fsanitize=${VELK_SANITIZERS}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(velk_compile INTERFACE ${VELK_SANITIZER_FLAGS})
    target_link_options(velk_compile INTERFACE ${VELK_SANITIZER_FLAGS})
endif()
if(VELK_FUZZ)
    # What steers the fuzzer; only the harnesses are linked with the fuzzer itself. The assertions of the library see
    # what the sanitizers do not: a step out of a span into the next member of the same object.
    target_compile_definitions(velk_compile INTERFACE _GLIBCXX_ASSERTIONS)
    target_compile_options(velk_compile INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(velk_compile INTERFACE -fsanitize=fuzzer-no-link)
endif()

# From here on the sources of a target are compiled several at a time. What is of one source alone, in a namespace
# without a name, needs a name that no other source of its target has.
macro(velk_join_sources)
    set(CMAKE_UNITY_BUILD ON)
    set(CMAKE_UNITY_BUILD_BATCH_SIZE 8)
endmacro()

# A static library of one folder: velk_library(NAME SOURCES a.cpp ... LINK other ...)
function(velk_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC velk_interfaces ${ARG_LINK} PRIVATE velk_compile)
endfunction()
