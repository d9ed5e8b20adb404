# Compiler and linker options that everything built here shares, as the interface library tarvelmon-options.
include(CheckCXXCompilerFlag)
include(CheckIPOSupported)

add_library(tarvelmon-options INTERFACE)
# Squares and counts are signed and index arrays everywhere: a change of sign alone is no warning.
target_compile_options(tarvelmon-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror)

# x86-64-v2 is every x86 processor since about 2009. It makes the population count one instruction: without it the
# standard library calls a function.
check_cxx_compiler_flag(-march=x86-64-v2 TARVELMON_HAS_X86_64_V2)
if(TARVELMON_HAS_X86_64_V2 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64")
  target_compile_options(tarvelmon-options INTERFACE -march=x86-64-v2)
endif()

if(TARVELMON_SANITIZE)
  target_compile_options(tarvelmon-options INTERFACE
    -fsanitize=${TARVELMON_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g -UNDEBUG)
  target_link_options(tarvelmon-options INTERFACE -fsanitize=${TARVELMON_SANITIZE})
else()
  # The files a game reads come from anywhere: stop a write beyond an array, forbid late binding. A position
  # independent program makes addresses hard to guess.
  target_compile_options(tarvelmon-options INTERFACE -fstack-protector-strong)
  target_compile_definitions(tarvelmon-options INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
  if(UNIX AND NOT APPLE)
    target_link_options(tarvelmon-options INTERFACE -Wl,-z,relro,-z,now)
  endif()
  check_ipo_supported(RESULT TARVELMON_HAS_IPO LANGUAGES CXX)
  if(TARVELMON_HAS_IPO AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
