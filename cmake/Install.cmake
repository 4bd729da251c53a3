include(CMakePackageConfigHelpers)

# The components: ZorSuite_Runtime, ZorSuite_Development and, in cli/, ZorSuite_Tool.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME ZorSuite_Development)

install(TARGETS ZorSuite EXPORT ZorSuiteTargets
        LIBRARY COMPONENT ZorSuite_Runtime NAMELINK_COMPONENT ZorSuite_Development)
install(FILES ZORBroadcast_SSID_Password.h TYPE INCLUDE)
# The chief header and what it includes; the rest of the headers stay ours.
file(STRINGS ZOR/ZorSuite.h zor_includes REGEX "^#include \"")
set(zor_public_headers ZOR/ZorSuite.h ZOR/platform/Export.h)
foreach(line IN LISTS zor_includes)
  string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" header "${line}")
  list(APPEND zor_public_headers ${header})
endforeach()
foreach(header IN LISTS zor_public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

set(zor_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZorSuite)
install(EXPORT ZorSuiteTargets NAMESPACE ZorSuite:: DESTINATION ${zor_package_dir})
configure_package_config_file(cmake/ZorSuiteConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/ZorSuiteConfig.cmake
                              INSTALL_DESTINATION ${zor_package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ZorSuiteConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZorSuiteConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/ZorSuiteConfigVersion.cmake
        DESTINATION ${zor_package_dir})
