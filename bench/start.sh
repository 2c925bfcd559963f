#!/usr/bin/env bash
# The start of the window beside an empty Qt Quick window; see scripts/bench.
exec python3 "$(dirname "$0")/start.py"
