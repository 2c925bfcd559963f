#!/usr/bin/env bash
# The memory of the window after an hour of output; see scripts/bench.
exec python3 "$(dirname "$0")/hour.py"
