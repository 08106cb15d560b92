#!/usr/bin/env bash
# Builds the library and runs the main job on the bundled example.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" >/dev/null
build/examples/orrin_everyday
