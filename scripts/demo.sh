#!/usr/bin/env bash
# The main job from end to end on an embedded database: makes a database of an older release, packs a newer release,
# runs the update unattended, shows what changed, and runs again to show that nothing is left to do.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh
scripts/build.sh release AtualizaWKD PacoteWKD

raiz=$PWD
pasta=$raiz/demo
rm -rf "$pasta"
mkdir -p "$pasta/Relatorios"
cp build/release/bin/AtualizaWKD build/release/bin/PacoteWKD "$pasta/"
cd "$pasta"

titulo() { printf '\n== %s\n\n' "$1"; }
consulta() { isql-fb -q -ch UTF8 "$pasta/loja.fdb" <<<"set list off; set heading off; $1"; }
retrato() {
    consulta "
        select trim(f.rdb\$relation_name) || '.' || trim(f.rdb\$field_name) || '  ' ||
               decode(t.rdb\$field_type, 37, 'varchar(' || t.rdb\$character_length || ')', 14, 'char', 8, 'integer',
                      27, 'double', 12, 'date', 13, 'time', 35, 'timestamp', 261, 'blob', 'outro')
        from rdb\$relation_fields f
        join rdb\$relations r on r.rdb\$relation_name = f.rdb\$relation_name
        join rdb\$fields t on t.rdb\$field_name = f.rdb\$field_source
        where r.rdb\$system_flag = 0 order by 1;
        select 'indice ' || trim(i.rdb\$relation_name) || '.' || trim(i.rdb\$index_name)
        from rdb\$indices i where i.rdb\$system_flag = 0 order by 1;" | sed 's/ *$//; /^$/d'
}

titulo 'Banco de uma versão antiga'
{ echo "create database '$pasta/loja.fdb' page_size 8192 default character set WIN1252;"; cat "$raiz/examples/banco.sql"; } |
    isql-fb -q -b -ch UTF8
retrato >antes.txt
consulta "select count(*) || ' tabelas no dicionário' from sarquivo;"

titulo 'Alias'
echo masterkey | ./AtualizaWKD --novo-alias DEMO --tipo tbInterbase --hostname '' --path "$pasta/" --database loja.fdb \
    --usuario SYSDBA
printf 'RELATORIO=%s/\n' "$pasta/Relatorios" >>WKD.ini
./AtualizaWKD --testa-alias DEMO

titulo 'Pacote da versão nova'
./PacoteWKD monta pacote.zip --pasta "$raiz/examples/pacote"
./PacoteWKD mostra pacote.zip | grep -v '^    '  # without the columns

titulo 'Revisão contra o dicionário que está no banco'
./PacoteWKD monta anterior.zip --alias DEMO
./PacoteWKD confere pacote.zip --anterior anterior.zip || [ $? -eq 1 ]  # 1: something was pointed at

titulo 'Atualização'
codigo=0
./AtualizaWKD 'DEMO;' pacote.zip || codigo=$?
echo "Código de saída: $codigo"

titulo 'O que mudou (- antes, + depois)'
retrato >depois.txt
diff -U0 antes.txt depois.txt | grep '^[-+][^-+]' || true

titulo 'Segunda atualização: nada a fazer'
codigo2=0
./AtualizaWKD 'DEMO;' pacote.zip >segunda.txt || codigo2=$?
retrato >de_novo.txt
grep -E 'Atualizou o arquivo|Criou a tabela|Executando Query' segunda.txt || echo 'Nenhuma tabela tocada.'
cmp depois.txt de_novo.txt && echo 'Tabelas, colunas e índices iguais aos de antes.'
echo "Código de saída: $codigo2"

titulo 'AtualizaWKD.log'
if grep -q '[^[:space:]]' AtualizaWKD.log; then head -n 20 AtualizaWKD.log; else echo 'Nenhuma entrada: nada falhou.'; fi
[ "$codigo" -eq 0 ] && [ "$codigo2" -eq 0 ]
