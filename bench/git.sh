#!/usr/bin/env bash
# Badges beside plain git, and the parsers beside git's own time; see scripts/bench.
exec python3 "$(dirname "$0")/git.py"
