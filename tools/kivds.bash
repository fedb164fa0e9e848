# Completion of kivds for bash; installed as share/bash-completion/completions/kivds.
_kivds() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} options=--help
    COMPREPLY=()
    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'import dump diff frames series check --help' -- "$word")
        return
    fi
    case $command in
    import) options+=' -o' ;;
    dump) options+=' --json' ;;
    frames) options+=' --frame -o' ;;
    esac
    if [[ $before == --frame ]]; then
        return
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $command == series || $command$before == frames-o ]]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        compopt -o filenames 2>/dev/null
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        compopt -o filenames 2>/dev/null
    fi
}
complete -F _kivds kivds
