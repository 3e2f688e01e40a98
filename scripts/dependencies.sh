#!/usr/bin/env bash
# Installs what the project builds, tests and runs with, from Debian 12's packages. Does nothing when all is
# there. Further packages may be named: scripts/dependencies.sh [package...]
set -euo pipefail

pacotes=(
    build-essential cmake ninja-build pkg-config
    firebird-dev firebird3.0-server-core firebird3.0-server firebird3.0-utils
    unixodbc-dev tdsodbc libsqliteodbc
    libzip-dev nlohmann-json3-dev unzip
    qt6-base-dev qt6-base-private-dev qt6-translations-l10n libfontconfig-dev xvfb
    libgtest-dev sqlfluff
    "$@"
)

faltam=()
for pacote in "${pacotes[@]}"; do
    dpkg-query -W -f '${Status}' "$pacote" 2>/dev/null | grep -q 'install ok installed' || faltam+=("$pacote")
done
[ ${#faltam[@]} -gt 0 ] || exit 0

como=()
[ "$(id -u)" -eq 0 ] || como=(sudo)
echo "Instalando: ${faltam[*]}"
export DEBIAN_FRONTEND=noninteractive
"${como[@]}" apt-get update -q
"${como[@]}" apt-get install -y -q --no-install-recommends "${faltam[@]}"
