#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: optimised, then under the sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh
for preset in release asan; do
    echo "== $preset"
    scripts/build.sh "$preset"
    ctest --preset "$preset" -j 2
done
