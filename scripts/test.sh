#!/usr/bin/env bash
# What the CI does, cheapest first: installs what is missing, checks the format, builds and runs every test, optimised and
# under the sanitizers. What needs no Qt is also compiled for Windows, and not run. The readers are fuzzed by scripts/fuzz.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh clang-format-14
echo "== formato"
scripts/lint.sh formato
echo "== Windows, o que não usa Qt"
scripts/dependencies.sh g++-mingw-w64-x86-64-posix
scripts/build.sh windows-confere
for preset in release asan; do
    echo "== $preset"
    scripts/build.sh "$preset"
    ctest --preset "$preset" -j 2
done
