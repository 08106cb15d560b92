#!/usr/bin/env bash
# Fails when a C++ source of the project drifts from the checked-in .clang-format.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
echo "format: clean"
