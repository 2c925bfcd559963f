#!/usr/bin/env bash
# The view of a terminal on a virtual screen: output, frames, latency; and xterm with the same output.
#
#   bench/view.sh PROGRAM     PROGRAM: orv-bench-view of a release build
set -euo pipefail
program=$(realpath "$1")
work=$(mktemp -d)
started=()
finish() {
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    wait
    rm -rf "$work"
}
trap finish EXIT

exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x832x24 -nolisten tcp 2>/dev/null)
started+=($!)
read -r display <&3
export DISPLAY=:$display HOME=$work LANG=C.UTF-8
python3 - "$work" <<'PYTHON'
import random, sys
random.seed(1)
words = "the of error warning building module src/main.cpp linking done 127.0.0.1 GET 200".split()
with open(sys.argv[1] + "/plain", "w") as plain, open(sys.argv[1] + "/coloured", "w") as coloured:
    size = 0
    while size < 20_000_000:
        line = [random.choice(words) for _ in range(random.randint(3, 14))]
        plain.write(" ".join(line) + "\n")
        coloured.write(" ".join(f"\033[{random.choice((0, 1, 31, 32, 33, 36, 90))}m{word}\033[m" for word in line) + "\n")
        size += sum(map(len, line)) + len(line)
PYTHON
for load in plain coloured; do
    for backend in software rhi; do
        echo "== $load, $backend"
        QT_QUICK_BACKEND=$backend "$program" "$work/$load"
    done
    if command -v xterm >/dev/null; then
        echo "== $load, xterm (time until cat has ended)"
        xterm -fa 'DejaVu Sans Mono' -fs 10 -geometry 124x32 -sl 10000 -e bash -c "
            begin=\$(date +%s.%N); cat '$work/$load'; end=\$(date +%s.%N)
            echo \"\$end - \$begin\" | bc >'$work/time'"
        cat "$work/time"
    fi
done
