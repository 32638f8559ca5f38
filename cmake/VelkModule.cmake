# How the module is linked, and what has to be true of it before it may leave the build.
#
# Included after factory/, which defines the target `velk`. With VELK_SELF_CONTAINED the C++ runtime is linked in, and
# `velk_shared_runtime` is the same module with the panel's shared C++ runtime, for a panel that has one.

set(VELK_MODULE_ENTRY GetInterfaceFactory)
set(VELK_BUDGET_SELF_CONTAINED 131072 CACHE STRING "Most bytes of the stripped module with the C++ runtime linked in")
set(VELK_BUDGET_SHARED_RUNTIME 65536 CACHE STRING "Most bytes of the stripped module with the shared C++ runtime")
mark_as_advanced(VELK_BUDGET_SELF_CONTAINED VELK_BUDGET_SHARED_RUNTIME)

# The loader is needed for thread-local storage (the exception being handled is kept there).
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(VELK_LOADER ld-linux-armhf.so.3)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
    set(VELK_LOADER ld-linux.so.2)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
    set(VELK_LOADER ld-linux-aarch64.so.1)
else()
    set(VELK_LOADER ld-linux-x86-64.so.2)
endif()

# velk_check_module(TARGET LABEL text LIBRARIES a.so ... [BUDGET bytes] [ENTRY symbol]): the build fails when it is unfit.
function(velk_check_module target)
    cmake_parse_arguments(ARG "" "LABEL;BUDGET;ENTRY" "LIBRARIES" ${ARGN})
    list(JOIN ARG_LIBRARIES "," libraries)
    set(arguments "-DMODULE=$<TARGET_FILE:${target}>" "-DREADELF=${CMAKE_READELF}" "-DNM=${CMAKE_NM}"
        "-DLIBRARIES=${libraries}")
    set(stamp "${PROJECT_BINARY_DIR}/${target}.checked")
    add_custom_command(OUTPUT "${stamp}"
        COMMAND "${CMAKE_COMMAND}" ${arguments} "-DENTRY=${ARG_ENTRY}" "-DLABEL=${ARG_LABEL}"
            "-DBUDGET=${ARG_BUDGET}" "-DREPORT=${PROJECT_BINARY_DIR}/${target}-report.cmake"
            -P "${PROJECT_SOURCE_DIR}/cmake/CheckModule.cmake"
        COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
        DEPENDS "${target}" "${PROJECT_SOURCE_DIR}/cmake/CheckModule.cmake"
        COMMENT "Checking ${ARG_LABEL}"
        VERBATIM)
    add_custom_target(${target}_checked ALL DEPENDS "${stamp}")
    if(NOT VELK_BUILD_TESTS OR NOT ARG_ENTRY)
        return()
    endif()
    # The check itself can fail: each of its verdicts is seen once.
    foreach(fault "size;-DENTRY=${ARG_ENTRY};-DBUDGET=1024;over its budget of 1024"
                  "entry;-DENTRY=AnotherEntry;-DBUDGET=;and not just 'AnotherEntry'"
                  "library;-DENTRY=${ARG_ENTRY};-DLIBRARIES=libnone.so.1;allowed are libnone.so.1")
        list(POP_FRONT fault name)
        list(POP_BACK fault text)
        add_test(NAME ${target}.check.refuses_${name}
            COMMAND "${CMAKE_COMMAND}" ${arguments} ${fault} -P "${PROJECT_SOURCE_DIR}/cmake/CheckModule.cmake")
        set_tests_properties(${target}.check.refuses_${name} PROPERTIES PASS_REGULAR_EXPRESSION "${text}")
    endforeach()
endfunction()

# A second module from the sources and libraries of `velk`, into a folder of its own under the same file name.
function(velk_module_twin twin)
    get_target_property(folder velk SOURCE_DIR)
    get_target_property(sources velk SOURCES)
    get_target_property(libraries velk LINK_LIBRARIES)
    get_target_property(options velk LINK_OPTIONS)
    get_target_property(depends velk LINK_DEPENDS)
    list(TRANSFORM sources PREPEND "${folder}/" REGEX "^[^/]")
    add_library(${twin} SHARED ${sources})
    target_link_libraries(${twin} PRIVATE ${libraries})
    set_target_properties(${twin} PROPERTIES OUTPUT_NAME velk
        LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/shared-runtime")
    if(options)
        target_link_options(${twin} PRIVATE ${options})
    endif()
    if(depends)
        set_target_properties(${twin} PROPERTIES LINK_DEPENDS "${depends}")
    endif()
endfunction()

# What comes out of a static library is the module's own affair, the C++ runtime included.
target_link_options(velk PRIVATE LINKER:--gc-sections LINKER:--as-needed LINKER:--exclude-libs,ALL)
set(c_library libc.so.6 libm.so.6 ${VELK_LOADER})
set(shared_runtime libstdc++.so.6 libgcc_s.so.1 ${c_library})

if(VELK_SELF_CONTAINED)
    target_link_options(velk PRIVATE LINKER:--strip-all)
    velk_module_twin(velk_shared_runtime)
    velk_check_module(velk_shared_runtime LABEL "module with the shared C++ runtime" ENTRY ${VELK_MODULE_ENTRY}
        LIBRARIES ${shared_runtime} BUDGET ${VELK_BUDGET_SHARED_RUNTIME})
    target_sources(velk PRIVATE "${PROJECT_SOURCE_DIR}/cmake/runtime/SelfContained.cpp")
    target_link_options(velk PRIVATE -static-libstdc++ -static-libgcc LINKER:--undefined=__cxa_pure_virtual)
    velk_check_module(velk LABEL "self-contained module" ENTRY ${VELK_MODULE_ENTRY}
        LIBRARIES libc.so.6 ${VELK_LOADER} BUDGET ${VELK_BUDGET_SELF_CONTAINED})
elseif(NOT VELK_SANITIZERS)
    velk_check_module(velk LABEL "module" ENTRY ${VELK_MODULE_ENTRY} LIBRARIES ${shared_runtime})
endif()

# The programs of tools/ use the shared libraries of a Debian system, the C++ runtime among them, on every machine.
function(velk_check_programs)
    foreach(program IN LISTS ARGN)
        if(NOT VELK_SANITIZERS)
            velk_check_module(${program} LABEL "${program}")
        endif()
    endforeach()
endfunction()
