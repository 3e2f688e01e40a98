#!/usr/bin/env bash
# Packs the release build into build/deb/*.deb, then installs it, updates a database with it, and removes it again.
# scripts/pacote-deb.sh --so-constroi builds it alone.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh dpkg-dev
scripts/build.sh release AtualizaWKD PacoteWKD manual
mkdir -p build/deb
rm -rf build/deb/*.deb
cpack --config build/release/CPackConfig.cmake -B build/deb >build/deb/cpack.log || { cat build/deb/cpack.log; exit 1; }
deb=$(ls "$PWD"/build/deb/*.deb)
dpkg-deb --info "$deb" | grep -E '^ (Package|Version|Depends|Recommends|Installed-Size)'
dpkg-deb --contents "$deb" | awk '{print $1, $6, $7, $8}'
[ "${1:-}" != --so-constroi ] || exit 0

como=()
[ "$(id -u)" -eq 0 ] || como=(sudo)
falha() { echo "FALHOU: $1" >&2; exit 1; }
[ ! -e /opt/AtualizaWKD ] || falha 'já há um /opt/AtualizaWKD nesta máquina'

echo "== Instala"
"${como[@]}" dpkg -i "$deb" >/dev/null
trap '"${como[@]}" dpkg --purge atualizawkd >/dev/null 2>&1 || true' EXIT
[ "$(readlink -f "$(command -v AtualizaWKD)")" = /opt/AtualizaWKD/AtualizaWKD ] || falha 'o programa não está no caminho'
AtualizaWKD --version
for programa in AtualizaWKD PacoteWKD; do
    man -w $programa >/dev/null 2>&1 || [ -f /usr/share/man/man1/$programa.1.gz ] || falha "sem manual de $programa"
done
bash -c 'source /usr/share/bash-completion/completions/AtualizaWKD; COMP_WORDS=(AtualizaWKD --pl); COMP_CWORD=1
         _atualizawkd; [ "${COMPREPLY[*]}" = --plano ]' || falha 'a linha de comando não se completa'
bash -c 'source /usr/share/bash-completion/completions/PacoteWKD; COMP_WORDS=(PacoteWKD mo); COMP_CWORD=1
         _pacotewkd; [ "${COMPREPLY[*]}" = "monta mostra" ]' || falha 'a do PacoteWKD não se completa'

echo "== Roda"
pasta=$(mktemp -d)
{ echo "create database '$pasta/loja.fdb' page_size 8192 default character set WIN1252;"; cat examples/banco.sql; } |
    isql-fb -q -b -ch UTF8
(cd examples/pacote && cmake -E tar cf "$pasta/pacote.zip" --format=zip -- *)
echo masterkey | "${como[@]}" AtualizaWKD --novo-alias DEB --tipo tbInterbase --hostname '' --path "$pasta/" \
    --database loja.fdb --usuario SYSDBA
codigo=0
"${como[@]}" AtualizaWKD --plano DEB "$pasta/pacote.zip" >"$pasta/plano.txt" || codigo=$?
[ "$codigo" -eq 10 ] || falha "o plano terminou com $codigo"
"${como[@]}" AtualizaWKD 'DEB;' "$pasta/pacote.zip" >"$pasta/saida.txt" || falha 'a atualização não terminou bem'
"${como[@]}" AtualizaWKD --plano DEB "$pasta/pacote.zip" | grep ^Resumo
for arquivo in WKD.ini AtualizaWKD.log AtualizaWKD.relatorio.html; do
    [ -f "/opt/AtualizaWKD/$arquivo" ] || falha "sem $arquivo na pasta do programa"
done

echo "== Remove"
"${como[@]}" dpkg --remove atualizawkd >/dev/null 2>&1
[ ! -e /usr/bin/AtualizaWKD ] && [ ! -L /usr/bin/AtualizaWKD ] && [ ! -e /opt/AtualizaWKD/AtualizaWKD ] || falha 'o programa ficou'
[ -f /opt/AtualizaWKD/WKD.ini ] && [ -f /opt/AtualizaWKD/AtualizaWKD.log ] || falha 'as configurações ou o log sumiram'
"${como[@]}" dpkg --purge atualizawkd >/dev/null 2>&1
[ ! -e /opt/AtualizaWKD ] || falha 'sobrou a pasta do programa'
rm -rf "$pasta"
echo "Instalado, usado e removido: $deb"
