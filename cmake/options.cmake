# Compiler and linker options that everything built here shares, as the interface library tarvelmon-options.
include(CheckCXXCompilerFlag)
include(CheckIPOSupported)

add_library(tarvelmon-options INTERFACE)
# Squares and counts are signed and index arrays everywhere: a change of sign alone is no warning.
target_compile_options(tarvelmon-options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 and 13 see overlapping copies inside the standard library's own strings where there are none.
  target_compile_options(tarvelmon-options INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # The tables of sliding attacks are worked out by the compiler, which would give up after a million steps.
  target_compile_options(tarvelmon-options INTERFACE -fconstexpr-steps=20000000)
endif()
if(TARVELMON_WERROR)
  target_compile_options(tarvelmon-options INTERFACE -Werror)
endif()

# x86-64-v2 is every x86 processor since about 2009. It makes the population count one instruction: without it the
# standard library calls a function.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64|i[3-6]86")
  check_cxx_compiler_flag(-march=x86-64-v2 TARVELMON_HAS_X86_64_V2)
  if(TARVELMON_HAS_X86_64_V2)
    target_compile_options(tarvelmon-options INTERFACE
      -march=x86-64-$<IF:$<BOOL:$<TARGET_PROPERTY:TARVELMON_X86_64_V3>>,v3,v2>)
  endif()
  # In 32 bits the old floating-point unit would round the budget of a move otherwise.
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(tarvelmon-options INTERFACE -mfpmath=sse)
    target_link_options(tarvelmon-options INTERFACE -march=x86-64-v2 -mfpmath=sse)
  endif()
endif()

# A product and a sum are rounded one after the other on every processor, also where one instruction does both.
target_compile_options(tarvelmon-options INTERFACE -ffp-contract=off)

# Files beyond 2 GB, where that is not so by itself.
target_compile_definitions(tarvelmon-options INTERFACE _FILE_OFFSET_BITS=64)

# Position independent programs make addresses hard to guess.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported()

# Every record that is made is compared with its key and score from scratch. Asserts do the work.
if(TARVELMON_CHECK_RECORDS)
  target_compile_definitions(tarvelmon-options INTERFACE TARVELMON_CHECK_RECORDS)
  target_compile_options(tarvelmon-options INTERFACE -UNDEBUG)
endif()

if(TARVELMON_SANITIZE)
  # Checked subscripts of the standard containers catch what the sanitizers cannot see: a step from one field of a
  # record into the next. Low optimisation keeps the build short, none where the target's property TARVELMON_QUICK_BUILD
  # asks for that; it comes behind the build type's own level.
  target_compile_options(tarvelmon-options INTERFACE
    -fsanitize=${TARVELMON_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<IF:$<BOOL:$<TARGET_PROPERTY:TARVELMON_QUICK_BUILD>>,-O0,-O1> -g1 -UNDEBUG)
  target_compile_definitions(tarvelmon-options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(tarvelmon-options INTERFACE -fsanitize=${TARVELMON_SANITIZE})
else()
  # The files a game reads come from anywhere: stop a write beyond an array, forbid late binding.
  # Some compilers define the fortify level themselves, hence the -U; without optimisation it only warns.
  # The code of tests is compiled more often than it runs: what it calls is optimised as ever.
  target_compile_options(tarvelmon-options INTERFACE
    $<$<AND:$<BOOL:$<TARGET_PROPERTY:TARVELMON_QUICK_BUILD>>,$<NOT:$<CONFIG:Debug>>>:-O1>
    -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  if(UNIX AND NOT APPLE)
    target_link_options(tarvelmon-options INTERFACE -Wl,-z,relro,-z,now)
  elseif(MINGW)
    # The stack protector is a library there; and the main thread's stack, on which the search recurs, is small.
    target_link_options(tarvelmon-options INTERFACE -fstack-protector-strong -static -Wl,--stack,16777216)
  endif()
  # Making a move is inlined into the loops of other files only by the linker.
  if(TARVELMON_LTO)
    check_ipo_supported(RESULT TARVELMON_HAS_IPO OUTPUT TARVELMON_IPO_REASON LANGUAGES CXX)
    if(NOT TARVELMON_HAS_IPO)
      message(STATUS "No link-time optimisation: ${TARVELMON_IPO_REASON}")
    endif()
  endif()
  if(TARVELMON_HAS_IPO AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    # Linking every test with link-time optimisation takes longer than all compilation. With GCC the objects hold plain
    # code too, and the tests link that; the program under test stays the optimised one.
    if(TARVELMON_TESTS AND NOT WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      set(CMAKE_CXX_COMPILE_OPTIONS_IPO -flto=auto -ffat-lto-objects)
      set(TARVELMON_PLAIN_LINK ON)
    endif()
  endif()
endif()

# Compiles the sources of each folder as one, but for the files and folders named: half of a compilation goes into what sources share.
# For builds that are there for their answers. Those named have file-local names that others of their folder have too,
# or are what a test replaces when it is linked.
function(join_sources target)
  if(NOT TARVELMON_SANITIZE OR TARVELMON_FUZZ)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    get_filename_component(name ${source} NAME)
    get_filename_component(folder ${source} ABSOLUTE)
    get_filename_component(folder ${folder} DIRECTORY)
    get_filename_component(folder ${folder} NAME)
    if(NOT name IN_LIST ARGN AND NOT folder IN_LIST ARGN)
      set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${folder})
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()

# Links a program that need not be fast without link-time optimisation, where that is possible.
function(link_plainly program)
  if(TARVELMON_PLAIN_LINK)
    set_target_properties(${program} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
    target_link_options(${program} PRIVATE -fno-lto)
  endif()
endfunction()
