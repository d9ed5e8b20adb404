# Read by cpack for each kind of package.

# A package holds no time but that of its version, so that who builds the same source gets the same bytes.
if(CPACK_TARVELMON_DATE AND NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} ${CPACK_TARVELMON_DATE})
endif()

if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_INSTALL_CMAKE_PROJECTS)
  foreach(component shared debian)
    list(APPEND CPACK_INSTALL_CMAKE_PROJECTS ${CPACK_TARVELMON_BUILD} tarvelmon ${component} /)
  endforeach()
endif()
