# 32-bit x86 Linux: cmake --preset i686, or cmake -DCMAKE_TOOLCHAIN_FILE=cmake/i686.cmake ...
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CROSSCOMPILING_EMULATOR env)  # an x86-64 machine runs the programs itself
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
