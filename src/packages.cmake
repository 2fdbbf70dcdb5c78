# How other projects find the installed library: find_package(vorel32) and pkg-config vorel32. Both work wherever the folder lies.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vorel32)
configure_package_config_file(vorel32Config.cmake.in vorel32Config.cmake INSTALL_DESTINATION ${package_folder}
                              PATH_VARS CMAKE_INSTALL_BINDIR CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(vorel32ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorel32Config.cmake ${CMAKE_CURRENT_BINARY_DIR}/vorel32ConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(vorel32.pc.in vorel32.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorel32.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/include/vorel32.h TYPE INCLUDE COMPONENT development)
