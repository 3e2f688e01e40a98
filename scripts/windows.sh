#!/usr/bin/env bash
# Builds AtualizaWKD.exe and PacoteWKD.exe for Windows x86-64 into build/windows/bin, from Debian 12's packages alone.
# The first time it builds their libraries, too: see scripts/windows-bibliotecas.sh for how long that takes, where they
# are kept and how to choose another place. scripts/windows.sh [target...]
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libz-mingw-w64-dev dpkg-dev \
    qt6-base-dev-tools nsis
bibliotecas=$(scripts/windows-bibliotecas.sh)
inicio=$SECONDS
cmake --preset windows -DWKD_WINDOWS="$bibliotecas" >/dev/null
cmake --build --preset windows ${1:+--target "$@"}
echo "Programas para Windows em build/windows/bin: $(((SECONDS - inicio + 59) / 60)) minutos"
