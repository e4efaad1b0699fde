#!/usr/bin/env bash
# Builds the Debian package: an optimised build whose installed folder goes under
# /opt/orvan-companion, with the command, launcher, icons and metadata linked into /usr.
# Usage: scripts/package.sh [BUILD_DIR]   (default build/package); prints the .deb's path.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/package}

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DORVAN_BUILD_TESTS=OFF -DORVAN_BUILD_BENCH=OFF -DORVAN_DEB_LAYOUT=ON >/dev/null
cmake --build "$build"
rm -f "$build"/*.deb
# fakeroot so the files in the archive belong to root whoever builds it.
(cd "$build" && fakeroot cpack -G DEB >/dev/null)
deb=$(ls "$build"/*.deb)
echo "$deb"
if command -v lintian >/dev/null; then
  lintian --info "$deb" || true
fi
