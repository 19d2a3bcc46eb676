# shellcheck shell=bash disable=SC2154
# SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
# SPDX-License-Identifier: MIT
#
# Output folders of the scripts beside it, which source it, and arguments.sh before it, from the top
# of the tree. What is made anew loses all that it held, so it must have been ours: it bears the
# mark of an earlier run, or is the place in build/ that a script takes by itself.
mark=.made-by-NQP2ParserU

# whole_path PATH: what the caller means, who may stand elsewhere than at the top of the tree.
whole_path() {
    (cd "$OLDPWD" && realpath -m -- "$1")
}

# own_folder PATH DEFAULT: prints the whole path of the folder that is to be made anew, which for an
# empty PATH is the default. Ends the script where somebody else's files would be lost.
own_folder() {
    local top folder
    top=$(realpath .)
    folder=$top/$2
    [[ -z $1 ]] || folder=$(whole_path "$1")
    if [[ -e $folder && ! -d $folder ]]; then
        refuse "$folder: is no folder"
    elif [[ $top/ == "${folder%/}"/* ]]; then
        refuse "$folder: is not made anew: this source tree is in it"
    elif [[ $folder != "$top/$2" && -d $folder && ! -e $folder/$mark ]] &&
        [[ -n $(ls -A -- "$folder") ]]; then
        refuse "$folder: is not made anew: it holds files that no run of $script has made;" \
            "name a new or empty folder"
    fi
    printf '%s\n' "$folder"
}

# make_anew FOLDER: one that own_folder has told. The mark comes first and stays, so that a run that
# is ended leaves none without it.
make_anew() {
    mkdir -p "$1"
    : >"$1/$mark"
    find "$1" -mindepth 1 -maxdepth 1 ! -name "$mark" -exec rm -rf {} +
}
