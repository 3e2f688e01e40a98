#!/usr/bin/env bash
# Pictures of every page of the window into docs/imagens, of an installation in /tmp/loja, taken on a virtual screen: scripts/screenshots.sh [scale]
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/dependencies.sh
scripts/build.sh release capturas
imagens=$PWD/docs/imagens
rm -f "$imagens"/*.png
cd build/release  # a run leaves its files in the current folder
QT_QPA_PLATFORM=xcb QT_SCALE_FACTOR=${1:-1} xvfb-run -a -s '-screen 0 1920x1200x24' bin/capturas "$imagens"
# No picture that the manual lacks, none that it does not show.
diff <(ls "$imagens") <(grep -o 'imagens/[a-z-]*\.png' "$imagens/../manual.pt-BR.md" | sed 's/.*\///' | sort)
