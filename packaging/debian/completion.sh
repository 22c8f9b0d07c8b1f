# shellcheck shell=bash
# Completion of velm's command lines in bash. The commands and options are those that --help prints.
_velm() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} commands command='' word choices
    commands=$("$program" --help 2>/dev/null | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p')
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if grep -qx -- "$word" <<<"$commands"; then command=$word; break; fi
    done
    if [[ $current = -* ]]; then
        choices=$("$program" ${command:+"$command"} --help 2>/dev/null |
            grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -e '--[a-z-]+')
    elif [ -z "$command" ] && [ "${COMP_WORDS[COMP_CWORD - 1]}" != --module ]; then
        choices=$commands
    else
        return # -o default completes the names of files
    fi
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
}
complete -o default -F _velm velm
