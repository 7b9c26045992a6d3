# What `cmake --install` lays down: the library, its headers, a CMake package, a pkg-config file,
# and the tool and the Java host when they are built. The headers of the bridge stay out: a host
# reaches the bridge through JNI only.
include(CMakePackageConfigHelpers)

install(TARGETS callormel EXPORT callormelTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/callormel
        FILES_MATCHING PATTERN "*.h" PATTERN "bridge" EXCLUDE)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/callormel)
install(EXPORT callormelTargets NAMESPACE callormel:: FILE callormelTargets.cmake
        DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/callormelConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/callormelConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
# Before 1.0 a new minor version may change the class interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/callormelConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/callormelConfig.cmake
              ${PROJECT_BINARY_DIR}/callormelConfigVersion.cmake
        DESTINATION ${package_dir})

# The folders are relative to the place of the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/callormel.pc.in ${PROJECT_BINARY_DIR}/callormel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/callormel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET ormel)
  set_target_properties(ormel PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS ormel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET callormel-host)
  install(FILES ${PROJECT_BINARY_DIR}/java/callormel-host.jar
          DESTINATION ${CMAKE_INSTALL_DATADIR}/java)
endif()
