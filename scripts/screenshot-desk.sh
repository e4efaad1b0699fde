#!/usr/bin/env bash
# Pictures of the real "Remote control" window, supervising the bundled simulator, in light and
# dark, drawn offscreen. Usage: scripts/screenshot-desk.sh [build folder] [output folder] [palette]
set -euo pipefail
build=${1:-build/dev}
out=${2:-screenshots}
palette=${3:-orvan}
mkdir -p "$out"
for scheme in light dark; do
  home=$(mktemp -d)
  mkdir -p "$home/config/orvan"
  printf '{"tulm.appearance":"%s","orvan.theme.light":"%s","orvan.theme.dark":"%s"}' "$scheme" "$palette" "$palette" \
    > "$home/config/orvan/com.quillmere.orvan.companion.json"
  HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/share" QT_QPA_PLATFORM=offscreen \
    timeout 60 "$build/bundle/bin/orvan-companion" --snapshot "$out/desk-$palette-$scheme.png" 2>/dev/null
  rm -rf "$home"
  echo "saved $out/desk-$palette-$scheme.png"
done
