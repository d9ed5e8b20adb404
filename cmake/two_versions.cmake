# Programs that hold the engine's code twice, for any x86-64 processor since about 2009 (x86-64-v2) and for those since
# about 2013 (x86-64-v3), and take the better when they start. The sources know nothing of it: the core is compiled a
# second time, each version is linked and optimised by itself into one object, in which all names but one are made local
# and initialisers are set aside, and choose_version.cpp picks.
#
# Wants GCC, link-time optimisation and ELF; elsewhere, and where it is turned off, programs hold one version.
option(TARVELMON_TWO_VERSIONS "Programs hold code for newer processors too, where that is possible" ON)

# Without the linker's plugin GCC takes what it is given for the whole program, as it does when it links one: with it all
# functions would have to stay callable from elsewhere.
set(linkOneObject -flto=auto -fno-use-linker-plugin -fwhole-program -fno-gnu-unique -fPIE -r -nostdlib
  -Wl,--force-group-allocation)
set(chooseVersion ${CMAKE_SOURCE_DIR}/cmake/choose_version.cpp)

set(twoVersions OFF)
if(TARVELMON_TWO_VERSIONS AND CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND UNIX
   AND NOT APPLE AND CMAKE_OBJCOPY AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|amd64" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  if(NOT DEFINED TARVELMON_CAN_CHOOSE)
    execute_process(
      COMMAND ${CMAKE_CXX_COMPILER} -std=c++20 -march=x86-64-v3 ${linkOneObject} ${chooseVersion} -o two_versions_tried.o
      WORKING_DIRECTORY ${CMAKE_BINARY_DIR}/CMakeFiles RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
    if(failed)
      set(TARVELMON_CAN_CHOOSE OFF CACHE INTERNAL "")
    else()
      set(TARVELMON_CAN_CHOOSE ON CACHE INTERNAL "")
    endif()
  endif()
  set(twoVersions ${TARVELMON_CAN_CHOOSE})
endif()

# Sets the variable to the static libraries that some targets are made of, in any depth.
function(static_libraries variable)
  set(found "")
  set(waiting ${ARGN})
  while(waiting)
    list(POP_FRONT waiting target)
    if(TARGET ${target})
      get_target_property(type ${target} TYPE)
      if(type STREQUAL "STATIC_LIBRARY" AND NOT target IN_LIST found)
        list(APPEND found ${target})
        get_target_property(libraries ${target} LINK_LIBRARIES)
        list(APPEND waiting ${libraries})
      endif()
    endif()
  endwhile()
  set(${variable} ${found} PARENT_SCOPE)
endfunction()

# Compiles a library a second time, for newer processors, as LIBRARY-v3: one in which the time goes.
function(compile_for_newer_too library)
  if(twoVersions)
    get_target_property(sources ${library} SOURCES)
    get_target_property(libraries ${library} LINK_LIBRARIES)
    add_library(${library}-v3 OBJECT ${sources})
    target_include_directories(${library}-v3 PRIVATE $<TARGET_PROPERTY:${library},INCLUDE_DIRECTORIES>)
    target_link_libraries(${library}-v3 PRIVATE ${libraries})
    # No test links this code plainly.
    target_compile_options(${library}-v3 PRIVATE -fno-fat-lto-objects)
    set_target_properties(${library}-v3 PROPERTIES TARVELMON_X86_64_V3 ON)
  endif()
endfunction()

# Links the objects of some targets into one in which only mainForV2 or mainForV3 can be seen.
function(link_version object version)
  string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" flagsOfType)
  separate_arguments(flags NATIVE_COMMAND "${CMAKE_CXX_FLAGS} ${${flagsOfType}}")
  set(objects ${ARGN})
  list(TRANSFORM objects REPLACE "^.+$" "$<TARGET_OBJECTS:\\0>")
  add_custom_command(OUTPUT ${object}
    COMMAND ${CMAKE_CXX_COMPILER} ${flags} ${linkOneObject} ${objects} -o ${object}
    COMMAND ${CMAKE_OBJCOPY} --redefine-sym main=mainFor${version} --keep-global-symbol=mainFor${version}
      --rename-section .init_array=initialisersFor${version} ${object}
    DEPENDS ${ARGN} ${objects}
    COMMENT "Linking ${object}"
    COMMAND_EXPAND_LISTS VERBATIM)
endfunction()

# add_program(PROGRAM MAIN LIBRARY...): a program of one source and some libraries, in two versions.
function(add_program program main)
  if(NOT twoVersions)
    add_executable(${program} ${main})
    target_link_libraries(${program} PRIVATE ${ARGN})
    return()
  endif()
  add_library(${program}-main OBJECT ${main})
  target_link_libraries(${program}-main PRIVATE ${ARGN})
  static_libraries(libraries ${ARGN})
  set(newerLibraries "")
  foreach(library ${libraries})
    if(TARGET ${library}-v3)
      list(APPEND newerLibraries ${library}-v3)
    else()
      list(APPEND newerLibraries ${library})
    endif()
  endforeach()
  link_version(${program}-v2.o V2 ${program}-main ${libraries})
  link_version(${program}-v3.o V3 ${program}-main ${newerLibraries})
  add_executable(${program} ${chooseVersion} ${CMAKE_CURRENT_BINARY_DIR}/${program}-v2.o
    ${CMAKE_CURRENT_BINARY_DIR}/${program}-v3.o)
  target_link_libraries(${program} PRIVATE tarvelmon-options Threads::Threads)
  set_target_properties(${program} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
endfunction()
