#!/usr/bin/env bash
# Terminals in real windows: output, latency, memory, Ctrl-C; see scripts/bench.
exec python3 "$(dirname "$0")/view.py"
