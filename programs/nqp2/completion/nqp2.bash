# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# bash completion for nqp2: commands, their options, card folders and clip names.

# Names of a card's files that match patterns below it.
_nqp2_titles() {
    local card=$1 pattern file nocase IFS=
    nocase=$(shopt -p nocaseglob nullglob)
    shopt -s nocaseglob nullglob
    # Only names with a pattern in them are compared without regard to case.
    for pattern in "${@:2}"; do
        for file in "$card"/$pattern; do
            file=${file##*/}
            [[ $file == ._* ]] || printf '%s\n' "${file%.*}"
        done
    done
    eval "$nocase"
}

_nqp2_clip_names() {
    _nqp2_titles "$1" '[c]ontents/[c]lip/*.xml'
}

_nqp2_list_names() {
    _nqp2_titles "$1" '[c]ontents/[e]ditlist/*.xml' '[e]ditlist/*.xml' '[a]vchd/[b]dmv/[p]laylist/*.mpl' \
        '[p]rivate/[a]vchd/[b]dmv/[p]laylist/*.mpl' '[b]dmv/[p]laylist/*.mpls'
}

# Fills COMPREPLY with folders, names with spaces kept whole.
_nqp2_folders() {
    local folder
    compopt -o filenames 2>/dev/null
    while IFS= read -r folder; do
        COMPREPLY+=("$folder")
    done < <(compgen -d -- "$1")
}

_nqp2_words() {
    local word
    while IFS= read -r word; do
        COMPREPLY+=("$word")
    done < <(compgen -W "$1" -- "$2")
}

_nqp2() {
    local global='--help --verbose --drive'
    local -A options=(
        [clips]='--recursive --json --jsonl --csv --columns --sort --report --files --metadata --keep-digit
            --strict --worker'
        [clip]='--json'
        [format]='--json --csv'
        [umid]=''
        [free-name]=''
        [space]='--bytes --code-type --standard --audio24 --frames --json'
        [edl]=''
        ['edl list']='--json --csv --strict'
        ['edl write']='--name'
        [ingest]=''
        ['ingest list']='--json --csv'
        ['ingest add']=''
        ['ingest remove']=''
        [playlists]='--json --csv --strict'
        [import]='--to --all --clip --take --no-take --incomplete --json --progress --quiet --worker'
        [export]='--to --incomplete --json --progress --quiet --worker'
        [delete]='--yes --dry-run --worker'
        [icon]='--worker'
        [serial]='--json --worker'
        [base-info]='--json --worker'
        [rt-export]='--code-type --sound --bare --channels --bits --name --title --timecode --drop-frame
            --wide --json --progress --quiet --worker'
        [report]='--output --recursive --worker'
        [timeline]='--output --form --bin --relative --media --audio --start-timecode --drop-frame --no-memos
            --strict --worker'
        [offload]='--to --name --hash --sums --copies --no-verify-source --log --dry-run --json --progress
            --quiet'
        [seal]='--hash --json --progress --quiet'
        [verify]='--append --json --progress --quiet'
        [last-error]='--json --worker'
        [catalog]=''
        ['catalog add']='--recursive --label --db --json'
        ['catalog update']='--db --json'
        ['catalog cards']='--db --json'
        ['catalog search']='--from --to --camera --codec --rate --state --sort --limit --db --json'
        ['catalog show']='--db --json'
        ['catalog remove']='--db --json'
        ['catalog export']='--jsonl --csv --db'
    )
    local -A groups=([edl]='list write' [ingest]='list add remove'
        [catalog]='add update cards search show remove export')
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command='' card='' operand='' from='' areCards='' word i
    COMPREPLY=()

    # "=" is a word of its own: --drive E=/media is "--drive" "E" "=" "/media".
    if [[ $current == '=' ]]; then
        current=''
        previous='='
    fi
    if [[ " ${COMP_WORDS[*]} " == *' catalog '* ]]; then
        case $previous in
            --sort) _nqp2_words 'newest oldest name' "$current"; return ;;
            --state) _nqp2_words 'incomplete missing-segment not-ingested one-copy' "$current"; return ;;
            --from | --to) return ;;
        esac
    fi
    case $previous in
        --columns) _nqp2_words 'default all' "$current"; return ;;
        --sort) _nqp2_words 'name date none' "$current"; return ;;
        --to | --from) _nqp2_folders "$current"; return ;;
        --worker | --sound | --log | --output | -o | --db) compopt -o default 2>/dev/null; return ;;
        --drive | --bytes | --code-type | --frames | --name | --channels | --bits | --title | \
            --timecode | --start-timecode | --copies | --label | --camera | --codec | --rate | --limit) return ;;
        --hash) _nqp2_words 'xxh128 xxh3 xxh64 md5 sha1 c4' "$current"; return ;;
        --form) _nqp2_words 'otio edl xml ale' "$current"; return ;;
        -f)
            [[ " ${COMP_WORDS[*]} " == *' timeline '* ]] && _nqp2_words 'otio edl xml ale' "$current"
            return
            ;;
        --media) _nqp2_words 'original proxy' "$current"; return ;;
        --audio) _nqp2_words 'files card none' "$current"; return ;;
        --sums) _nqp2_words 'md5' "$current"; return ;;
        --progress) _nqp2_words 'bar lines json' "$current"; return ;;
        --standard)
            _nqp2_words 'VS_5994I VS_50I VS_60I VS_5994P VS_50P VS_60P VS_2398P' "$current"
            return
            ;;
        '=') _nqp2_folders "$current"; return ;;
    esac

    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
            --from) from=${COMP_WORDS[++i]} ;;
            --all) areCards=1 ;;
            --clip) areCards=1; ((++i)) ;;
            --sort | --columns | --bytes | --code-type | -f | --standard | --frames | --name | --to | --worker | \
                --output | -o | --sound | --channels | --bits | --title | --timecode | --hash | --sums | --copies | \
                --label | --camera | --codec | --rate | --state | --limit | --db | --log | --progress | --form | --media | --audio | --start-timecode) ((++i)) ;;
            --drive) ((i += 3)) ;;
            -*) ;;
            *)
                if [[ -z $command ]]; then
                    command=$word
                elif [[ -n ${groups[$command]-} ]]; then
                    command+=" $word"
                elif [[ -z $card ]]; then
                    card=$word
                else
                    operand=$word
                fi
                ;;
        esac
    done

    if [[ $previous == --clip ]]; then
        _nqp2_words "$(_nqp2_clip_names "$card")" "$current"
    elif [[ -z $command ]]; then
        if [[ $current == -* ]]; then
            _nqp2_words "$global --version" "$current"
        else
            _nqp2_words 'clips clip format umid free-name space edl ingest playlists import export
                delete icon serial base-info rt-export report offload seal verify timeline
                catalog last-error' "$current"
        fi
    elif [[ $current == -* ]]; then
        _nqp2_words "${options[$command]-} $global" "$current"
    elif [[ -n ${groups[$command]-} ]]; then
        _nqp2_words "${groups[$command]}" "$current"
    elif [[ $command == umid || $command == last-error ]]; then
        return
    elif [[ $command == base-info ]]; then
        compopt -o default 2>/dev/null
    elif [[ -z $card || $command == clips || $command == report || -n $areCards ]]; then
        _nqp2_folders "$current"
    elif [[ $command == offload || $command == seal || $command == verify ]]; then
        return
    elif [[ $command == timeline ]]; then
        _nqp2_words "$(_nqp2_list_names "$card")" "$current"
    elif [[ $command == import || $command == delete ]]; then
        _nqp2_words "$(_nqp2_clip_names "$card")" "$current"
    elif [[ $command == export ]]; then
        _nqp2_words "$(_nqp2_clip_names "${from:-$card}")" "$current"
    elif [[ -n $operand ]]; then
        if [[ $command == icon ]]; then
            compopt -o default 2>/dev/null
        fi
    elif [[ $command == 'edl write' || $command == rt-export ]]; then
        compopt -o default 2>/dev/null
    elif [[ $command == clip || $command == icon || $command == 'ingest add' || $command == 'ingest remove' ]]; then
        _nqp2_words "$(_nqp2_clip_names "$card")" "$current"
    fi
}

complete -F _nqp2 nqp2
