# What `cmake --install` puts where.
#
#   component driver   lib/velk/libvelk.so                 the module: a plug-in, so not among the shared libraries
#                      share/doc/velk-driver/              README, documents
#   component tools    bin/                                what runs on a desk
#                      share/man/, completions of shells   made from the program's own command tree
#                      share/velk/wireshark/               a dissector for its traces
#                      share/doc/velk-tools/examples/      a plant to play
#   component dev      include/velk/interfaces/            what a host compiles against
#                      share/cmake/velk/, share/pkgconfig/ find_package(velk), pkg-config velk
#                      share/doc/velk-dev/examples/        a minimal host
#
# The paths are the same for every machine, and nothing in the component dev depends on one.
include(CMakePackageConfigHelpers)

set(VELK_MODULE_DIR "lib/velk")
set(VELK_HEADER_DIR "${CMAKE_INSTALL_INCLUDEDIR}/velk")
set(VELK_CONFIG_DIR "${CMAKE_INSTALL_DATADIR}/cmake/velk")
set(VELK_PKGCONFIG_DIR "${CMAKE_INSTALL_DATADIR}/pkgconfig")
set(generated "${PROJECT_BINARY_DIR}/install")

# ---- driver
install(TARGETS velk LIBRARY DESTINATION "${VELK_MODULE_DIR}" COMPONENT driver)
if(TARGET velk_shared_runtime)
    install(TARGETS velk_shared_runtime LIBRARY DESTINATION "${VELK_MODULE_DIR}/shared-runtime"
        COMPONENT shared-runtime)
endif()
include(VelkDocuments)
velk_installed_documents("${generated}/documents")
install(DIRECTORY "${generated}/documents/" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-driver" COMPONENT driver)
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-driver"
    COMPONENT driver)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs/images" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-driver/docs"
    COMPONENT driver OPTIONAL)

# ---- tools: the folder installs its programs itself
set(VELK_PROGRAMS "")
if(TARGET velk-tool)
    list(APPEND VELK_PROGRAMS velk-tool)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/plant"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-tools/examples" COMPONENT tools)
    velk_check_programs(${VELK_PROGRAMS})
endif()

# ---- dev
set_target_properties(velk_interfaces PROPERTIES EXPORT_NAME interfaces)
target_compile_features(velk_interfaces INTERFACE cxx_std_17)
install(TARGETS velk_interfaces EXPORT velkTargets COMPONENT dev INCLUDES DESTINATION "${VELK_HEADER_DIR}")
install(EXPORT velkTargets NAMESPACE velk:: DESTINATION "${VELK_CONFIG_DIR}" COMPONENT dev)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/interfaces" DESTINATION "${VELK_HEADER_DIR}" COMPONENT dev
    FILES_MATCHING PATTERN "*.h")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/package/velkConfig.cmake.in" "${generated}/velkConfig.cmake"
    INSTALL_DESTINATION "${VELK_CONFIG_DIR}" PATH_VARS VELK_MODULE_DIR NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${generated}/velkConfigVersion.cmake" COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
configure_file("${PROJECT_SOURCE_DIR}/cmake/package/velk.pc.in" "${generated}/velk.pc" @ONLY)
install(FILES "${generated}/velkConfig.cmake" "${generated}/velkConfigVersion.cmake" DESTINATION "${VELK_CONFIG_DIR}"
    COMPONENT dev)
install(FILES "${generated}/velk.pc" DESTINATION "${VELK_PKGCONFIG_DIR}" COMPONENT dev)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/minimal-host"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-dev/examples" COMPONENT dev)

# ---- what every package carries
set(VELK_COMPONENTS driver dev)
if(VELK_PROGRAMS)
    list(APPEND VELK_COMPONENTS tools)
endif()
foreach(component IN LISTS VELK_COMPONENTS)
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/copyright"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velk-${component}" COMPONENT ${component})
endforeach()
