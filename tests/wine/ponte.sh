#!/usr/bin/env bash
# Makes fbclient.dll for programs under Wine: tests/wine/ponte.sh FOLDER. In the folder stand afterwards fbclient.dll,
# to be copied beside the program, and the library behind it, for which WINEDLLPATH must name the folder.
set -euo pipefail
aqui=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1" && cd "$1"

gcc -O2 -fPIC -c "$aqui/fbclient.c" -o fbclient.o
grep -oE '\bw_(isc|fb)_[a-z0-9_]+|PASSA\(isc_[a-z0-9_]+|PASSA\(fb_[a-z0-9_]+' "$aqui/fbclient.c" |
    sed -E 's/^(w_|PASSA\()//' | sort -u |
    sed -E 's/.*/@ stdcall &(ptr ptr ptr ptr ptr ptr ptr ptr ptr) w_&/' >fbclient.spec
winegcc -m64 -shared fbclient.spec fbclient.o -o fbclient.dll.so -lfbclient
winebuild -m64 --dll --fake-module -E fbclient.spec -o fbclient.dll
