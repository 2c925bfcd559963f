#!/usr/bin/env bash
# The terminal engine beside others, on bytes in memory; see scripts/bench.
exec python3 "$(dirname "$0")/term.py"
