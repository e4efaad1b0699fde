#!/usr/bin/env bash
# Installs the build to a fresh prefix and checks the folder as a desktop and a user meet it: the
# launcher, metadata and icons are valid, and the installed program runs its bundled bridge and
# writes a login entry that points at itself.
# Usage: check-install.sh BUILD_DIR
set -euo pipefail

build=$1
id=com.quillmere.orvan.companion
work=$(mktemp -d)
program_pid=
cleanup() {
  if [[ -n $program_pid ]] && kill -0 "$program_pid" 2>/dev/null; then kill "$program_pid"; wait "$program_pid" || true; fi
  exec 3>&- || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

if curl -s -m 1 -o /dev/null http://127.0.0.1:8787/healthz; then
  echo "something else already serves port 8787"
  exit 77
fi

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

for f in bin/orvan-companion bin/orvan-companion-text libexec/orvan-companion/orvan; do
  [[ -x $prefix/$f ]] || fail "$f is not an executable in the installed folder"
done
for f in share/man/man1/orvan-companion.1 share/metainfo/$id.metainfo.xml Info.json libexec/orvan-companion/orvan-images.so; do
  [[ -s $prefix/$f ]] || fail "$f is missing"
done
grep -q "\"bundleId\": \"$id\"" "$prefix/Info.json" || fail "Info.json lacks the bundle id"

desktop-file-validate "$prefix/share/applications/$id.desktop"
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" >/dev/null \
  || appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml"

# Every size is a PNG that decodes whole, at the size its folder names.
icons=$prefix/share/icons/hicolor
grep -q "<svg" "$icons/scalable/apps/$id.svg" || fail "the scalable icon is not an SVG"
for size in 16 22 24 32 48 64 128 256; do
  png=$icons/${size}x${size}/apps/$id.png
  pngcheck -q "$png" || fail "$png does not decode"
  pngcheck "$png" | grep -q "(${size}x${size}," || fail "$png is not ${size}x${size}"
done
for state in on off watched unreachable; do
  [[ -f $icons/symbolic/apps/$id-$state-symbolic.svg ]] || fail "no tray icon for $state"
  pngcheck -q "$icons/22x22/apps/$id-$state-symbolic.png" || fail "the $state tray icon does not decode"
done

# The installed program, headless, with a home of its own.
home=$work/home
mkdir -p "$home/run" && chmod 700 "$home/run"
mkfifo "$work/in"
env -u ORVAN_COMPANION_BIN -u TULM_COMPANION_BIN -u DISPLAY -u WAYLAND_DISPLAY \
  HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/share" XDG_RUNTIME_DIR="$home/run" \
  ORVAN_DIR="$home/data" \
  "$prefix/bin/orvan-companion" --headless --quiet-frames <"$work/in" >"$work/out" 2>&1 &
program_pid=$!
exec 3>"$work/in"

wait_for() {
  for _ in $(seq 300); do
    grep -q "$1" "$work/out" && return 0
    kill -0 "$program_pid" 2>/dev/null || break
    sleep 0.1
  done
  cat "$work/out" >&2
  fail "never saw: $1"
}
wait_for "Remote control is on"

# Its bridge is the one in the installed folder.
bridge=$(cut -d' ' -f1 "/proc/$program_pid/task/$program_pid/children")
[[ $(readlink "/proc/$bridge/exe") == "$prefix/libexec/orvan-companion/orvan" ]] \
  || fail "the bridge runs from $(readlink "/proc/$bridge/exe")"

echo 'toggle "Open when you log in"' >&3
entry=$home/config/autostart/$id.desktop
for _ in $(seq 100); do [[ -f $entry ]] && break; sleep 0.1; done
[[ -f $entry ]] || { cat "$work/out" >&2; fail "no login entry was written"; }
desktop-file-validate "$entry"
grep -qx "Exec=$prefix/bin/orvan-companion --launched-at-login" "$entry" \
  || fail "the login entry runs $(grep '^Exec=' "$entry")"
grep -qx "Icon=$id" "$entry" || fail "the login entry has no icon"

kill "$program_pid"
wait "$program_pid" || true
program_pid=
for _ in $(seq 50); do kill -0 "$bridge" 2>/dev/null || break; sleep 0.1; done
! kill -0 "$bridge" 2>/dev/null || fail "the bridge outlived the program"
echo "installed folder checked"
