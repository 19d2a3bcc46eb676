# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT

# One fuzz target per foreign byte format:
#
#   nqp2_add_fuzzer(<name> SOURCES <.cpp>... COMPONENTS <component>... CORPUS <folder>
#                   [LIBRARIES <target>...] [DICTIONARY <file>]
#                   [FREE_MEMORY_MIB <number>] [MUTATIONS <number>])
#
# With NQP2_LIBFUZZER (preset "fuzz") the target is a libFuzzer program. In every other build it
# replays the corpus and a fixed number of mutations of it. Both are registered with ctest. Either
# ends when an input takes more memory than its size allows (fuzz/measured_input.cpp);
# FREE_MEMORY_MIB is for targets whose code takes buffers of a fixed size, MUTATIONS for slow ones.

option(NQP2_LIBFUZZER "Link the fuzz targets with libFuzzer (clang)" OFF)
set(NQP2_REPLAY_MUTATIONS 3000 CACHE STRING "Mutated inputs that a replay tries")
set(NQP2_FUZZ_LIMIT -max_total_time=20 CACHE STRING "When a libFuzzer program stops under ctest")

function(nqp2_add_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "CORPUS;DICTIONARY;FREE_MEMORY_MIB;MUTATIONS"
                          "SOURCES;COMPONENTS;LIBRARIES")
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "nqp2_add_fuzzer(${name}): unknown ${arg_UNPARSED_ARGUMENTS}")
    endif()
    set(target fuzz_${name})
    cmake_path(ABSOLUTE_PATH arg_CORPUS OUTPUT_VARIABLE corpus)
    add_executable(${target} ${arg_SOURCES} "${PROJECT_SOURCE_DIR}/fuzz/measured_input.cpp")
    nqp2_target_defaults(${target})
    # The target and the replay are two programs' worth of main file.
    set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
    target_include_directories(${target} PRIVATE ${nqp2_include_folders} "${PROJECT_SOURCE_DIR}")
    nqp2_use_components(${target} ${arg_COMPONENTS})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES})
    if(arg_FREE_MEMORY_MIB)
        target_compile_definitions(${target}
                                   PRIVATE NQP2_FREE_MEMORY_MIB=${arg_FREE_MEMORY_MIB})
    endif()
    if(NQP2_LIBFUZZER)
        target_link_options(${target} PRIVATE -fsanitize=fuzzer)
        set(found "${CMAKE_CURRENT_BINARY_DIR}/${name}-found")
        file(MAKE_DIRECTORY "${found}")
        set(options ${NQP2_FUZZ_LIMIT} -timeout=10 -rss_limit_mb=1024
                    -print_final_stats=1)
        if(arg_MUTATIONS)
            list(APPEND options -runs=${arg_MUTATIONS})
        endif()
        if(arg_DICTIONARY)
            cmake_path(ABSOLUTE_PATH arg_DICTIONARY OUTPUT_VARIABLE dictionary)
            list(APPEND options -dict=${dictionary})
        endif()
        # The first folder takes what is found, so that the corpus stays as it is.
        add_test(NAME fuzz.${name} COMMAND ${target} ${options} "${found}" "${corpus}")
    else()
        target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp")
        set(mutations ${NQP2_REPLAY_MUTATIONS})
        if(arg_MUTATIONS AND arg_MUTATIONS LESS mutations)
            set(mutations ${arg_MUTATIONS})
        endif()
        add_test(NAME fuzz.${name} COMMAND ${target} "${corpus}" ${mutations})
    endif()
    set_tests_properties(fuzz.${name} PROPERTIES TIMEOUT 300 LABELS fuzz)
endfunction()
