#!/usr/bin/env bash
# Taking in a flood of output beside `cat` and other process runners; see scripts/bench.
exec python3 "$(dirname "$0")/capture.py"
