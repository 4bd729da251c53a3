# Keeps the standard library's templates out of the shared library's exports, with linkers that can.
include(CheckLinkerFlag)

set(zor_version_script ${PROJECT_SOURCE_DIR}/cmake/Exports.map)
check_linker_flag(CXX "LINKER:--version-script=${zor_version_script}" ZOR_LINKER_TAKES_VERSION_SCRIPT)
if(ZOR_LINKER_TAKES_VERSION_SCRIPT)
  target_link_options(ZorSuite PRIVATE "LINKER:--version-script=${zor_version_script}")
  set_target_properties(ZorSuite PROPERTIES LINK_DEPENDS ${zor_version_script})
endif()
