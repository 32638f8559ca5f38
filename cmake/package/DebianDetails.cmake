# Run by cpack before it makes Debian packages: what the packages depend on, and how they are described.
if(CPACK_GENERATOR STREQUAL "DEB")
    # Each package has a description of its own; cpack would put this line above it.
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

    # What needs the C library alone depends on it in the version that its newest symbol asks for, so that the module
    # runs on older systems too. Anything else depends on what dpkg-shlibdeps finds, for another machine in the packages
    # that scripts/fetch-libraries has left.
    # cpack's own way to ask that would also make the package run ldconfig, which a plug-in does not need.
    function(velk_library_packages result)
        set(folder "${CPACK_VELK_BUILD_DIR}/install/shlibdeps")
        file(WRITE "${folder}/debian/control" "Source: velk\n\nPackage: velk\nArchitecture: any\n")
        set(packages "")
        if(CPACK_VELK_LIBRARIES)
            file(GLOB packages "${CPACK_VELK_LIBRARIES}/packages/*")
            list(TRANSFORM packages PREPEND "-S")
        endif()
        execute_process(COMMAND "${CMAKE_COMMAND}" -E env "DEB_HOST_ARCH=${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}"
                dpkg-shlibdeps -O ${packages} ${ARGN}
            WORKING_DIRECTORY "${folder}" OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE
            COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX REPLACE "^shlibs:Depends=" "" text "${text}")
        set(${result} "${text}" PARENT_SCOPE)
    endfunction()

    function(velk_depends result)
        set(newest "0")
        set(files "")
        set(needed "")
        foreach(report IN LISTS ARGN)
            include("${report}")
            list(APPEND files "${VELK_MODULE_FILE}")
            list(APPEND needed ${VELK_MODULE_NEEDS})
            if(VELK_MODULE_GLIBC VERSION_GREATER newest)
                set(newest "${VELK_MODULE_GLIBC}")
            endif()
        endforeach()
        list(FILTER needed EXCLUDE REGEX "^(libc\\.so\\.6|ld-linux.*)$")
        if(needed)
            velk_library_packages(depends ${files})
        else()
            set(depends "libc6 (>= ${newest})")
        endif()
        set(${result} "${depends}" PARENT_SCOPE)
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
