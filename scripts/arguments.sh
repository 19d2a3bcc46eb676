# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# Arguments of the scripts beside it, which source it from the top of the tree.
script=${0##*/}

refuse() {
    echo "$script: $*" >&2
    exit 2
}

# answer_help ARGUMENT...: where help is among them, prints the comment at the script's head and
# ends.
answer_help() {
    local argument
    for argument; do
        if [[ $argument == -h || $argument == --help ]]; then
            sed -n '5,${/^#/!q;s/^# \{0,1\}//p}' "scripts/$script"
            exit 0
        fi
    done
}

# Prints the line at the head that tells what the script needs.
tell_needs() {
    sed -n "s/^# Needs /$script: needs /p" "scripts/$script"
}

# check_arguments MOST OPTIONS ARGUMENT...: at most so many that are no options, and no option that
# is not among these words.
check_arguments() {
    local most=$1 known=$2 argument others=0
    shift 2
    answer_help "$@"
    for argument; do
        if [[ $argument != -* ]]; then
            others=$((others + 1))
        elif [[ " $known " != *" $argument "* ]]; then
            refuse "$argument: is no option; scripts/$script --help tells what there is"
        fi
    done
    ((others <= most)) || refuse "${*: -1}: too many arguments; scripts/$script --help tells which"
}
