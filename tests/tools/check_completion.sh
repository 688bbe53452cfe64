#!/usr/bin/env bash
# Completion offers just what the command takes, by its own help: check_completion.sh COMMAND TOOLS
set -euo pipefail
. "$2/completion.bash"

offered() {
    COMP_WORDS=(tessarin "$@")
    COMP_CWORD=$#
    _tessarin
    printf '%s\n' "${COMPREPLY[@]}" | sort
}
# Options in their long spelling, and commands, as the help of a level lists them.
options() { "$command" "$@" --help | sed -n '/^Options:/,$p' | grep -oE '^ +(-.,)?--?[a-z-]+(,--[a-z-]+)?' | grep -oE -- '--[a-z-]+' | sort; }
commands() { "$command" "$@" --help | sed -n '/^Subcommands:/,$p' | sed -nE 's/^  ([a-z]+).*/\1/p' | sort; }

command=$1
failed=0
same() {
    [ "$2" = "$3" ] && return
    printf '%s offers\n%s\nbut takes\n%s\n' "$1" "$2" "$3"
    failed=1
}
same tessarin "$(offered '' | grep -v -- --)" "$(commands)"
for group in $(commands); do
    same "$group" "$(offered "$group" '' | grep -v -- --)" "$(commands "$group")"
    for action in $(commands "$group"); do
        same "$group $action" "$(offered "$group" "$action" -)" "$(options "$group" "$action")"
    done
done
exit $failed
