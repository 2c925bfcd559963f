#!/usr/bin/env bash
# The command palette over 2,000 projects; see scripts/bench.
"$ORV_BENCH_BUILD/bench/orv-bench-palette"
printf "\n2,000 projects; 100 times opened and typed into, a letter at a time.\n"
