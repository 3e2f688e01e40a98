#!/usr/bin/env bash
# Packs the release build into build/deb/*.deb, then installs it, updates a database with it, and removes it again.
# scripts/pacote-deb.sh --so-constroi builds it alone.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh dpkg-dev lintian adduser
scripts/build.sh release AtualizaWKD PacoteWKD manual changelog
mkdir -p build/deb
rm -rf build/deb/*.deb
cpack --config build/release/CPackConfig.cmake -B build/deb >build/deb/cpack.log || { cat build/deb/cpack.log; exit 1; }
deb=$(ls "$PWD"/build/deb/*.deb)
dpkg-deb --info "$deb" | grep -E '^ (Package|Version|Depends|Recommends|Installed-Size)'
dpkg-deb --contents "$deb" | awk '{print $1, $6, $7, $8}'
lintian --fail-on error --allow-root "$deb"
[ "${1:-}" != --so-constroi ] || exit 0

como=()
[ "$(id -u)" -eq 0 ] || como=(sudo)
falha() { echo "FALHOU: $1" >&2; exit 1; }
[ ! -e /opt/AtualizaWKD ] || falha 'já há um /opt/AtualizaWKD nesta máquina'

echo "== Instala"
"${como[@]}" dpkg -i "$deb" >/dev/null
desfaz() {
    for quem in wkdprova1 wkdprova2 wkdprova3; do "${como[@]}" userdel $quem; done
    "${como[@]}" dpkg --purge atualizawkd
    "${como[@]}" rm -rf /opt/AtualizaWKD/AtualizaWKD.rejeitados.jsonl /opt/AtualizaWKD/Backup
    "${como[@]}" rmdir /opt/AtualizaWKD
    "${como[@]}" delgroup atualizawkd
} >/dev/null 2>&1
trap 'desfaz || true' EXIT
[ "$(readlink -f "$(command -v AtualizaWKD)")" = /opt/AtualizaWKD/AtualizaWKD ] || falha 'o programa não está no caminho'
AtualizaWKD --version
for programa in AtualizaWKD PacoteWKD; do
    [ "$(zcat /usr/share/man/{pt_BR/,}man1/$programa.1.gz | grep -c "^$programa .- ")" = 2 ] ||
        falha "sem manual de $programa"
done
[ -f /usr/share/doc/atualizawkd/manual.pt-BR.md ] || falha 'sem manual do administrador'
[ "$(stat -c '%U:%G %a' /opt/AtualizaWKD)" = 'root:atualizawkd 2775' ] || falha 'a pasta do programa não é do grupo'
bash -c 'source /usr/share/bash-completion/completions/AtualizaWKD; COMP_WORDS=(AtualizaWKD --pl); COMP_CWORD=1
         _atualizawkd; [ "${COMPREPLY[*]}" = --plano ]' || falha 'a linha de comando não se completa'
bash -c 'source /usr/share/bash-completion/completions/PacoteWKD; COMP_WORDS=(PacoteWKD mo); COMP_CWORD=1
         _pacotewkd; [ "${COMPREPLY[*]}" = "monta mostra" ]' || falha 'a do PacoteWKD não se completa'

echo "== Roda: um membro do grupo, outro, e quem não é"
pasta=$(mktemp -d)
chmod 755 "$pasta"
como_quem() { local quem=$1; shift; "${como[@]}" runuser -u "$quem" -- env -C "$pasta" HOME="$pasta" "$@"; }
for quem in wkdprova1 wkdprova2; do "${como[@]}" useradd --no-create-home --groups atualizawkd,firebird $quem; done
"${como[@]}" useradd --no-create-home --groups firebird wkdprova3
{ echo "create database '$pasta/loja.fdb' page_size 8192 default character set WIN1252;"; cat examples/banco.sql; } |
    isql-fb -q -b -ch UTF8
(cd examples/pacote && cmake -E tar cf "$pasta/pacote.zip" --format=zip -- *)
"${como[@]}" chown -R wkdprova1:atualizawkd "$pasta"
"${como[@]}" chmod 2770 "$pasta" && "${como[@]}" chmod 660 "$pasta/loja.fdb"
echo masterkey | como_quem wkdprova1 AtualizaWKD --novo-alias DEB --tipo tbInterbase --hostname '' --path "$pasta/" \
    --database loja.fdb --usuario SYSDBA
codigo=0
como_quem wkdprova2 AtualizaWKD --plano DEB pacote.zip >/dev/null || codigo=$?
[ "$codigo" -ge 10 ] || falha "o plano de outro membro terminou com $codigo"
for quem in wkdprova1 wkdprova2; do  # each has a row that is rejected, in the file of both
    isql-fb -q "$pasta/loja.fdb" >/dev/null 2>&1 <<<"drop index TFORNECE_CNPJ; commit;
        insert into TFORNECE (CODIGO, CNPJ) select '$quem', min(CNPJ) from TFORNECE; commit;" || true
    echo "update SARQUIVO set VERSAO = 1 where NOME_ARQUIVO = 'TFORNECE';" | isql-fb -q -b "$pasta/loja.fdb"
    codigo=0
    como_quem $quem AtualizaWKD 'DEB;' pacote.zip --completo --com-backup >/dev/null || codigo=$?
    [ "$codigo" -le 1 ] || falha "a atualização de $quem terminou com $codigo"
done
como_quem wkdprova1 AtualizaWKD --historico DEB
[ "$(como_quem wkdprova1 AtualizaWKD --historico DEB | wc -l)" = 2 ] || falha 'o histórico não tem as duas'
for arquivo in WKD.ini AtualizaWKD.log AtualizaWKD.relatorio.html; do
    como_quem wkdprova2 test -r "/opt/AtualizaWKD/$arquivo" || falha "sem $arquivo que o grupo leia"
done
como_quem wkdprova2 grep -c '"chave":' /opt/AtualizaWKD/AtualizaWKD.rejeitados.jsonl | grep -qx 2 || falha 'faltam linhas rejeitadas'
[ "$(stat -c '%G %a' /opt/AtualizaWKD/AtualizaWKD.rejeitados.jsonl)" = 'atualizawkd 660' ] ||
    falha 'o grupo não escreve nas linhas rejeitadas'
de_fora() { (cd / && "${como[@]}" runuser -u wkdprova3 -- "$@"); }
! de_fora test -r /opt/AtualizaWKD/WKD.ini || falha 'quem não é do grupo lê as senhas'
codigo=0
de_fora AtualizaWKD --lista-alias || codigo=$?
[ "$codigo" = 3 ] || falha "quem não é do grupo recebeu $codigo"

echo "== Remove"
"${como[@]}" dpkg --remove atualizawkd >/dev/null 2>&1
[ ! -e /usr/bin/AtualizaWKD ] && [ ! -L /usr/bin/AtualizaWKD ] && [ ! -e /opt/AtualizaWKD/AtualizaWKD ] || falha 'o programa ficou'
[ -f /opt/AtualizaWKD/WKD.ini ] && [ -f /opt/AtualizaWKD/AtualizaWKD.log ] || falha 'as configurações ou o log sumiram'
"${como[@]}" dpkg --purge atualizawkd >/dev/null 2>&1
[ "$(ls /opt/AtualizaWKD | tr '\n' ' ')" = 'AtualizaWKD.rejeitados.jsonl Backup ' ] ||
    falha 'as linhas rejeitadas e os backups não ficaram, ou não só eles'
rm -rf "$pasta"
echo "Instalado, usado e removido: $deb"
