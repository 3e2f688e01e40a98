# bash completion of PacoteWKD
_pacotewkd() {
    local atual=${COMP_WORDS[COMP_CWORD]} opcoes=
    COMPREPLY=()
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --forma) COMPREPLY=($(compgen -W 'xml binario jsonl' -- "$atual")) && return ;;
        --pasta) COMPREPLY=($(compgen -d -- "$atual")) && return ;;
    esac
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W 'monta mostra converte confere --help --version' -- "$atual"))
        return
    fi
    case ${COMP_WORDS[1]} in
        monta) opcoes='--pasta --alias --tabelas --versao --json' ;;
        mostra) opcoes=--json ;;
        converte) opcoes='--forma --json' ;;
        confere) opcoes='--anterior --json' ;;
    esac
    if [[ $atual == -* ]]; then
        COMPREPLY=($(compgen -W "$opcoes" -- "$atual"))
    else
        COMPREPLY=($(compgen -f -- "$atual"))
    fi
}

complete -o filenames -F _pacotewkd PacoteWKD
