#!/usr/bin/env bash
# An agent's stream beside a bare parse of its lines; see scripts/bench.
exec "$ORV_BENCH_BUILD/bench/orv-bench-agents" "$(dirname "$0")/../tests/agents/streams/claude-edit.jsonl"
