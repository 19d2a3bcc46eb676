# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

include(CMakePackageConfigHelpers)

set(nqp2_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/NQP2ParserU")

install(
    TARGETS NQP2ParserU
    EXPORT NQP2ParserU
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(PROJECT_IS_TOP_LEVEL)
    add_custom_target(
        uninstall
        COMMAND "${CMAKE_COMMAND}" -D "MANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt" -P
                "${PROJECT_SOURCE_DIR}/cmake/Nqp2Uninstall.cmake"
        VERBATIM)
endif()
install(EXPORT NQP2ParserU NAMESPACE NQP2ParserU:: FILE NQP2ParserUTargets.cmake
        DESTINATION "${nqp2_package_dir}")

configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/packaging/NQP2ParserUConfig.cmake.in" NQP2ParserUConfig.cmake
    INSTALL_DESTINATION "${nqp2_package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(NQP2ParserUConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/NQP2ParserUConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/NQP2ParserUConfigVersion.cmake"
        DESTINATION "${nqp2_package_dir}")

# From the .pc file back to the prefix, so that an installed tree can be moved.
file(RELATIVE_PATH nqp2_pc_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
     "${CMAKE_INSTALL_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/packaging/NQP2ParserU.pc.in" NQP2ParserU.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/NQP2ParserU.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
