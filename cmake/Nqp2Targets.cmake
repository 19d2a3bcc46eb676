# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# The building blocks of every folder's CMakeLists.txt.
#
#   nqp2_add_component(<name> SOURCES <.cpp>... EXPORTED <.h>... INTERNAL <.h>...
#                      DEPENDS <component>... LIBRARIES <external target>...)
#   nqp2_use_components(<target> <component>...)
#   nqp2_add_tests(<name> SOURCES <.cpp>... COMPONENTS <component>... LIBRARIES <target>...)
#   nqp2_add_folders(<folder>...)
#   nqp2_add_rooms(<folder of library/>...)
#
# A component is the object library nqp2_<name>. Object files do not travel through other object
# libraries, so whatever links components links everything that they depend on as well.

set(NQP2_SANITIZE "" CACHE STRING "Sanitizers for all targets, as -fsanitize= takes them")
option(NQP2_COVERAGE "Instrument all targets for gcov" OFF)

# What the library itself and everything that is built from its components sees.
set(nqp2_public_headers "${PROJECT_SOURCE_DIR}/include")
set(nqp2_include_folders "${nqp2_public_headers}" "${PROJECT_SOURCE_DIR}/library"
                         "${PROJECT_SOURCE_DIR}/programs")

# Language level, visibility, warnings and instrumentation, the same for every target.
function(nqp2_target_defaults target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(
        ${target}
        PROPERTIES CXX_EXTENSIONS OFF
                   CXX_VISIBILITY_PRESET hidden
                   VISIBILITY_INLINES_HIDDEN ON
                   POSITION_INDEPENDENT_CODE ON)
    if(PROJECT_IS_TOP_LEVEL)
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                 -Wsign-conversion
                                                 # g++ 12 warns of its own std::string (bug 105651).
                                                 $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
        target_compile_definitions(${target} PRIVATE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
    endif()
    if(NQP2_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${NQP2_SANITIZE}
                                                 -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${NQP2_SANITIZE})
    endif()
    if(NQP2_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage)
        target_link_options(${target} PRIVATE --coverage)
    endif()
endfunction()

function(nqp2_add_component name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;EXPORTED;INTERNAL;DEPENDS;LIBRARIES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "nqp2_add_component(${name}): unknown ${arg_UNPARSED_ARGUMENTS}")
    endif()
    set(target nqp2_${name})
    add_library(${target} OBJECT ${arg_SOURCES})
    nqp2_target_defaults(${target})
    list(TRANSFORM arg_EXPORTED PREPEND "${nqp2_public_headers}/NQP2ParserU/")
    target_include_directories(${target} PUBLIC ${nqp2_include_folders})
    # Listed as a header set so that each header, internal ones too, is compiled alone.
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${nqp2_include_folders}
                                    FILES ${arg_EXPORTED} ${arg_INTERNAL})
    target_compile_definitions(${target} PRIVATE NQP2_BUILDING)
    # Public within this build only: a component's internal headers may need them.
    target_link_libraries(${target} PUBLIC ${arg_LIBRARIES})

    set(closure ${name})
    foreach(component IN LISTS arg_DEPENDS)
        get_target_property(below nqp2_${component} NQP2_CLOSURE)
        list(APPEND closure ${below})
    endforeach()
    list(REMOVE_DUPLICATES closure)
    set_target_properties(${target} PROPERTIES NQP2_CLOSURE "${closure}")

    set_property(GLOBAL APPEND PROPERTY NQP2_EXPORTED_HEADERS ${arg_EXPORTED})
    set_property(GLOBAL APPEND PROPERTY NQP2_COMPONENTS ${name})
endfunction()

# Links the objects of the components and of all that they depend on.
function(nqp2_use_components target)
    set(closure)
    foreach(component IN LISTS ARGN)
        get_target_property(below nqp2_${component} NQP2_CLOSURE)
        list(APPEND closure ${below})
    endforeach()
    list(REMOVE_DUPLICATES closure)
    list(TRANSFORM closure PREPEND nqp2_)
    target_link_libraries(${target} PRIVATE ${closure})
endfunction()

function(nqp2_add_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;COMPONENTS;LIBRARIES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "nqp2_add_tests(${name}): unknown ${arg_UNPARSED_ARGUMENTS}")
    endif()
    set(target nqp2_${name}_tests)
    add_executable(${target} ${arg_SOURCES})
    nqp2_target_defaults(${target})
    target_include_directories(${target} PRIVATE ${nqp2_include_folders} "${PROJECT_SOURCE_DIR}")
    nqp2_use_components(${target} ${arg_COMPONENTS})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} GTest::gmock_main)
    gtest_discover_tests(${target} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
                         PROPERTIES TIMEOUT 120)
endfunction()

function(nqp2_add_rooms)
    list(TRANSFORM ARGN PREPEND library/)
    nqp2_add_folders(${ARGN})
endfunction()

function(nqp2_add_folders)
    foreach(folder IN LISTS ARGN)
        add_subdirectory(${folder})
    endforeach()
endfunction()
