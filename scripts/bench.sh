#!/usr/bin/env bash
# Builds in release mode and runs the benchmarks; prints Google Benchmark's table, then every figure
# per item beside the floor (the trigonometry of one minimum-curvature step).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DORRIN_BUILD_TESTS=OFF >/dev/null
cmake --build build-release -j "$(nproc)" --target orrin_bench >/dev/null
build-release/bench/orrin_bench "$@"
