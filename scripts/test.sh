#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
# Let ccache reuse objects built from another checkout of the same sources.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
bash scripts/install-deps.sh
cmake --preset dev
cmake --build --preset dev
QT_QPA_PLATFORM=offscreen ctest --preset dev
