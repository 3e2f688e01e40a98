#!/usr/bin/env bash
# Builds AtualizaWKD.exe and PacoteWKD.exe for Windows x86-64 into build/windows/bin, and their installer,
# build/windows/AtualizaWKD-setup.exe, from Debian 12's packages alone.
# The first time it builds their libraries, too: see scripts/windows-bibliotecas.sh for how long that takes, where they
# are kept and how to choose another place. scripts/windows-prova.sh tries all under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libz-mingw-w64-dev dpkg-dev \
    qt6-base-dev-tools nsis
bibliotecas=$(scripts/windows-bibliotecas.sh)
inicio=$SECONDS
cmake --preset windows -DWKD_SEM_QT=OFF -DWKD_WINDOWS="$bibliotecas" >/dev/null
cmake --build --preset windows
versao=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' build/windows/CMakeCache.txt)
(cd recursos/windows && makensis -V2 -DVERSAO="$versao" -DPROGRAMAS=../../build/windows/bin \
    -DSAIDA=../../build/windows/AtualizaWKD-setup.exe setup.nsi)
ls -l build/windows/bin/{AtualizaWKD.exe,AtualizaWKD.com,PacoteWKD.exe} build/windows/AtualizaWKD-setup.exe
echo "Programas e instalador: $(((SECONDS - inicio + 59) / 60)) minutos"
