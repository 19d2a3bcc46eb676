# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# The programs write their own manual. Sanitized ones are not run while they are built.
if(TARGET nqp2-worker AND NOT NQP2_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
    set(nqp2_manual "${CMAKE_CURRENT_BINARY_DIR}/man")
    add_custom_command(
        OUTPUT "${nqp2_manual}/made"
        COMMAND "${CMAKE_COMMAND}" -E rm -rf "${nqp2_manual}"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${nqp2_manual}"
        COMMAND nqp2 manual --to "${nqp2_manual}"
        COMMAND nqp2-worker --manual > "${nqp2_manual}/nqp2-worker.1"
        COMMAND "${CMAKE_COMMAND}" -E touch "${nqp2_manual}/made"
        DEPENDS nqp2 nqp2-worker
        VERBATIM)
    add_custom_target(nqp2-manual ALL DEPENDS "${nqp2_manual}/made")
    install(DIRECTORY "${nqp2_manual}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
            FILES_MATCHING PATTERN "*.1")
endif()
