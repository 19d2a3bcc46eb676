# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# What only developers of this project need.

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    # Gives all_verify_interface_header_sets, which compiles every header alone.
    set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
    set(CMAKE_CXX_EXTENSIONS OFF)

    find_program(NQP2_CCACHE ccache)
    mark_as_advanced(NQP2_CCACHE)
    if(NQP2_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${NQP2_CCACHE}")
    endif()
endif()

# Found here and not in the folders: an imported target is seen from its own folder down only.
if(NQP2_BUILD_TOOLS)
    find_package(CLI11 2.1 REQUIRED)
    find_package(nlohmann_json 3.11 REQUIRED)
    find_package(fmt 9 REQUIRED)
endif()
if(NQP2_BUILD_TOOLS OR NQP2_BUILD_FUZZ)
    find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
endif()
if(NQP2_BUILD_TOOLS OR NQP2_BUILD_WORKER OR NQP2_BUILD_FUZZ)
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)
endif()
if(NQP2_BUILD_TOOLS OR NQP2_BUILD_FUZZ)
    pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)
endif()
if(NQP2_BUILD_TOOLS)
    pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
    pkg_check_modules(SQLITE3 REQUIRED IMPORTED_TARGET sqlite3>=3.35)
    # Without it the catalogue does without that server, and says so.
    pkg_check_modules(LIBPQ IMPORTED_TARGET libpq>=14)
endif()
if(NQP2_BUILD_WORKER)
    pkg_check_modules(AVFORMAT REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil
                      libswscale)
    pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
    pkg_check_modules(BLKID REQUIRED IMPORTED_TARGET blkid)
    pkg_check_modules(UDEV REQUIRED IMPORTED_TARGET libudev)
endif()
if(NQP2_BUILD_TESTS)
    find_package(GTest REQUIRED)
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    include(GoogleTest)
endif()
if(NQP2_BUILD_FUZZ)
    include(Nqp2Fuzz)
endif()
