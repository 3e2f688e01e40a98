#!/usr/bin/env bash
# Format and faults that can be seen without running: scripts/lint.sh [formato|tidy] (none: both). What it names,
# clang-format -i and .clang-tidy mend. clang-tidy looks at src and fuzz, as the release build compiles them.
set -euo pipefail
cd "$(dirname "$0")/.."

oque=${1:-formato tidy}

if [[ $oque == *formato* ]]; then
    scripts/dependencies.sh clang-format-14
    git ls-files -z -- '*.cpp' '*.h' | xargs -0 clang-format-14 --dry-run -Werror
fi
if [[ $oque == *tidy* ]]; then
    scripts/dependencies.sh clang-tidy-14
    # The compiler's precompiled headers, and its names of warnings, are not clang's.
    scripts/build.sh release app_autogen
    mkdir -p build/tidy
    sed -E 's/ -Winvalid-pch -include [^ ]*cmake_pch\.hxx//; s/ -Wno-(restrict|stringop-overflow|maybe-uninitialized)//g' \
        build/release/compile_commands.json >build/tidy/compile_commands.json
    run-clang-tidy-14 -quiet -p build/tidy -j "$(nproc)" "^$PWD/(src|fuzz)/" >build/tidy/tidy.log 2>&1 ||
        { grep -E -A2 '(warning|error):' build/tidy/tidy.log; exit 1; }
fi
