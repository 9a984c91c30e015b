# Completes retention_inspector's command line in bash: source it, or install it as
# /usr/share/bash-completion/completions/retention_inspector.
_retention_inspector() {
    local commands="layout show check migrate diff wear map export import compare report"
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local options="--format --table --quiet --help" projects=0 i
    COMPREPLY=()
    compopt -o filenames 2>/dev/null

    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands help --help --version" -- "$word")
        return
    fi
    if [ "$command" = help ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
        return
    fi
    case $before in
    --format)
        mapfile -t COMPREPLY < <(compgen -W "text json csv" -- "$word")
        return ;;
    --area)
        mapfile -t COMPREPLY < <(compgen -W "LB LW RWI" -- "$word")
        return ;;
    -o | --output | --tags | --directory)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return ;;
    --medium)
        mapfile -t COMPREPLY < <(compgen -W "sd emmc nor nand" -- "$word")
        return ;;
    --table)
        mapfile -t COMPREPLY < <(
            compgen -W "files blocks entries cells values changes panels differences days limits writes dropped moves findings facts all" -- "$word")
        return ;;
    --address | --entry | --move | --changes-per-hour | --endurance-cycles | --capacity | --erase-block | --page | \
        --file-system-pages | --sync-erasures | --years | --measure)
        return ;;
    esac
    case $command in
    show) options+=" --area --address --entry --nonzero --hex --watch --tags" ;;
    compare | diff) options+=" --tags" ;;
    migrate) options+=" --output --move --by-name --force" ;;
    wear) options+=" --medium --changes-per-hour --endurance-cycles --capacity --erase-block --page --file-system-pages --sync-erasures --years --measure --directory" ;;
    map) options+=" --output --force" ;;
    export) options+=" --output --tags --nonzero --force" ;;
    report) options+=" --output --tags --title --date --medium --changes-per-hour --force" ;;
    import) options+=" --output" ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    # Projects come first, one or, for migrate, two; then, for import, a table; then directories.
    for ((i = 2; i < COMP_CWORD; ++i)); do
        [[ ${COMP_WORDS[i]} == *.xml ]] && projects=$((projects + 1))
    done
    if [ "$command" = import ] && [ "$projects" -eq 1 ] && [[ ${COMP_WORDS[COMP_CWORD - 1]} == *.xml ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.csv' -- "$word")
    elif [ "$projects" -ge "$([ "$command" = migrate ] && echo 2 || echo 1)" ]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.xml' -- "$word")
    fi
}
complete -F _retention_inspector retention_inspector
