# The manual page and the shells' completions, which the tool generates from its command line. A cross build
# has none: the tool does not run on this machine.
function(zor_generate kind file folder)
  set(path ${CMAKE_CURRENT_BINARY_DIR}/texts/${file})
  add_custom_command(OUTPUT ${path} VERBATIM
    COMMAND zorctl --generate ${kind} > ${path}
    DEPENDS zorctl)
  set_property(TARGET zor_tool_texts APPEND PROPERTY SOURCES ${path})
  install(FILES ${path} DESTINATION ${folder} COMPONENT ZorSuite_Tool)
endfunction()

file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/texts)
add_custom_target(zor_tool_texts ALL)
zor_generate(man zorctl.1 ${CMAKE_INSTALL_MANDIR}/man1)
zor_generate(bash zorctl ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# Debian's zsh reads what packages install from a folder of its own.
set(zsh_folder site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS /etc/debian_version)
  set(zsh_folder vendor-completions)
endif()
zor_generate(zsh _zorctl ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})
zor_generate(fish zorctl.fish ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
