#!/usr/bin/env bash
# Tries the Windows programs of build/windows under Wine: the tests of what needs no Qt, PacoteWKD, whole updates against
# this machine's Firebird (through tests/wine, which forwards its client) and ODBC drivers, the window's pages, the setup.
# What cannot be tried here is named and counted as "pulado". scripts/windows.sh builds what is tried;
# scripts/windows-prova.sh --sem-qt builds it first, as far as that needs no Qt.
# The pictures of the window's pages, in build/windows-prova/imagens, are for somebody to look at.
# WKD_SQLSERVER="SERVER=...;PORT=...;UID=...;PWD=...;DRIVER=FreeTDS" adds a T-SQL server.
set -euo pipefail
cd "$(dirname "$0")/.."
raiz=$PWD

scripts/dependencies.sh g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libz-mingw-w64-dev dpkg-dev wine wine64 \
    wine64-tools libwine-dev imagemagick xdotool xvfb
if [ "${1:-}" = --sem-qt ]; then
    cmake --preset windows -DWKD_SEM_QT=ON -DWKD_WINDOWS="$(scripts/windows-bibliotecas.sh --sem-qt)" >/dev/null
    cmake --build --preset windows
fi
programas=$raiz/build/windows/bin
prova=$raiz/build/windows-prova
rm -rf "$prova"
mkdir -p "$prova"

export WINEDEBUG=-all WINEARCH=win64 WINEPREFIX=$prova/prefixo LC_ALL=C.UTF-8 WINEDLLOVERRIDES=winemenubuilder.exe=d
export XDG_CONFIG_HOME=$prova/config
unset DISPLAY
wineserver=$(ls /usr/lib/wine/wineserver64 /usr/bin/wineserver 2>/dev/null | head -1)
filhos=()
termina() {
    "$wineserver" -k || true
    [ ${#filhos[@]} -eq 0 ] || kill "${filhos[@]}" 2>/dev/null || true
}
trap termina EXIT
wine wineboot -i >/dev/null 2>&1
wine winecfg /v win10 >/dev/null 2>&1
tests/wine/ponte.sh "$prova/ponte"
export WINEDLLPATH=$prova/ponte

feitos=0 falhas=0 pulados=0
certo() { feitos=$((feitos + 1)); printf 'certo    %s\n' "$1"; }
errado() { falhas=$((falhas + 1)); printf 'ERRADO   %s\n' "$1"; }
pulado() { pulados=$((pulados + 1)); printf 'pulado   %s: %s\n' "$1" "$2"; }
confere() { # what, command...
    local oque=$1
    shift
    if "$@" >"$prova/ultima.log" 2>&1; then certo "$oque"; else errado "$oque"; tail -15 "$prova/ultima.log"; fi
}

testes() { # program [filter]
    local saida=$prova/$1.log onde=$prova/$1
    mkdir -p "$onde"
    cp "$programas/$1.exe" "$prova/ponte/fbclient.dll" "$onde/"
    (cd "$onde" && wine "$1.exe" --gtest_filter="${2:-*}" </dev/null >"$saida" 2>&1) || true
    local rodados passados saltados
    rodados=$(grep -aoE '^\[==========\] [0-9]+ tests? from .* ran' "$saida" | grep -oE '[0-9]+' | head -1 || true)
    passados=$(grep -aoE '^\[  PASSED  \] [0-9]+' "$saida" | grep -oE '[0-9]+$' || true)
    saltados=$(grep -aoE '^\[  SKIPPED \] [0-9]+' "$saida" | grep -oE '[0-9]+$' || true)
    local linha="$1: ${rodados:-0} rodados, ${passados:-0} passaram, ${saltados:-0} pulados"
    if [ -n "$rodados" ] && ! grep -aqE '^\[  FAILED  \]' "$saida"; then certo "$linha"; else errado "$linha"; fi
    grep -aE '^\[  FAILED  \] [^0-9]' "$saida" | sort -u || true
    grep -aE '^\[  SKIPPED \] [^0-9]' "$saida" | grep -v ' ms)' | sort -u | sed 's/^.*\] /         pulado: /' >"$prova/$1.pulados" || true
}

echo '== Testes que não usam Qt'
# A Firebird server of this machine, which the contract's tests reach over the network.
export WKD_FIREBIRD=127.0.0.1/3079
mkdir -p "$prova/servidor"
"$raiz/tests/support/servidor-firebird.sh" "$prova/servidor" "${WKD_FIREBIRD#*/}" &
filhos+=($!)
for programa in framework_tests dictionary_tests db_tests migration_tests; do
    if [ -f "$programas/$programa.exe" ]; then testes "$programa" '-*SqlServer*'; else pulado "$programa" 'não foi construído'; fi
done

echo '== PacoteWKD'
pasta="$prova/Pasta com acentuação"
mkdir -p "$pasta"
cp "$programas/PacoteWKD.exe" "$pasta/"
cd "$pasta"
confere 'monta um pacote numa pasta com acentos e brancos' wine PacoteWKD.exe monta 'pacote é novo.zip' \
    --pasta "Z:${raiz//\//\\}\\examples\\pacote"
mostra_igual() {
    [ -x "$raiz/build/release/bin/PacoteWKD" ] || "$raiz/scripts/build.sh" release PacoteWKD
    wine PacoteWKD.exe mostra 'pacote é novo.zip' --json >windows.json || return 1
    "$raiz/build/release/bin/PacoteWKD" mostra 'pacote é novo.zip' --json >linux.json && cmp windows.json linux.json
}
confere 'mostra o mesmo que no Linux, byte a byte' mostra_igual
(cd "$raiz/examples/pacote" && cmake -E tar cf "$pasta/pacote.zip" --format=zip -- *)

echo '== Atualização inteira, Firebird embutido'
banco_novo() {
    rm -f "$1"
    { echo "create database '$1' page_size 8192 default character set WIN1252;"; cat "$raiz/examples/banco.sql"; } |
        isql-fb -q -b -ch UTF8
}
# Every table's structure and rows, with what differs in any two runs (dates of the run) left out.
retrato() { # database
    isql-fb -q -x -ch UTF8 "$1" | grep -v 'CREATE DATABASE'
    local tabela colunas
    for tabela in $(isql-fb -q -ch UTF8 "$1" <<<"set heading off; select trim(rdb\$relation_name) from rdb\$relations
                    where rdb\$system_flag = 0 and rdb\$view_blr is null order by 1;"); do
        colunas=$(isql-fb -q -ch UTF8 "$1" <<<"set heading off; select trim(f.rdb\$field_name) || ',' from
            rdb\$relation_fields f join rdb\$fields t on t.rdb\$field_name = f.rdb\$field_source where
            f.rdb\$relation_name = '$tabela' and t.rdb\$field_type not in (12, 13, 35) order by 1;" | tr -d ' \n')
        echo "== $tabela"
        isql-fb -q -ch UTF8 -page 0 "$1" <<<"set list on; set blob all; select ${colunas%,} from $tabela order by 1, 2;" |
            sed 's/[0-9a-f]*:[0-9a-f]* *$//' | sort
    done
}
alias_firebird() { # file, folder of the database as the program sees it
    printf '[LOJA]\nAlias=LOJA\nTipoBanco=tbInterbase\nHostname=\nPath=%s\nDataBase=loja.fdb\n' "$2" >"$1"
    printf 'User_Name=SYSDBA\nPassword=masterkey\n' >>"$1"
}
de_windows() { printf 'Z:%s\\' "${1//\//\\}"; }
atualiza_e_compara() { # command...: what updates; the database of the folder "win" ends as that of "lin"
    "$@" >"$prova/windows.log" 2>&1 || { cat "$prova/windows.log"; return 1; }
    retrato "$prova/lin/loja.fdb" >"$prova/lin.txt"
    retrato "$prova/win/loja.fdb" >"$prova/win.txt"
    wc -l "$prova/win.txt"
    diff "$prova/lin.txt" "$prova/win.txt"
}
for lado in lin win; do
    mkdir -p "$prova/$lado"
    banco_novo "$prova/$lado/loja.fdb"
    cp "$pasta/pacote.zip" "$prova/$lado/"
done
alias_firebird "$prova/lin/WKD.ini" "$prova/lin/"
alias_firebird "$prova/win/WKD.ini" "$(de_windows "$prova/win")"
"$raiz/scripts/build.sh" release corrida AtualizaWKD >/dev/null
cp "$prova/ponte/fbclient.dll" "$prova/win/"
if [ -f "$programas/corrida.exe" ]; then
    "$raiz/build/release/bin/corrida" "$prova/lin" 0 >/dev/null
    cp "$programas/corrida.exe" "$prova/win/"
    confere 'o motor (sem janela) deixa o banco como no Linux, tabela por tabela' atualiza_e_compara \
        wine "$prova/win/corrida.exe" "$(de_windows "$prova/win")" 0
fi

# Cut as by a power failure at some statement; the next run ends in the same state.
cortado() { # statement
    banco_novo "$prova/win/loja.fdb"
    (cd "$prova/win" && wine corrida.exe "$(de_windows "$prova/win")" "$1") && return 1
    atualiza_e_compara wine "$prova/win/corrida.exe" "$(de_windows "$prova/win")" 0
}
if [ -f "$programas/corrida.exe" ]; then
    for comando in 150 400 700 1000; do
        confere "cortado no comando $comando e rodado de novo, termina igual" cortado "$comando"
    done
fi

echo '== T-SQL por ODBC'
if [ -n "${WKD_SQLSERVER:-}" ]; then
    for programa in db_tests migration_tests; do testes "$programa" '*SqlServer*'; done
else
    pulado 'atualização por ODBC' 'WKD_SQLSERVER não está definida'
fi

if [ "${1:-}" = --sem-qt ] || [ ! -f "$programas/AtualizaWKD.exe" ]; then
    pulado 'AtualizaWKD.exe, janela e instalador' 'não foi construído (scripts/windows.sh)'
    echo "Certos: $feitos, errados: $falhas, pulados: $pulados"
    [ "$falhas" -eq 0 ]
    exit
fi

echo '== AtualizaWKD.exe, sem ninguém à frente'
cd "$prova/win"
cp "$programas"/AtualizaWKD.{exe,com} .
cp "$raiz/build/release/bin/AtualizaWKD" "$prova/lin/"
codigo() { # exit code, words that are said, command...
    local espera=$1 palavras=$2 rc=0
    shift 2
    "$@" >"$prova/saida.txt" 2>&1 || rc=$?
    cat "$prova/saida.txt"
    echo "código $rc"
    [ "$rc" -eq "$espera" ] && grep -qF -- "$palavras" "$prova/saida.txt"
}
confere '--version diz o cliente do Firebird' codigo 0 'Firebird 3.0' wine AtualizaWKD.com --version
confere 'uma linha de comando acha o AtualizaWKD.com e tem o código de saída' codigo 0 'codigo 64' \
    wine cmd /c 'AtualizaWKD LOJA pacote.zip & call echo codigo %^errorlevel% & exit 0'
confere 'um caminho de rede é dito como foi escrito' codigo 2 '\\servidor\pasta\é novo.zip' \
    wine "$pasta/PacoteWKD.exe" mostra '\\servidor\pasta\é novo.zip'
sem_cliente() {
    mv fbclient.dll fbclient.fora
    codigo 3 'Instale o Firebird' wine AtualizaWKD.com --testa-alias LOJA
    local rc=$?
    mv fbclient.fora fbclient.dll
    return $rc
}
confere 'sem o cliente do Firebird diz o que instalar' sem_cliente
novo_alias() {
    printf 'segrédo\r\n' | codigo 0 '' wine AtualizaWKD.com --novo-alias MATRIZ --tipo tbInterbase --path 'C:\dados\' \
        --database 'ação.fdb' --usuario SYSDBA --sem-teste && codigo 0 'MATRIZ' wine AtualizaWKD.com --lista-alias
}
confere 'um alias novo, com a senha por um pipe' novo_alias
if [ -n "${WKD_SQLSERVER:-}" ]; then
    valor() { sed -E "s/.*(^|;)$1=([^;]*).*/\2/" <<<"$WKD_SQLSERVER"; }
    printf '[SQL]\r\nAlias=SQL\r\nTipoBanco=tbSQLServer\r\nHostname=%s,%s\r\nDataBase=master\r\nUser_Name=%s\r\nPassword=%s\r\n' \
        "$(valor SERVER)" "$(valor PORT)" "$(valor UID)" "$(valor PWD)" >>WKD.ini
    confere 'um alias de SQL Server, com o driver que está instalado' codigo 0 '' wine AtualizaWKD.com --testa-alias SQL
    confere 'e sem o cliente do Firebird também' codigo 0 '' sh -c \
        'mv fbclient.dll fora; wine AtualizaWKD.com --testa-alias SQL; rc=$?; mv fora fbclient.dll; exit $rc'
fi
for lado in lin win; do banco_novo "$prova/$lado/loja.fdb"; done
(cd "$prova/lin" && ./AtualizaWKD 'LOJA;' pacote.zip >/dev/null)
confere 'a atualização inteira deixa o banco como no Linux, tabela por tabela; sem tela também' atualiza_e_compara \
    wine AtualizaWKD.com 'LOJA;' pacote.zip
confere 'não deixa nada na pasta temporária' test -z "$(find "$WINEPREFIX/drive_c/users" -iname 'AtualWkd*' -o -name 'wkd-*')"
com_erro() {
    codigo 2 'Confira o caminho do pacote' wine AtualizaWKD.com 'LOJA;' nada.zip && cat AtualizaWKD.log &&
        [ "$(grep -c '' AtualizaWKD.log)" -eq "$(grep -c $'\r$' AtualizaWKD.log)" ]
}
confere 'um pacote que falta: código 2, e o log tem linhas CR LF' com_erro

echo '== Janela'
tela=:$((90 + RANDOM % 9))
Xvfb $tela -screen 0 1024x768x24 >/dev/null 2>&1 &
filhos+=($!)
imagens=$prova/imagens
mkdir -p "$imagens"
sleep 1
# The font and the program for logs that a Windows has and a bare Wine lacks.
wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v 'MS Shell Dlg' /d 'DejaVu Sans' /f >/dev/null
wine reg add 'HKCR\.log' /ve /d txtfile /f >/dev/null
foto() { # name: what the screen shows now, which is not what it showed before
    sleep "${2:-3}"
    DISPLAY=$tela import -window root "$imagens/$1.png"
    if [ -n "${anterior:-}" ] && [ "$(compare -metric AE "$anterior" "$imagens/$1.png" null: 2>&1)" = 0 ]; then
        errado "$1: a tela não mudou"
    else
        certo "$1: $imagens/$1.png"
    fi
    anterior=$imagens/$1.png
}
tecla() { DISPLAY=$tela xdotool key --delay 100 "$@"; }
abre_janela() {
    banco_novo "$prova/win/loja.fdb"
    DISPLAY=$tela wine explorer /desktop=prova,1024x768 AtualizaWKD.exe "$1" >"$prova/janela.log" 2>&1 &
    for _ in $(seq 60); do
        local janela
        janela=$(DISPLAY=$tela xdotool search --onlyvisible --name 'AtualizaWKD v' 2>/dev/null | head -1) || true
        [ -z "$janela" ] || break
        sleep 1
    done
    DISPLAY=$tela xdotool windowfocus "$janela"
}
abre_janela 'LOJA;nobkp'
foto alias 6
tecla alt+p
foto backup
tecla alt+p
foto atualizacao
DISPLAY=$tela xdotool type --delay 20 "$(de_windows "$prova/win")pacote.zip"
foto pacote
tecla alt+p
foto opcoes
tecla alt+p
foto status
tecla alt+n
foto plano 8
tecla Escape
foto status-outra-vez
tecla Return
foto concluida 15
tecla Return
foto pergunta
tecla s
foto log 6
tecla alt+F4
foto fim
retrato "$prova/win/loja.fdb" >"$prova/win.txt"
confere 'a atualização feita na janela deixa o banco como no Linux' diff "$prova/lin.txt" "$prova/win.txt"
tecla alt+s
foto sair
tecla s
lembrado() {
    for _ in $(seq 20); do
        ! wine reg query 'HKCU\AtualizaWKD' /s | grep -iF "$(de_windows "$prova/win")pacote.zip" || return 0
        sleep 1
    done
    return 1
}
confere 'o que se escreveu é lembrado no registro' lembrado

echo '== Instalador'
lugar="$WINEPREFIX/drive_c/Program Files/WKD Software/AtualizaWKD"
instala() {
    wine "$raiz/build/windows/AtualizaWKD-setup.exe" /S && [ -f "$lugar/AtualizaWKD.exe" ] && [ -f "$lugar/Desinstala.exe" ] &&
        find "$WINEPREFIX/drive_c/ProgramData" -name 'AtualizaWKD.lnk' | grep . &&
        wine reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\AtualizaWKD' /v DisplayVersion
}
instalado() {
    cp "$prova/win/WKD.ini" "$prova/win/fbclient.dll" "$lugar/"
    banco_novo "$prova/win/loja.fdb"
    (cd "$lugar" && codigo 0 'Tempo de Atualização' wine AtualizaWKD.com 'LOJA;' "$(de_windows "$prova/win")pacote.zip") &&
        retrato "$prova/win/loja.fdb" | diff "$prova/lin.txt" - && [ -f "$lugar/AtualizaWKD.relatorio.html" ]
}
desinstala() {
    wine "$lugar/Desinstala.exe" /S || return 1
    for _ in $(seq 30); do [ -e "$lugar/AtualizaWKD.exe" ] || break; sleep 1; done
    ls "$lugar"
    [ ! -e "$lugar/AtualizaWKD.exe" ] && [ ! -e "$lugar/PacoteWKD.exe" ] && [ -f "$lugar/WKD.ini" ] &&
        [ -f "$lugar/AtualizaWKD.relatorio.html" ] && ! find "$WINEPREFIX/drive_c/ProgramData" -name 'AtualizaWKD.lnk' | grep .
}
confere 'instala sem perguntas, com entrada no menu e na lista de programas' instala
confere 'o programa instalado atualiza' instalado
confere 'desinstala, e deixa o que o programa escreveu' desinstala

echo "Certos: $feitos, errados: $falhas, pulados: $pulados"
[ "$falhas" -eq 0 ]
