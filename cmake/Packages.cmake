# Debian packages of a shared build that is configured for /usr, as the preset "deb" does; cpack makes them.
set(zor_debian ${PROJECT_SOURCE_DIR}/cmake/debian)
set(zor_runtime_package libzorsuite${PROJECT_VERSION_MAJOR})
set(zor_same_version "${zor_runtime_package} (= ${PROJECT_VERSION})")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zorsuite)
set(CPACK_PACKAGE_CONTACT "ZorSuite maintainers <maintainers@zorsuite.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_COMPONENTS_ALL ZorSuite_Runtime ZorSuite_Development ZorSuite_Tool)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
# Puts in what only Debian's packages hold.
set(CPACK_PRE_BUILD_SCRIPTS ${zor_debian}/Prepare.cmake)
set(CPACK_ZOR_PACKAGES "ZorSuite_Runtime=${zor_runtime_package};ZorSuite_Development=libzorsuite-dev;ZorSuite_Tool=zorctl")
set(CPACK_ZOR_DEBIAN ${zor_debian})

set(CPACK_DEBIAN_ZORSUITE_RUNTIME_PACKAGE_NAME ${zor_runtime_package})
set(CPACK_DEBIAN_ZORSUITE_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_ZORSUITE_RUNTIME_DESCRIPTION "ZorSuite sends a network's credentials to Wi-Fi modules that have none, hears
them announce themselves, searches for them and starts their upgrades.

This package holds the shared libraries for C++ and for C.")
# Programs that are linked with the library depend on its package, and the loader learns of it.
file(CONFIGURE OUTPUT debian/shlibs CONTENT
     "libZorSuite ${PROJECT_VERSION_MAJOR} ${zor_runtime_package} (>= ${PROJECT_VERSION})
libZorSuiteC ${PROJECT_VERSION_MAJOR} ${zor_runtime_package} (>= ${PROJECT_VERSION})
")
set(CPACK_DEBIAN_ZORSUITE_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_BINARY_DIR}/debian/shlibs ${zor_debian}/triggers)

set(CPACK_DEBIAN_ZORSUITE_DEVELOPMENT_PACKAGE_NAME libzorsuite-dev)
set(CPACK_DEBIAN_ZORSUITE_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_ZORSUITE_DEVELOPMENT_PACKAGE_DEPENDS "${zor_same_version}")
set(CPACK_DEBIAN_ZORSUITE_DEVELOPMENT_DESCRIPTION "ZorSuite sends a network's credentials to Wi-Fi modules that have none, hears
them announce themselves, searches for them and starts their upgrades.

This package holds the headers, the CMake package and the pkg-config files.")

set(CPACK_DEBIAN_ZORSUITE_TOOL_PACKAGE_NAME zorctl)
set(CPACK_DEBIAN_ZORSUITE_TOOL_PACKAGE_SECTION net)
set(CPACK_DEBIAN_ZORSUITE_TOOL_PACKAGE_DEPENDS "${zor_same_version}")
set(CPACK_DEBIAN_ZORSUITE_TOOL_DESCRIPTION "zorctl sends a network's credentials to Wi-Fi modules that have none, shows
those that announce themselves, searches for them and upgrades them.

It can also act as a module itself, to try all this without hardware.")

include(CPack)
