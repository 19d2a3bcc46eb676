# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

set(nqp2_completion "${CMAKE_CURRENT_LIST_DIR}")
install(FILES "${nqp2_completion}/nqp2.bash"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
        RENAME nqp2)
install(FILES "${nqp2_completion}/_nqp2"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES "${nqp2_completion}/nqp2.fish"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
