#!/usr/bin/env bash
# Builds the library, its tools and tests, and runs every test: once in a plain build and once under
# AddressSanitizer and UndefinedBehaviorSanitizer; then replays the fuzzer's corpus and fuzzes the
# plan for a minute (ORRIN_FUZZ_SECONDS to change that, 0 to replay only).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/check-format.sh
scripts/check-windows.sh
jobs=$(nproc)

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j "$jobs"
ctest --test-dir build --output-on-failure -j "$jobs"

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DORRIN_SANITIZE=ON
cmake --build build-asan -j "$jobs"
ctest --test-dir build-asan --output-on-failure -j "$jobs"

# A fixed seed, so that the minute of fuzzing is the same search each time (ORRIN_FUZZ_SEED= for a
# new one).
ORRIN_FUZZ_SEED=${ORRIN_FUZZ_SEED-1} scripts/fuzz.sh "${ORRIN_FUZZ_SECONDS:-60}"
