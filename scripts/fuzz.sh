#!/usr/bin/env bash
# Builds the plan fuzzer with clang (libFuzzer, ASan, UBSan) and runs it: first over the checked-in
# corpus, then for the given number of seconds (default 60; 0 replays the corpus only) with new
# inputs kept in build-fuzz/corpus. fuzz/make_corpus.py writes the checked-in seeds.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORRIN_FUZZ=ON \
    -DORRIN_BUILD_TESTS=OFF -DORRIN_BUILD_BENCH=OFF >/dev/null
cmake --build build-fuzz -j "$(nproc)" --target fuzz_plan >/dev/null
mkdir -p build-fuzz/corpus
# An input that runs for seconds is a hang (each call is held to 10 ms by the fuzzer itself).
build-fuzz/fuzz/fuzz_plan -runs=0 -timeout=10 fuzz/corpus
# ORRIN_FUZZ_SEED fixes libFuzzer's random seed, so that a run can be repeated.
seed=()
if [ -n "${ORRIN_FUZZ_SEED:-}" ]; then seed=(-seed="$ORRIN_FUZZ_SEED"); fi
if [ "$seconds" -gt 0 ]; then
    build-fuzz/fuzz/fuzz_plan "${seed[@]}" -max_total_time="$seconds" -timeout=10 \
        -artifact_prefix=build-fuzz/ build-fuzz/corpus fuzz/corpus
fi
