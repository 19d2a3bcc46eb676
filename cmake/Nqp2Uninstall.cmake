# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# Removes what the last `cmake --install` of a build folder has installed, and folders that are
# empty then: cmake -D MANIFEST=<install_manifest.txt> -P Nqp2Uninstall.cmake

if(NOT EXISTS "${MANIFEST}")
    message(FATAL_ERROR "Nothing was installed from here: there is no ${MANIFEST}")
endif()
file(STRINGS "${MANIFEST}" files)
foreach(file IN LISTS files)
    set(path "$ENV{DESTDIR}${file}")
    if(EXISTS "${path}" OR IS_SYMLINK "${path}")
        file(REMOVE "${path}")
        message(STATUS "Removed: ${path}")
    endif()
    cmake_path(GET path PARENT_PATH folder)
    # Those that bear our name alone: others' stay though empty.
    while(folder MATCHES "/(nqp2|NQP2ParserU)(/|$)")
        execute_process(COMMAND rmdir "${folder}" RESULT_VARIABLE left ERROR_QUIET)
        if(left)
            break()
        endif()
        cmake_path(GET folder PARENT_PATH folder)
    endwhile()
endforeach()
