# Install and find_package(wayfence).
include(CMakePackageConfigHelpers)

install(TARGETS wayfence EXPORT wayfenceTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(folder platform positioning fencing scene persistence map)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder})
    install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wayfence
            FILES_MATCHING PATTERN "*.h")
  endif()
endforeach()
set(WAYFENCE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/wayfence)
install(EXPORT wayfenceTargets NAMESPACE wayfence:: DESTINATION ${WAYFENCE_CMAKE_DIR})
configure_package_config_file(cmake/wayfenceConfig.cmake.in wayfenceConfig.cmake
                              INSTALL_DESTINATION ${WAYFENCE_CMAKE_DIR})
write_basic_package_version_file(wayfenceConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/wayfenceConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/wayfenceConfigVersion.cmake
        DESTINATION ${WAYFENCE_CMAKE_DIR})
