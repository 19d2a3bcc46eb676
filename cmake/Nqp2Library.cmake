# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# The shared library: all components in one file that exports what NQP2_API marks.

get_property(nqp2_components GLOBAL PROPERTY NQP2_COMPONENTS)
get_property(nqp2_exported_headers GLOBAL PROPERTY NQP2_EXPORTED_HEADERS)

add_library(NQP2ParserU SHARED)
add_library(NQP2ParserU::NQP2ParserU ALIAS NQP2ParserU)
nqp2_target_defaults(NQP2ParserU)
nqp2_use_components(NQP2ParserU ${nqp2_components})
target_sources(NQP2ParserU PUBLIC FILE_SET HEADERS BASE_DIRS "${nqp2_public_headers}"
                                  FILES ${nqp2_exported_headers})
set_target_properties(
    NQP2ParserU
    PROPERTIES LINKER_LANGUAGE CXX
               VERSION ${PROJECT_VERSION}
               # Before 1.0 each minor version may change the interface.
               SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
               LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/exports.map")
target_link_options(NQP2ParserU PRIVATE
                    "LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
if(NOT NQP2_SANITIZE)
    # A sanitizer's run time is found in the program, not in the library.
    target_link_options(NQP2ParserU PRIVATE LINKER:--no-undefined)
endif()
