#!/usr/bin/env bash
# What the CI does, cheapest first: installs what is missing, checks the format, builds, runs every test, optimised and
# under the sanitizers, and fuzzes every reader.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh clang clang-format-14
echo "== formato"
scripts/lint.sh formato
for preset in release asan; do
    echo "== $preset"
    scripts/build.sh "$preset"
    ctest --preset "$preset" -j 2
done
echo "== fuzz"
scripts/fuzz.sh 20  # seconds each, two at a time: a minute in all keeps the whole well under half an hour
