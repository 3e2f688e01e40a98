#!/usr/bin/env bash
# Firebird 4.0 beside the system's 3.0, from Debian 13's packages with their own libraries, in a folder of its own:
# nothing of the system changes. The first call fetches 36 MB. WKD_FIREBIRD4 names the folder, otherwise
# ~/.cache/atualizawkd-firebird4.
#   scripts/firebird4.sh                       prints the folder
#   scripts/firebird4.sh servidor PORT         a server on 127.0.0.1, SYSDBA's password "masterkey", until it is ended
#   scripts/firebird4.sh testa COMMAND...      runs a test program; every database of it is on a 4.0 server of its own
#   scripts/firebird4.sh --cliente testa ...   with 4.0's client library as well
set -euo pipefail
projeto=$(cd "$(dirname "$0")/.." && pwd)
base=${WKD_FIREBIRD4:-${XDG_CACHE_HOME:-$HOME/.cache}/atualizawkd-firebird4}

# The packages come from where the system's own come from; its lists and its state stay as they are.
busca() {
    local apt=$base/apt
    rm -rf "$apt"
    mkdir -p "$apt/listas/partial" "$apt/pacotes/partial"
    : >"$apt/status"
    apt-get indextargets --format 'deb $(REPO_URI) trixie $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' 'Codename: bookworm' | sort -u >"$apt/sources.list"
    [ -s "$apt/sources.list" ] || { echo "As listas de pacotes do Debian 12 faltam: apt-get update" >&2; exit 1; }
    local opcoes=(-q -o "Dir::Etc::sourcelist=$apt/sources.list" -o Dir::Etc::sourceparts=-
        -o "Dir::State::lists=$apt/listas" -o "Dir::State::status=$apt/status" -o "Dir::Cache::archives=$apt/pacotes"
        -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= -o APT::Sandbox::User=root)
    apt-get "${opcoes[@]}" update
    apt-get "${opcoes[@]}" -y --download-only --no-install-recommends \
        install firebird4.0-server firebird4.0-utils tzdata
    for pacote in "$apt"/pacotes/*.deb; do dpkg-deb -x "$pacote" "$base"; done
    rm -rf "$apt"
    touch "$base/.pronto"
}

[ -e "$base/.pronto" ] || busca >&2
export WKD_FIREBIRD4=$base

if [ "${1:-}" = --cliente ]; then
    shift
    bibliotecas=$base/usr/lib/x86_64-linux-gnu
    export WKD_FIREBIRD4_CLIENTE="$bibliotecas/ld-linux-x86-64.so.2 --library-path $bibliotecas"
fi
case ${1:-} in
    "") echo "$base" ;;
    servidor)
        pasta=$base/servidor-$2
        rm -rf "$pasta"
        mkdir "$pasta"
        exec "$projeto/tests/support/servidor-firebird.sh" "$pasta" "$2"
        ;;
    testa)
        shift
        # shellcheck disable=SC2086 # the loader and its option
        exec ${WKD_FIREBIRD4_CLIENTE:-} "$@"
        ;;
    *) sed -n 's/^#   //p' "$0" >&2; exit 64 ;;
esac
