# bash completion of AtualizaWKD
_atualizawkd_aliases() {
    local IFS=$'\n'
    COMPREPLY=($(compgen -S "${2-}" -W "$("${COMP_WORDS[0]}" --lista-alias 2>/dev/null)" -- "$1"))
}

_atualizawkd() {
    local atual=${COMP_WORDS[COMP_CWORD]} anterior=${COMP_WORDS[COMP_CWORD - 1]} primeira=${COMP_WORDS[1]}
    COMPREPLY=()
    case $anterior in
        --plano | --confere | --ensaio | --backup | --restaura | --repoe | --testa-alias | --remove-alias | --muda-senha) _atualizawkd_aliases "$atual" && return ;;
        --tipo) COMPREPLY=($(compgen -W 'tbInterbase tbSQLServer tbODBC' -- "$atual")) && return ;;
        --path) COMPREPLY=($(compgen -d -- "$atual")) && return ;;
    esac
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W '--plano --confere --ensaio --backup --prova-backup --restaura --repoe --lista-alias --testa-alias --novo-alias --muda-senha --remove-alias --help
                                 --version' -- "$atual"))
        [[ $atual == -* ]] || _atualizawkd_aliases "$atual" ';'
        return
    fi
    case $primeira in
        --novo-alias)
            COMPREPLY=($(compgen -W '--tipo --hostname --path --database --usuario --autenticacao --menu --troca --sem-teste' -- "$atual")) ;;
        --muda-senha) COMPREPLY=($(compgen -W '--sem-teste' -- "$atual")) ;;
        --plano | --confere)
            if [[ $atual == -* ]]; then
                COMPREPLY=($(compgen -W '--json' -- "$atual"))
            elif [[ $primeira == --plano && $COMP_CWORD == 3 ]]; then
                COMPREPLY=($(compgen -f -X '!*.[zZ][iI][pP]' -- "$atual") $(compgen -d -- "$atual"))
            fi ;;
        -*) ;;
        *) COMPREPLY=($(compgen -f -X '!*.[zZ][iI][pP]' -- "$atual") $(compgen -d -- "$atual")) ;;
    esac
}

complete -o filenames -F _atualizawkd AtualizaWKD
