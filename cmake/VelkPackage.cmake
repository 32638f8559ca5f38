# Debian packages and an archive: `cpack` in a build folder. See scripts/check-packages for how they are tried.
#
#   velk-driver   the module and its documents
#   velk-tools    what runs on a desk, where it is built
#   velk-dev      headers, CMake and pkg-config files, a minimal host; the same for every machine
set(CPACK_GENERATOR "DEB;TGZ")
set(CPACK_PACKAGE_NAME velk)
set(CPACK_PACKAGE_VENDOR "VELK maintainers")
set(CPACK_PACKAGE_CONTACT "VELK maintainers <maintainers@velk.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# ---- which machine
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
else()
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
endif()
set(CPACK_PACKAGE_FILE_NAME "velk-${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")

# ---- the archive is one file, the packages are three
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${VELK_COMPONENTS})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DRIVER_PACKAGE_NAME velk-driver)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_DRIVER_DESCRIPTION "communication driver for controllers on a serial line
A module that an operator-panel runtime loads as a plug-in. It reads and
writes the variables of programmable logic controllers by name, over RS-232
or RS-485, directly or through couplers.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME velk-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "desk tools for the VELK communication driver
Programs that load the driver on an ordinary computer: to read and write
variables, to look at what travels on the line, and to play the controller
on a pseudo-terminal where there is none.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME velk-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DEV_DESCRIPTION "headers for hosts of the VELK communication driver
The abstract classes that a host compiles against, CMake and pkg-config files
that find them, and the source of a minimal host.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "velk-driver (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "velk-driver (= ${PROJECT_VERSION})")

# ---- the libraries they depend on, found out when cpack runs
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/package/DebianDetails.cmake")
set(CPACK_VELK_BUILD_DIR "${PROJECT_BINARY_DIR}")
set(CPACK_VELK_LIBRARIES "${VELK_LIBRARIES}")
set(CPACK_VELK_REPORTS_DRIVER "${PROJECT_BINARY_DIR}/velk-report.cmake")
set(CPACK_VELK_REPORTS_TOOLS "")
foreach(program IN LISTS VELK_PROGRAMS)
    list(APPEND CPACK_VELK_REPORTS_TOOLS "${PROJECT_BINARY_DIR}/${program}-report.cmake")
endforeach()

# ---- the changelog as Debian wants it
find_program(VELK_GZIP gzip)
if(VELK_GZIP)
    set(changelog "${PROJECT_BINARY_DIR}/install/changelog.gz")
    add_custom_command(OUTPUT "${changelog}"
        COMMAND "${CMAKE_COMMAND}" "-DCHANGELOG=${PROJECT_SOURCE_DIR}/CHANGELOG.md" "-DOUTPUT=${changelog}"
            "-DVERSION=${PROJECT_VERSION}" "-DMAINTAINER=${CPACK_PACKAGE_CONTACT}" "-DGZIP=${VELK_GZIP}"
            -P "${PROJECT_SOURCE_DIR}/cmake/package/DebianChangelog.cmake"
        DEPENDS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/cmake/package/DebianChangelog.cmake"
        COMMENT "Writing the Debian changelog"
        VERBATIM)
    add_custom_target(velk_changelog ALL DEPENDS "${changelog}")
    foreach(component IN LISTS CPACK_COMPONENTS_ALL)
        install(FILES "${changelog}" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-${component}"
            COMPONENT ${component})
    endforeach()
endif()

include(CPack)
