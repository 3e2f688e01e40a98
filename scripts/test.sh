#!/usr/bin/env bash
# What the CI does, cheapest first: installs what is missing, checks the format, builds and runs every test, optimised and
# under the sanitizers, looks for faults that can be seen without running, and fuzzes each reader for a minute. Under the
# sanitizers the sweeps are left out: they cut one run at each of its statements, take minutes, and pass through the same
# code again and again. What needs no Qt is also compiled for Windows, and not run.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh clang-format-14
echo "== formato"
scripts/lint.sh formato
echo "== Windows, o que não usa Qt"
scripts/dependencies.sh g++-mingw-w64-x86-64-posix
scripts/build.sh windows-confere
echo "== release"
scripts/build.sh release
ctest --preset release -j 2
echo "== asan"
scripts/build.sh asan
ctest --preset asan -j 2 -E 'Queda|AtAnyStatement|AGrammarOfTSql'
echo "== clang-tidy"
scripts/lint.sh tidy
echo "== fuzz"
scripts/fuzz.sh 60
