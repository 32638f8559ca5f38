# Run by cpack before it makes Debian packages: what the packages depend on, and how they are described.
if(CPACK_GENERATOR STREQUAL "DEB")
    # Each package has a description of its own; cpack would put this line above it.
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

    # What was built self-contained depends on the C library alone, in the version that its newest symbol asks for (the
    # packages of this machine know nothing about another one). Anything else depends on what dpkg-shlibdeps finds.
    # cpack's own way to ask that would also make the package run ldconfig, which a plug-in does not need.
    function(velk_depends result)
        set(newest "0")
        set(files "")
        foreach(report IN LISTS ARGN)
            include("${report}")
            list(APPEND files "${VELK_MODULE_FILE}")
            if(VELK_MODULE_GLIBC VERSION_GREATER newest)
                set(newest "${VELK_MODULE_GLIBC}")
            endif()
        endforeach()
        if(CPACK_VELK_SELF_CONTAINED)
            set(${result} "libc6 (>= ${newest})" PARENT_SCOPE)
            return()
        endif()
        set(folder "${CPACK_VELK_BUILD_DIR}/install/shlibdeps")
        file(WRITE "${folder}/debian/control" "Source: velk\n\nPackage: velk\nArchitecture: any\n")
        execute_process(COMMAND dpkg-shlibdeps -O ${files} WORKING_DIRECTORY "${folder}" OUTPUT_VARIABLE text
            OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX REPLACE "^shlibs:Depends=" "" text "${text}")
        set(${result} "${text}" PARENT_SCOPE)
    endfunction()

    foreach(component DRIVER TOOLS)
        if(CPACK_VELK_REPORTS_${component})
            velk_depends(depends ${CPACK_VELK_REPORTS_${component}})
            if(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS)
                string(PREPEND depends "${CPACK_DEBIAN_${component}_PACKAGE_DEPENDS}, ")
            endif()
            set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${depends}")
        endif()
    endforeach()
endif()
