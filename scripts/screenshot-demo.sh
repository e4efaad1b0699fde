#!/bin/sh
# Draws the renderer's sample window in light and dark under the offscreen platform and saves
# the pictures, for people to look at. Usage: scripts/screenshot-demo.sh [build folder] [out folder]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/dev}
out=${2:-$build/screenshots}
cmake --build "$build" --target orvan-view-demo -j2
mkdir -p "$out"
export QT_QPA_PLATFORM=offscreen
"$build/src/orvan-view-demo" --out "$out/view-demo-light.png"
"$build/src/orvan-view-demo" --dark --out "$out/view-demo-dark.png"
