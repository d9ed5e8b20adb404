# s390x Linux, the most significant byte first, by Debian's cross compiler: cmake --preset s390x, or
# cmake -DCMAKE_TOOLCHAIN_FILE=cmake/s390x.cmake ... The tests run under QEMU's emulation of a processor.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)
set(CMAKE_C_COMPILER s390x-linux-gnu-gcc)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x)
# The programs bring the libraries that the building machine has not got.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_FIND_ROOT_PATH /usr/s390x-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
