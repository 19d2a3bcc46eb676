# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# fish completion for nqp2, which is asked for what may follow.

function __nqp2_offers
    set -l words (commandline --current-process --tokenize --cut-at-cursor)
    set -l current (commandline --current-token --cut-at-cursor)
    set -l lines ($words[1] complete -- $words[2..-1] $current 2>/dev/null)
    set -l value (string replace --regex '^.*=' '' -- $current)
    set -l before (string replace --regex '[^=]*$' '' -- $current)
    switch $lines[1]
        case folders
            for folder in (__fish_complete_directories $value)
                echo -- $before$folder
            end
        case files
            for file in (__fish_complete_path $value)
                echo -- $before$file
            end
        case '*'
            for line in $lines[2..-1]
                echo -- $before$line
            end
    end
end

complete --command nqp2 --no-files --arguments '(__nqp2_offers)'
