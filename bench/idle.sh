#!/usr/bin/env bash
# What the companion costs while nothing changes, beside the least any Qt program costs to make
# the same request: bench_idle_floor asks for the bridge's status every 2 s over one kept-alive
# connection with the local key and drops the answer (beside the GUI it is a widgets program with
# one empty window about the size of the main window). Each companion run (headless, then the GUI
# on the offscreen platform) supervises its own bundled simulator on 127.0.0.1:8787 and the floor
# polls that same simulator at the same time, so both see the same machine and the same answers.
#
#   instructions per poll  callgrind, counters zeroed once start-up is over and dumped WINDOW
#                          seconds later (so start-up is left out), divided by the polls in the
#                          window (one every 2 s)
#   CPU                    on-CPU time of every thread over SPAN seconds, as a share of one core
#                          (schedstat: the same time as utime+stime of /proc/PID/stat, in ns
#                          rather than 10 ms ticks, which an idle minute barely reaches)
#   PSS                    /proc/PID/smaps_rollup at the end of the CPU span
#   answer to frame        headless only, under strace: the simulator is renamed, and the time
#                          from the read that brings the new name to the write of the frame
#                          that shows it, three times
#
# Usage: bench/idle.sh [build folder]   (default build/bench: RelWithDebInfo with
#        orvan-companion, bundle-simulator and bench_idle_floor built)
# SETTLE, SPAN, WINDOW, CG_SETTLE (seconds) shorten or lengthen the runs; SKIP_CALLGRIND=1 or SKIP_LIVE=1
# leaves a part out; MODES="gui" (or "headless") measures one front end; KEEP=1 keeps the work folder (callgrind dumps, strace log).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/bench}
program="$build/bundle/bin/orvan-companion"
floor="$build/bench/bench_idle_floor"
for needed in "$program" "$floor" "$build/bundle/bin/orvan"; do
  [[ -x "$needed" ]] || { echo "no program at $needed: build it first" >&2; exit 1; }
done
settle=${SETTLE:-15}
span=${SPAN:-60}
window=${WINDOW:-40}
port=8787
status_url="http://127.0.0.1:$port/companion/status"

if curl -s -m 1 "http://127.0.0.1:$port/healthz" >/dev/null 2>&1; then
  echo "port $port is in use; stop whatever serves it first" >&2
  exit 1
fi

work=$(mktemp -d)
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill -TERM "$pid" 2>/dev/null || true; done
  sleep 0.5
  for pid in "${pids[@]}"; do kill -KILL "$pid" 2>/dev/null || true; done
  if [[ -n "${KEEP:-}" ]]; then echo "kept $work" >&2; else rm -rf "$work"; fi
}
trap cleanup EXIT

cpu_ns() { cat /proc/"$1"/task/*/schedstat 2>/dev/null | awk '{s += $1} END {printf "%d", s}'; }
pss_kib() { awk '$1 == "Pss:" {print $2}' "/proc/$1/smaps_rollup"; }

# Starts the companion in a home of its own ("headless" or "gui") under the command given in
# front of it, if any; sets `companion` and `key`, and waits until its bridge answers.
start_companion() {
  local mode=$1; shift
  local home="$work/$mode-home-$RANDOM"
  mkdir -p "$home/run" "$home/config/orvan" && chmod 700 "$home/run"
  # An owner who answered the first start's question about reports long ago: the idle state
  # measured is the everyday one, not the first minute's open question.
  echo '{"orvan.consent.on":false,"orvan.consent.answered":2}' >"$home/config/orvan/com.quillmere.orvan.companion.json"
  local args=()
  [[ $mode == headless ]] && args=(--headless)
  env HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/share" XDG_RUNTIME_DIR="$home/run" \
    QT_QPA_PLATFORM=offscreen DISPLAY= WAYLAND_DISPLAY= "$@" "$program" "${args[@]}" \
    >"$home/stdout" 2>"$home/stderr" </dev/null &
  companion=$!
  pids+=("$companion")
  key=""
  for _ in $(seq 600); do
    key=$(find "$home" -name local.key 2>/dev/null | head -1)
    if [[ -n "$key" ]] && curl -s -m 1 -o /dev/null -H "X-Tulm-Local: $(cat "$key")" "$status_url"; then return 0; fi
    kill -0 "$companion" 2>/dev/null || { echo "$mode: the companion ended early" >&2; cat "$home/stderr" >&2; exit 1; }
    sleep 0.1
  done
  echo "$mode: its bridge never answered" >&2
  exit 1
}

stop_all() {
  for pid in "${pids[@]}"; do kill -TERM "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
  pids=()
  for _ in $(seq 50); do curl -s -m 1 "http://127.0.0.1:$port/healthz" >/dev/null 2>&1 || break; sleep 0.2; done
}

declare -A cpu pss ipp lag

# The floor for a mode: beside the GUI it is a widgets program with one empty window. With a
# command before "--", the floor runs under it.
floor_with() {
  local mode=$1; shift
  local before=() rest=("$@")
  local i
  for ((i = 0; i < ${#rest[@]}; i++)); do
    if [[ ${rest[i]} == -- ]]; then before=("${rest[@]:0:i}"); rest=("${rest[@]:i+1}"); break; fi
  done
  local widgets=()
  [[ $mode == gui ]] && widgets=(--widgets)
  exec env QT_QPA_PLATFORM=offscreen "${before[@]}" "$floor" "${widgets[@]}" "${rest[@]}"
}

# CPU and PSS of a companion and the floor beside it, at the same time.
measure_live() {
  local mode=$1
  start_companion "$mode"
  floor_with "$mode" "$key" "$status_url" >/dev/null 2>&1 &
  local floor_pid=$!
  pids+=("$floor_pid")
  sleep "$settle"
  local c0 f0 c1 f1
  c0=$(cpu_ns "$companion"); f0=$(cpu_ns "$floor_pid")
  sleep "$span"
  c1=$(cpu_ns "$companion"); f1=$(cpu_ns "$floor_pid")
  cpu[$mode]=$(awk -v d=$((c1 - c0)) -v s="$span" 'BEGIN {printf "%.4f", 100 * d / 1e9 / s}')
  cpu[floor-$mode]=$(awk -v d=$((f1 - f0)) -v s="$span" 'BEGIN {printf "%.4f", 100 * d / 1e9 / s}')
  pss[$mode]=$(pss_kib "$companion")
  pss[floor-$mode]=$(pss_kib "$floor_pid")
  if [[ $mode == headless ]]; then measure_lag; fi
  stop_all
}

# Renames the simulator three times while strace watches the headless companion's reads and writes.
measure_lag() {
  local trace="$work/strace"
  strace -f -ttt -qq -e trace=read,recvfrom,readv,write,writev,sendto -s 4096 -p "$companion" -o "$trace" &
  local tracer=$!
  sleep 2
  local name
  for n in 1 2 3; do
    name="Bench Mac $n $RANDOM"
    curl -s -m 2 -o /dev/null -H "X-Tulm-Local: $(cat "$key")" -H 'Content-Type: application/json' \
      -d "{\"name\":\"$name\"}" "http://127.0.0.1:$port/companion/name"
    sleep 5
    echo "$name" >>"$work/names"
  done
  kill -INT "$tracer" 2>/dev/null || true
  wait "$tracer" 2>/dev/null || true
  lag[headless]=$(python3 - "$trace" "$work/names" <<'EOF'
import re, sys
lines = open(sys.argv[1], errors="replace").read().splitlines()
names = [n.strip() for n in open(sys.argv[2]) if n.strip()]
call = re.compile(r"^\d+\s+([\d.]+)\s+(\w+)\((\d+),\s*\"(.*)")
# A call that blocked in one thread while another ran ends on a line of its own, without its fd.
resumed = re.compile(r"^\d+\s+([\d.]+)\s+<\.\.\. (\w+) resumed>\s*\"(.*)")
lags = []
for name in names:
    read_at = None
    for line in lines:
        m = call.match(line)
        if m:
            at, kind, fd, data = float(m.group(1)), m.group(2), int(m.group(3)), m.group(4)
        elif (r := resumed.match(line)):
            at, kind, fd, data = float(r.group(1)), r.group(2), 3, r.group(3)
        else:
            continue
        if name not in data:
            continue
        if kind in ("read", "recvfrom", "readv") and fd > 2 and read_at is None:
            read_at = at
        elif kind in ("write", "writev") and fd == 1 and read_at is not None:
            lags.append((at - read_at) * 1000)
            break
print(" ".join("%.2f" % l for l in lags) if lags else "not seen")
EOF
)
}

# Instructions per poll under callgrind, the companion and the floor beside it.
measure_instructions() {
  local mode=$1
  # --headless hands over to the text program by exec; the bridge it starts is not ours to count.
  start_companion "$mode" valgrind --tool=callgrind --dump-instr=no --trace-children=yes \
    --trace-children-skip='*/orvan' --callgrind-out-file="$work/cg-$mode.%p"
  local c=$companion
  floor_with "$mode" valgrind --tool=callgrind --dump-instr=no --callgrind-out-file="$work/cg-floor-$mode.%p" \
    -- "$key" "$status_url" >/dev/null 2>&1 &
  local f=$!
  pids+=("$f")
  # Under valgrind the window program takes over a minute to start and draw its first frames.
  sleep "${CG_SETTLE:-$((settle * 2 > 90 ? settle * 2 : 90))}"
  callgrind_control -z "$c" >/dev/null 2>&1; callgrind_control -z "$f" >/dev/null 2>&1
  sleep "$window"
  callgrind_control -d "$c" >/dev/null 2>&1; callgrind_control -d "$f" >/dev/null 2>&1
  sleep 1
  local polls=$((window / 2))
  ipp[$mode]=$(instructions "$work/cg-$mode.$c" "$polls")
  ipp[floor-$mode]=$(instructions "$work/cg-floor-$mode.$f" "$polls")
  stop_all
}

# The instructions of a process's last dump (every thread), per poll.
instructions() {
  local total=0 file
  for file in "$1".*; do
    [[ -f "$file" ]] || continue
    local n; n=$(awk '/^(summary|totals):/ {print $2; exit}' "$file")
    total=$((total + ${n:-0}))
  done
  awk -v t="$total" -v p="$2" 'BEGIN {printf "%.2f", t / p / 1e6}'
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN {if (b + 0 > 0 && a != "") printf "%.2f", a / b; else printf "-"}'; }
mib() { awk -v k="$1" 'BEGIN {if (k != "") printf "%.1f", k / 1024; else printf "-"}'; }

modes=${MODES:-headless gui}
if [[ -z "${SKIP_LIVE:-}" ]]; then
  for mode in $modes; do measure_live "$mode"; done
fi
if [[ -z "${SKIP_CALLGRIND:-}" ]]; then
  for mode in $modes; do measure_instructions "$mode"; done
fi

printf '\n%-34s %12s %12s %12s %10s %10s %10s\n' "" "floor" "headless" "GUI" "headless/" "GUI/" "target"
printf '%-34s %12s %12s %12s %10s %10s %10s\n' "" "" "" "(offscreen)" "floor" "floor" ""
row() { printf '%-34s %12s %12s %12s %10s %10s %10s\n' "$@"; }
if [[ -z "${SKIP_CALLGRIND:-}" ]]; then
  row "instructions per poll (M)" "${ipp[floor-headless]:-}/${ipp[floor-gui]:-}" "${ipp[headless]:-}" "${ipp[gui]:-}" \
    "$(ratio "${ipp[headless]:-}" "${ipp[floor-headless]:-}")" "$(ratio "${ipp[gui]:-}" "${ipp[floor-gui]:-}")" "<= 1.30"
fi
if [[ -z "${SKIP_LIVE:-}" ]]; then
  row "CPU (% of a core)" "${cpu[floor-headless]:-}/${cpu[floor-gui]:-}" "${cpu[headless]:-}" "${cpu[gui]:-}" \
    "$(ratio "${cpu[headless]:-}" "${cpu[floor-headless]:-}")" "$(ratio "${cpu[gui]:-}" "${cpu[floor-gui]:-}")" "<= 1.30"
  row "PSS (MiB)" "$(mib "${pss[floor-headless]:-}")/$(mib "${pss[floor-gui]:-}")" "$(mib "${pss[headless]:-}")" \
    "$(mib "${pss[gui]:-}")" "$(ratio "${pss[headless]:-}" "${pss[floor-headless]:-}")" \
    "$(ratio "${pss[gui]:-}" "${pss[floor-gui]:-}")" "<= 1.25"
fi
echo
echo "answer to frame, headless, under strace (ms): ${lag[headless]:-not measured}   (target < 1 ms)"
echo "floor columns: the floor beside the headless run / beside the GUI run; windows: CPU ${span} s," \
  "callgrind ${window} s ($((window / 2)) polls)"
