# bash completion for kilnbatch
_kilnbatch() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} pattern='!*.ks'
    local options='-e --scene --import --export --revision --database --check --report --search --plugins --max-steps --undoable --verbs
                   --help --version'
    local revisions='1420 1500 1510 1520 1530 1540 1550 1560 1570 1580 1600 1610 1620 1630 1640 1650 1660'
    COMPREPLY=()
    if [ "${COMP_WORDS[1]}" = batch ] && [ "$COMP_CWORD" -gt 1 ]; then
        options='--script --check --check-source --no-export --revision --search --max-steps --list --jobs --time-limit --memory-limit --report --help'
        pattern='!*.[fF][lL][tT]'
    fi
    case $before in
    -e | --database | --max-steps | --jobs | --time-limit | --memory-limit) return ;;
    --check | --report) pattern='!*.json*' ;;
    --script) pattern='!*.ks' ;;
    --list) pattern= ;;
    --revision)
        mapfile -t COMPREPLY < <(compgen -W "$revisions" -- "$word")
        return
        ;;
    --scene) pattern='!*.kiln' ;;
    --import | --export) pattern='!*.[fF][lL][tT]' ;;
    --plugins | --search) pattern='*' ;;
    *)
        if [[ $word == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
            return
        fi
        ;;
    esac
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <([ "$COMP_CWORD" -gt 1 ] || compgen -W batch -- "$word"
        compgen -d -- "$word"; compgen -f -X "$pattern" -- "$word")
}
complete -F _kilnbatch kilnbatch
