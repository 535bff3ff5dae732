# Completes the calls of kontodb in bash. Made from Help.cpp by make-pages.py; do not edit.

_kontodb() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} options=
    COMPREPLY=()
    if [ "$COMP_CWORD" = 1 ]; then
        compopt +o default
        COMPREPLY=($(compgen -W 'create check tables schema query exec import backup compact repair help --help --version' -- "$word"))
        return
    fi
    case $before in --accounts|--null|--password|--seed|--separator)
        compopt +o default
        return ;;
    esac
    case ${COMP_WORDS[1]} in
        help)
            compopt +o default
            COMPREPLY=($(compgen -W 'create check tables schema query exec import backup compact repair sql' -- "$word"))
            return ;;
        create) options='--accounts --help --password --password-file --seed' ;;
        check) options='--help --notes --password --password-file' ;;
        tables) options='--help --json --password --password-file' ;;
        schema) options='--help --json --password --password-file --sql' ;;
        query) options='--bom --csv --decimal-comma --help --json --no-header --null --password --password-file --separator' ;;
        exec) options='--all --dry-run --file --help --password --password-file' ;;
        import) options='--dry-run --help --password --password-file' ;;
        backup) options='--help --password --password-file' ;;
        compact) options='--help --password --password-file' ;;
        repair) options='--help --password --password-file' ;;
    esac
    # Everything else is the name of a file.
    case $word in -*)
        compopt +o default
        COMPREPLY=($(compgen -W "$options" -- "$word")) ;;
    esac
}
complete -o bashdefault -o default -F _kontodb kontodb
