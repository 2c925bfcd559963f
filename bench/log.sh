#!/usr/bin/env bash
# The model of a service's output under a burst of lines; see scripts/bench.
"$ORV_BENCH_BUILD/bench/orv-bench-log"
printf "\nOf the process's own time.\n"
