# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# What only developers of this project need.

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Gives all_verify_interface_header_sets, which compiles every header alone.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
set(CMAKE_CXX_EXTENSIONS OFF)

find_program(NQP2_CCACHE ccache)
mark_as_advanced(NQP2_CCACHE)
if(NQP2_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${NQP2_CCACHE}")
endif()

if(NQP2_BUILD_TESTS)
    find_package(GTest REQUIRED)
    include(GoogleTest)
endif()
if(NQP2_BUILD_TESTS OR NQP2_BUILD_BENCH OR NQP2_BUILD_TOOLS)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
endif()
include(Nqp2Fuzz)
