# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# bash completion for nqp2, which is asked for what may follow.

_nqp2() {
    local words=() word kind line i current which
    COMPREPLY=()
    # Bash takes "=" for a word of its own: --drive E=/media is "--drive" "E" "=" "/media".
    for ((i = 1; i <= COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == '=' || ${COMP_WORDS[i - 1]} == '=' ]] && ((${#words[@]} > 0)); then
            words[-1]+=$word
        else
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
