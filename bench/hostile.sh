#!/usr/bin/env bash
# What the terminal engine does with input that wants to harm it; see scripts/bench.
exec "$ORV_BENCH_BUILD/bench/orv-bench-hostile" --table
