#!/bin/sh
# servidor-firebird.sh FOLDER PORT [LINE]: a Firebird server of its own on 127.0.0.1, everything it needs in FOLDER, with
# that line in its configuration.
# SYSDBA's password is "masterkey". The script becomes the server, so its process id is the server's.
set -e
pasta=$1
porta=$2
pacote=$(ls -d /usr/lib/*/firebird/3.0 | head -n 1)

cp -rL "$pacote/intl" "$pasta/intl"
cp -L "$pacote/plugins.conf" "$pasta/plugins.conf"
cat >"$pasta/firebird.conf" <<FIM
RemoteBindAddress = 127.0.0.1
RemoteServicePort = $porta
SecurityDatabase = $pasta/security3.fdb
$3
FIM

export FIREBIRD="$pasta" FIREBIRD_LOCK="$pasta" FIREBIRD_TMP="$pasta"
{
    echo "create database '$pasta/security3.fdb';"
    cat /usr/share/firebird/3.0/security.sql
    echo "commit;"
    echo "create or alter user sysdba password 'masterkey';"
    echo "commit;"
} | isql-fb -q -user SYSDBA >"$pasta/security.log" 2>&1
exec /usr/sbin/firebird >"$pasta/servidor.log" 2>&1
