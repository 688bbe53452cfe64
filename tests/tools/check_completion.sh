#!/usr/bin/env bash
# Checks that completion suggests exactly the commands and options that the command's own help lists:
# check_completion.sh COMMAND TOOLS
set -euo pipefail
. "$2/completion.bash"

suggested() {
    COMP_WORDS=(tessarin "$@")
    COMP_CWORD=$#
    _tessarin
    printf '%s\n' "${COMPREPLY[@]}" | sort
}
# The long options and the commands that the help of a level lists.
options() {
    "$command" "$@" --help | sed -n '/^Options:/,$p' | grep -oE '^ +(-.,)?--?[a-z-]+(,--[a-z-]+)?' |
        grep -oE -- '--[a-z-]+' | sort
}
commands() { "$command" "$@" --help | sed -n '/^Subcommands:/,$p' | sed -nE 's/^  ([a-z]+).*/\1/p' | sort; }

command=$1
failed=0
same() {
    [ "$2" = "$3" ] && return
    printf '%s: completion suggests\n%s\nbut help lists\n%s\n' "$1" "$2" "$3"
    failed=1
}
same tessarin "$(suggested '' | grep -v -- --)" "$(commands)"
for group in $(commands); do
    same "$group" "$(suggested "$group" '' | grep -v -- --)" "$(commands "$group")"
    for action in $(commands "$group"); do
        same "$group $action" "$(suggested "$group" "$action" -)" "$(options "$group" "$action")"
    done
done
exit $failed
