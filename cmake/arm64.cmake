# 64-bit ARM Linux: cmake --preset arm64, or cmake -DCMAKE_TOOLCHAIN_FILE=cmake/arm64.cmake ...
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
