#!/usr/bin/env bash
# Configures and builds one preset: scripts/build.sh [release|debug|asan] [target...]
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-release}
shift || true
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" ${1:+--target "$@"}
