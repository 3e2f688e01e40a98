#!/usr/bin/env bash
# Fuzzes the readers under the sanitizers, one a processor: scripts/fuzz.sh [seconds each] [xml|binario|json|zip|ini...]
# What is found stands in build/fuzz/achados; once mended it joins the seeds, which the tests replay.
set -euo pipefail
cd "$(dirname "$0")/.."

segundos=${1:-60}
shift || true
alvos=("${@:-}")
[ -n "${alvos[0]}" ] || alvos=(xml binario json zip ini)

scripts/dependencies.sh clang
scripts/build.sh fuzz "${alvos[@]/#/fuzz_}"

# The working files change thousands of times a second; they stay in memory where the system has such a folder.
memoria=/dev/shm
[ -w "$memoria" ] || memoria=${TMPDIR:-/tmp}
TMPDIR=$(mktemp -d -p "$memoria")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

fuzza() {
    local alvo=$1 registro=build/fuzz/$1.log corpus=build/fuzz/corpus/$1
    # No input of a few kilobytes needs more memory in all, more in one piece, or more time than this.
    local limites=(-max_len=8192 -rss_limit_mb=768 -malloc_limit_mb=128 -timeout=5)
    mkdir -p "$corpus" build/fuzz/achados "$TMPDIR/$alvo"
    TMPDIR=$TMPDIR/$alvo build/fuzz/bin/fuzz_"$alvo" "${limites[@]}" -max_total_time="$segundos" -print_final_stats=1 \
        -artifact_prefix=build/fuzz/achados/"$alvo"- "$corpus" "fuzz/sementes/$alvo" 2>"$registro" ||
        { tail -n 40 "$registro"; return 1; }
    echo "$alvo: $(grep -E 'cov: ' "$registro" | tail -n 1)"
    grep -E 'number_of_executed_units|peak_rss_mb' "$registro"
}
export -f fuzza
export segundos
printf '%s\0' "${alvos[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'fuzza "$1"' fuzza
