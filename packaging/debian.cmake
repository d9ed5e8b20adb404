# The Debian package, which differs from the rest in where its programs stand and in what goes with its papers. What it
# says of itself is read from debian/, from which dpkg-buildpackage makes the same package. And what cpack is told of all
# packages.
install_programs(games ${debian})
compressed(changelog ${CMAKE_SOURCE_DIR}/debian/changelog)
install(FILES ${changelog} RENAME changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR} ${debian})
install(FILES ${CMAKE_SOURCE_DIR}/debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR} ${debian})

# The text of a field of debian/control, of several lines without the blank that begins each.
file(READ ${CMAKE_SOURCE_DIR}/debian/control control)
function(control_field variable name)
  if(NOT control MATCHES "\n${name}: ([^\n]*(\n [^\n]*)*)")
    message(FATAL_ERROR "debian/control has no field ${name}.")
  endif()
  string(REPLACE "\n " "\n" text "${CMAKE_MATCH_1}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
control_field(CPACK_PACKAGE_CONTACT Maintainer)
control_field(CPACK_DEBIAN_PACKAGE_SECTION Section)
control_field(CPACK_DEBIAN_PACKAGE_SUGGESTS Suggests)
control_field(description Description)
string(FIND "${description}" "\n" end)
string(SUBSTRING "${description}" 0 ${end} CPACK_PACKAGE_DESCRIPTION_SUMMARY)
math(EXPR end "${end} + 1")
string(SUBSTRING "${description}" ${end} -1 CPACK_DEBIAN_PACKAGE_DESCRIPTION)

set(CPACK_PACKAGE_VENDOR "The tarvelmon authors")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/before_packing.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/after_packing.cmake)
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_FILE_NAME "tarvelmon-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/cpack_options.cmake)
set(CPACK_TARVELMON_BUILD ${CMAKE_BINARY_DIR})
set(CPACK_TARVELMON_AR ${CMAKE_AR})

find_program(TARVELMON_SHLIBDEPS dpkg-shlibdeps)
find_program(TARVELMON_PARSECHANGELOG dpkg-parsechangelog)
if(TARVELMON_SHLIBDEPS AND TARVELMON_PARSECHANGELOG AND TARVELMON_GZIP)
  list(APPEND CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  execute_process(
    COMMAND ${TARVELMON_PARSECHANGELOG} -l ${CMAKE_SOURCE_DIR}/debian/changelog -S Timestamp
    OUTPUT_VARIABLE CPACK_TARVELMON_DATE OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
