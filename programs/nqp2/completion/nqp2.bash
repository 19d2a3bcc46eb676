# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# bash completion for nqp2, which is asked for what may follow.

_nqp2() {
    local words=() word kind line i current which gap rest=$COMP_LINE
    COMPREPLY=()
    # Bash takes "=" and ":" for words of their own: --drive E=/media is "--drive" "E" "=" "/media".
    # What has no blank before it belongs to what stands there.
    for ((i = 0; i <= COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        gap=${rest%%[![:space:]]*}
        rest=${rest#"$gap"}
        rest=${rest#"$word"}
        if [[ -z $gap ]] && ((i > 1)); then
            words[-1]+=$word
        elif ((i > 0)); then
            words+=("$word")
        fi
    done
    current=${words[-1]}
    current=${current##*=}
    {
        IFS= read -r kind
        case $kind in
            folders | files)
                compopt -o filenames 2>/dev/null
                which=-f
                [[ $kind == folders ]] && which=-d
                mapfile -t COMPREPLY < <(compgen "$which" -- "$current")
                ;;
            *)
                while IFS= read -r line; do
                    printf -v word '%q' "${line%%$'\t'*}"
                    COMPREPLY+=("$word")
                done
                ;;
        esac
    } < <("${COMP_WORDS[0]}" complete --typed -- "${words[@]}" 2>/dev/null)
}

complete -F _nqp2 nqp2
