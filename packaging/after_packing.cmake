# Run by cpack when it has packed. The parts of a Debian package have the permissions that the habits of who makes it
# gave them on the way: they are put together anew, with those that dpkg-deb gives.
set(parts debian-binary control.tar.gz data.tar.gz)
foreach(package ${CPACK_PACKAGE_FILES})
  if(package MATCHES "\\.deb$")
    set(folder ${CPACK_TOPLEVEL_DIRECTORY}/parts)
    file(MAKE_DIRECTORY ${folder})
    execute_process(COMMAND ${CPACK_TARVELMON_AR} x ${package} WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${package})
    execute_process(COMMAND ${CPACK_TARVELMON_AR} rcSD ${package} ${parts} WORKING_DIRECTORY ${folder}
      COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
  endif()
endforeach()
