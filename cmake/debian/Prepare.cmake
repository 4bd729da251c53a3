# Run by cpack once all is installed in the folders that the packages are made of: adds each package's documents
# and compresses the manual page.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changelog ${CPACK_TEMPORARY_DIRECTORY}/changelog)
file(WRITE ${changelog}
"zorsuite (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}; CHANGELOG.md in the source says what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

foreach(pair IN LISTS CPACK_ZOR_PACKAGES)
  string(REGEX MATCH "(.*)=(.*)" pair ${pair})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${CMAKE_MATCH_1}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(documents ${root}/share/doc/${CMAKE_MATCH_2})
  file(COPY ${CPACK_ZOR_DEBIAN}/copyright DESTINATION ${documents})
  file(COPY ${changelog} DESTINATION ${documents})
  file(GLOB pages ${root}/share/man/man*/*)
  execute_process(COMMAND gzip --best --no-name --force ${documents}/changelog ${pages}
                  COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(REMOVE ${changelog})
