#!/usr/bin/env bash
# Builds the library and the orrin tool, then solves and plots the bundled slant example.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" >/dev/null
build/tools/orrin/orrin solve examples/slant.json
build/tools/orrin/orrin plot examples/slant.json -o build/slant.svg
