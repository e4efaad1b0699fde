#!/usr/bin/env bash
# Idle cost of the companion while it supervises the bundled simulator: after 20 s to settle, it
# samples for 60 s and reports PSS and RSS, CPU as a share of one core, threads, and how many TCP
# connections it opened to the bridge. Three runs: the GUI on Xvfb, the GUI offscreen, headless.
# Usage: bench/idle.sh [build folder] (default build/release, else build/dev)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-}
if [[ -z "$build" ]]; then
  if [[ -x build/release/bundle/bin/orvan-companion ]]; then build=build/release; else build=build/dev; fi
fi
program="$build/bundle/bin/orvan-companion"
[[ -x "$program" ]] || { echo "no program at $program: build first" >&2; exit 1; }
settle=${SETTLE:-20}
span=${SPAN:-60}

if curl -fsS -m 1 http://127.0.0.1:8787/healthz >/dev/null 2>&1; then
  echo "port 8787 is in use; stop whatever serves it first" >&2
  exit 1
fi

# CPU time of every thread, in nanoseconds (finer than the clock ticks of /proc/PID/stat).
cpu_ns() { cat /proc/"$1"/task/*/schedstat 2>/dev/null | awk '{s += $1} END {printf "%d", s}'; }
kib() { awk -v k="$2" '$1 == k":" {print $2}' "/proc/$1/$3"; }

measure() {
  local label=$1; shift
  local home; home=$(mktemp -d)
  local pid
  env HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/share" "$@" "$program" \
    ${HEADLESS:+--headless} >/dev/null 2>&1 &
  pid=$!
  sleep "$settle"
  if ! kill -0 "$pid" 2>/dev/null; then echo "$label: the program ended early" >&2; rm -rf "$home"; return 1; fi
  local start_ns; start_ns=$(cpu_ns "$pid")
  local ports; ports=$(mktemp)
  for ((i = 0; i < span; i++)); do
    ss -tnpH state established "( dport = :8787 )" 2>/dev/null | grep "pid=$pid," | awk '{print $3}' >> "$ports" || true
    sleep 1
  done
  local end_ns; end_ns=$(cpu_ns "$pid")
  local pss rss threads connections cpu
  pss=$(kib "$pid" Pss smaps_rollup)
  rss=$(kib "$pid" VmRSS status)
  threads=$(kib "$pid" Threads status)
  connections=$(sort -u "$ports" | wc -l)
  cpu=$(awk -v d=$((end_ns - start_ns)) -v s="$span" 'BEGIN {printf "%.3f", 100 * d / 1e9 / s}')
  printf '%-14s PSS %6.1f MiB  RSS %6.1f MiB  CPU %6s %% of a core  threads %2s  connections to the bridge %s\n' \
    "$label" "$(awk -v k="$pss" 'BEGIN {print k / 1024}')" "$(awk -v k="$rss" 'BEGIN {print k / 1024}')" \
    "$cpu" "$threads" "$connections"
  kill -TERM "$pid"; wait "$pid" 2>/dev/null || true
  rm -f "$ports"; rm -rf "$home"
  # Give our bridge a moment to let the port go before the next run.
  for _ in $(seq 50); do curl -fsS -m 1 http://127.0.0.1:8787/healthz >/dev/null 2>&1 || break; sleep 0.2; done
}

display=:97
Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null || true' EXIT
sleep 1
measure "GUI on Xvfb" DISPLAY="$display" QT_QPA_PLATFORM=xcb
measure "GUI offscreen" QT_QPA_PLATFORM=offscreen
HEADLESS=1 measure "headless" DISPLAY= WAYLAND_DISPLAY=
