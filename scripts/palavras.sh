#!/bin/sh
# Makes recursos/palavras.txt: the words of the program's own texts and of Firebird's messages, which a support bundle
# lets stand in a text; every other word of it may be a customer's.
set -eu
cd "$(dirname "$0")/.."
mensagens=/usr/lib/x86_64-linux-gnu/firebird/3.0/firebird.msg
{
    find src \( -name '*.cpp' -o -name "*.h" \) | grep -v -e app/window -e app/pages -e app/widgets -e '^src/pacote' | sort | xargs cat |
        grep -v '^ *\(#\|//\)' | grep -o '"\([^"\\]\|\\.\)*"' | sed 's/\\./ /g'
    strings -n 6 "$mensagens" | grep -oE "[A-Za-z]{2,}"
    # What SQL Server and its drivers say, and the reasons of the system
    echo 'The statement has been terminated. Cannot insert the value NULL into column, table; column does not allow nulls.
        INSERT UPDATE DELETE fails. Violation of UNIQUE KEY PRIMARY KEY constraint. Cannot insert duplicate key in object
        with unique index. The duplicate key value is. Conversion failed when converting the varchar nvarchar value to
        data type int. Error converting. String or binary data would be truncated. Truncated value. Arithmetic overflow
        error for. The conflict occurred in database FOREIGN KEY REFERENCE CHECK. Invalid column object name. Incorrect
        syntax near. Login failed for user. Could not find stored procedure. Transaction was deadlocked on lock resources
        with another process and has been chosen as the deadlock victim. Rerun. Lock request time out period exceeded.
        The transaction log for database is full due to. Could not allocate space because the filegroup is full.
        Communication link failure. Unable to connect. Data source name not found and no default driver specified.
        No such file or directory. Permission denied. No space left on device. Connection refused, reset, timed out.'
} | LC_ALL=C.UTF-8 grep -oP '[\p{L}_$]{2,}' | LC_ALL=C.UTF-8 sed 's/.*/\L&/' | LC_ALL=C sort -u >recursos/palavras.txt
