#!/usr/bin/env bash
# Frames of the window under load, on a screen of Xvfb; see scripts/bench.
set -euo pipefail
number=$(mktemp)
Xvfb -displayfd 3 -screen 0 1400x1000x24 -nolisten tcp 3>"$number" 2>/dev/null &
server=$!
trap 'kill "$server"; rm -f "$number"' EXIT
while [[ ! -s $number ]]; do
    kill -0 "$server"
    sleep 0.1
done
DISPLAY=:$(<"$number") openbox >/dev/null 2>&1 &
DISPLAY=:$(<"$number") QT_QUICK_BACKEND=software "$ORV_BENCH_BUILD/bench/orv-bench-frames"
cat <<'TEXT'

Milliseconds, on Xvfb with Qt's software renderer. "Own work" is the processor time of the thread that draws: what is over
16 ms by the clock only was taken by the scan's threads and the services on the same cores.
TEXT
