#!/bin/sh
# servidor-firebird.sh FOLDER PORT [LINE]: a Firebird server of its own on 127.0.0.1, everything it needs in FOLDER, with
# that line in its configuration. SYSDBA's password is "masterkey". The script becomes the server, so its process id is
# the server's. It is the system's 3.0, or with WKD_FIREBIRD4 the 4.0 of that folder, see scripts/firebird4.sh.
set -e
pasta=$1
porta=$2
raiz=${WKD_FIREBIRD4:-}
if [ -n "$raiz" ]; then
    versao=4.0
    bibliotecas=$raiz/usr/lib/x86_64-linux-gnu
    com="$bibliotecas/ld-linux-x86-64.so.2 --library-path $bibliotecas"
    isql=$raiz/usr/lib/firebird/4.0/bin/isql-fb
    servidor=$raiz/usr/lib/firebird/4.0/bin/firebird
else
    versao=3.0
    com=
    isql=isql-fb
    servidor=/usr/sbin/firebird
fi

# What the package has as links leads to the system's folders.
cp -r "$raiz"/usr/lib/*/firebird/$versao/. "$pasta"
cp --remove-destination "$raiz/etc/firebird/$versao/plugins.conf" "$pasta"
cp --remove-destination "$raiz/etc/firebird/$versao/fbintl.conf" "$pasta/intl"
rm -f "$pasta/firebird.conf" "$pasta/databases.conf"
seguranca=$pasta/seguranca.fdb
cat >"$pasta/firebird.conf" <<FIM
RemoteBindAddress = 127.0.0.1
RemoteServicePort = $porta
SecurityDatabase = $seguranca
$3
FIM

export FIREBIRD="$pasta" FIREBIRD_LOCK="$pasta" FIREBIRD_TMP="$pasta"
{
    echo "create database '$seguranca';"
    cat "$raiz/usr/share/firebird/$versao/security.sql"
    echo "commit;"
    echo "create or alter user sysdba password 'masterkey';"
    echo "commit;"
} | $com $isql -q -user SYSDBA >"$pasta/security.log" 2>&1
exec $com $servidor >"$pasta/servidor.log" 2>&1
