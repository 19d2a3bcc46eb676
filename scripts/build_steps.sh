# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# Builds that are watched; sourced by the scripts beside it.

# Shows the last line of a build where there is a terminal, and every tenth step elsewhere.
show_steps() {
    local line
    while IFS= read -r line; do
        # A step that is told by its whole command: the file that it makes.
        [[ ! $line =~ ^(\[[0-9]+/[0-9]+\]).*\ -o\ ([^ ]+) ]] ||
            line="${BASH_REMATCH[1]} ${BASH_REMATCH[2]}"
        if [[ -t 1 ]]; then
            printf '\r\033[K%.*s' 78 "$line"
        elif [[ $line =~ ^\[[0-9]*0/ ]]; then
            printf '%s\n' "${line%% *}"
        fi
    done
    [[ ! -t 1 ]] || printf '\r\033[K'
}

# build_with_steps LOG COMMAND...: all that the command prints is in the log, whose end is shown
# when it fails. "set -e" does not hold in the command: a function joins its own by &&.
build_with_steps() {
    local log=$1
    shift
    if ! "$@" 2>&1 | tee "$log" | show_steps; then
        tail -n 60 "$log" >&2
        return 1
    fi
}
