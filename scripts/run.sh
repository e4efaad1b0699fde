#!/usr/bin/env bash
# Installs what is missing, builds, and runs the companion against the bridge simulator.
set -euo pipefail
cd "$(dirname "$0")/.."
# Let ccache reuse objects built from another checkout of the same sources.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
bash scripts/install-deps.sh
cmake --preset dev
cmake --build --preset dev
# Headless text when there is no display; the simulator is the bundled bridge and runs as our child.
exec build/dev/bundle/bin/orvan-companion "$@"
