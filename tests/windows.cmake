# The programs for Windows, driven by the same scripts as those of this machine, under Wine. The programs' own tests
# are for the systems that have what they look at; the scripts ask what a user would.
find_program(TARVELMON_WINE NAMES wine64 wine PATHS /usr/lib/wine)
find_program(TARVELMON_WINE_SERVER NAMES wineserver64 wineserver PATHS /usr/lib/wine)
if(NOT TARVELMON_WINE OR NOT TARVELMON_WINE_SERVER)
  message(STATUS "No Wine: the programs for Windows are built, not run")
  return()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

add_executable(windows_probe ${CMAKE_CURRENT_SOURCE_DIR}/support/windows_probe.cpp)
target_link_libraries(windows_probe PRIVATE tarvelmon-core)
set_target_properties(windows_probe PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)

# A command for each program, which becomes Wine: a script that ends the command ends the program.
set(wineFolder ${CMAKE_BINARY_DIR}/wine)
foreach(TARVELMON_PROGRAM tarvelmon tarvelmon-gui tarvelmon-book windows_probe)
  configure_file(${CMAKE_CURRENT_SOURCE_DIR}/support/wine.sh.in ${wineFolder}/${TARVELMON_PROGRAM}.in @ONLY)
  file(GENERATE OUTPUT ${wineFolder}/${TARVELMON_PROGRAM} INPUT ${wineFolder}/${TARVELMON_PROGRAM}.in
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()

# Wine's own processes start once for all tests, in a folder that is made by the first run.
set(wineEnvironment "WINEPREFIX=${wineFolder}/prefix;WINEDEBUG=-all;WINEDLLOVERRIDES=mscoree=\\;mshtml=\\;winemenubuilder.exe=")
add_test(NAME wine.starts COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/support/start_wine.sh
  ${TARVELMON_WINE} ${TARVELMON_WINE_SERVER})
add_test(NAME wine.ends COMMAND ${TARVELMON_WINE_SERVER} -k)
set_tests_properties(wine.starts PROPERTIES FIXTURES_SETUP wine ENVIRONMENT "${wineEnvironment}" TIMEOUT 900)
set_tests_properties(wine.ends PROPERTIES FIXTURES_CLEANUP wine ENVIRONMENT "${wineEnvironment}")

set(drivers
  analysis book book_tool config hostile hostile_lines ponder startup tables transcripts windows_only)
foreach(driver ${drivers})
  add_test(NAME windows.test_${driver}
    COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/driver/on_windows.py test_${driver})
  set_tests_properties(windows.test_${driver} PROPERTIES TIMEOUT 1800 FIXTURES_REQUIRED wine
    ENVIRONMENT "TARVELMON=${wineFolder}/tarvelmon;TARVELMON_GUI=${wineFolder}/tarvelmon-gui;TARVELMON_BOOK=${wineFolder}/tarvelmon-book;TARVELMON_PROBE=${wineFolder}/windows_probe;TARVELMON_EXE=$<TARGET_FILE:tarvelmon>")
endforeach()
