#!/usr/bin/env bash
# The scan of made trees beside `find`; see scripts/bench.
exec python3 "$(dirname "$0")/scan.py"
