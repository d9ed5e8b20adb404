# A build inside a cross build, by the building machine's own compiler: the target build-machine makes in
# ${buildMachineFolder} what has to run here. Speed is no matter.
include(ExternalProject)

set(buildMachineFolder ${CMAKE_BINARY_DIR}/build-machine)
ExternalProject_Add(build-machine
  SOURCE_DIR ${CMAKE_SOURCE_DIR}
  BINARY_DIR ${buildMachineFolder}
  PREFIX ${buildMachineFolder}-steps
  CMAKE_ARGS
    -DCMAKE_BUILD_TYPE=Release -DTARVELMON_LTO=OFF
    -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
  # What is up to date it finds out itself.
  BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR> --target tarvelmon-book
  BUILD_ALWAYS ON
  BUILD_BYPRODUCTS ${buildMachineFolder}/tools/book/tarvelmon-book
  INSTALL_COMMAND ""
  EXCLUDE_FROM_ALL ON)
