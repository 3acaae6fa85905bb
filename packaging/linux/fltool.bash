# bash completion for fltool
_fltool() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
    local revisions='1420 1500 1510 1520 1530 1540 1550 1560 1570 1580 1600 1610 1620 1630 1640 1650 1660'
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W 'dump check convert stats report --help --version' -- "$word")
    elif [ "$before" = --revision ]; then
        mapfile -t COMPREPLY < <(compgen -W "$revisions" -- "$word")
    elif [ "$before" = --lang ]; then
        mapfile -t COMPREPLY < <(compgen -W 'en zh' -- "$word")
    elif [ "$before" = --opcode ]; then
        return
    elif [[ $before == -o || $before == --output || $before == --kilnbatch ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ $word == -* ]]; then
        local options=--help
        case $command in
        dump) options='--help --json --opcode' ;;
        check) options='--help --target --json' ;;
        convert) options='--help --revision' ;;
        report) options='--help --output --lang --target --json --no-pictures --kilnbatch' ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.[fF][lL][tT]' -- "$word")
    fi
}
complete -F _fltool fltool
