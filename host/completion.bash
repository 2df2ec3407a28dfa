# Completion of survhost for bash.
_survhost() {
    local word=$2 words options='--help --no-color'
    case ${COMP_WORDS[1]} in
        replay) words="$options --pretty --json --summary" ;;
        demo) words="$options --all --json --examples" ;;
        import)
            case ${COMP_WORDS[2]} in
                span) words="$options --master --segment" ;;
                master) words="$options --closes" ;;
                var | exposure | mcx | bhavcopy) words="$options --master" ;;
                *) words='span var exposure mcx bhavcopy master --help' ;;
            esac
            ;;
        *) words="$options --version replay demo import" ;;
    esac
    case $3 in
        --segment) words='2 4 16 64' ;;
        --master | --closes | --examples) words= ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    # What isn't a word of the command is a file.
    ((${#COMPREPLY[@]})) || compopt -o default 2>/dev/null
}
complete -F _survhost survhost
