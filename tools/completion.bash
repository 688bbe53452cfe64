# Bash completion for the command tessarin.

_tessarin() {
    local word=${COMP_WORDS[COMP_CWORD]} group=${COMP_WORDS[1]:-} action=${COMP_WORDS[2]:-} words=
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words="config table tab --help --version"
    elif [ "$COMP_CWORD" -eq 2 ]; then
        case $group in
            config) words="show get set add remove compile text diff --help" ;;
            table) words="show get json --help" ;;
            tab) words="show get --help" ;;
        esac
    elif [ "${COMP_WORDS[COMP_CWORD - 1]}" = --color ]; then
        words="auto always never"
    elif [ "${word:0:1}" = - ]; then
        case "$group $action" in
            "config show" | "table show") words="--json --color --depth --help" ;;
            "config get" | "table get") words="--json --fallback --help" ;;
            "config set" | "config remove") words="--output --help" ;;
            "config add") words="--output --table --array --parents --help" ;;
            "config compile") words="--tree --match --force --help" ;;
            "config diff") words="--json --help" ;;
            "tab show") words="--json --default-row --skip-first-line --skip-first-column --help" ;;
            "tab get") words="--json --fallback --default-row --skip-first-line --skip-first-column --help" ;;
            *) words="--help" ;;
        esac
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _tessarin tessarin
