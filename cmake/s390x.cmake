# s390x Linux, the most significant byte first: cmake --preset s390x, or cmake -DCMAKE_TOOLCHAIN_FILE=cmake/s390x.cmake ...
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
