# bash completion of AtualizaWKD
_atualizawkd_aliases() {
    local IFS=$'\n'
    COMPREPLY=($(compgen -S "${2-}" -W "$("${COMP_WORDS[0]}" --lista-alias 2>/dev/null)" -- "$1"))
}

_atualizawkd() {
    local atual=${COMP_WORDS[COMP_CWORD]} anterior=${COMP_WORDS[COMP_CWORD - 1]} primeira=${COMP_WORDS[1]}
    local escolhas='--todas --completo --tabelas --sem-anteriores --sem-posteriores --linhas-por-commit' opcoes=
    COMPREPLY=()
    case $anterior in
        --plano | --confere | --ensaio | --historico | --backup | --restaura | --repoe | --suporte | --testa-alias | --remove-alias | --muda-senha) _atualizawkd_aliases "$atual" && return ;;
        --tipo) COMPREPLY=($(compgen -W 'tbInterbase tbSQLServer tbODBC' -- "$atual")) && return ;;
        --path) COMPREPLY=($(compgen -d -- "$atual")) && return ;;
    esac
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W '--plano --confere --ensaio --historico --backup --prova-backup --restaura --repoe --suporte --reproduz --lista-alias --testa-alias --novo-alias --muda-senha --remove-alias --help
                                 --version' -- "$atual"))
        [[ $atual == -* ]] || _atualizawkd_aliases "$atual" ';'
        return
    fi
    case $primeira in
        --novo-alias) opcoes='--tipo --hostname --path --database --usuario --autenticacao --menu --troca --sem-teste' ;;
        --muda-senha) opcoes=--sem-teste ;;
        --plano) opcoes="--json --sql --html --silencioso $escolhas" ;;
        --ensaio) opcoes="--json --mantem $escolhas" ;;
        --confere | --historico) opcoes=--json ;;
        --backup) opcoes=--guarda ;;
        --restaura) opcoes=--sim ;;
        --suporte) opcoes=--pacote ;;
        -*) ;;
        *) opcoes="--com-backup --silencioso $escolhas" ;;
    esac
    if [[ $atual == -* || $primeira == --novo-alias ]]; then
        COMPREPLY=($(compgen -W "$opcoes" -- "$atual"))
    elif [[ $primeira == --plano || $primeira == --ensaio || $primeira == --suporte || $anterior == --reproduz || $primeira != -* ]]; then
        COMPREPLY=($(compgen -f -X '!*.[zZ][iI][pP]' -- "$atual") $(compgen -d -- "$atual"))
    fi
}

complete -o filenames -F _atualizawkd AtualizaWKD
