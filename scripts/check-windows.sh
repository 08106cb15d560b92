#!/usr/bin/env bash
# Cross-builds the library as orrin32.dll with MinGW-w64, warning-free, and checks that its export
# table holds the public interface: CPlan's public members, CVary and InitOrrinDLL.
set -euo pipefail
cd "$(dirname "$0")/.."
build=build-win
cmake -S . -B "$build" -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake -DCMAKE_BUILD_TYPE=Release \
      -DORRIN_BUILD_TESTS=OFF -DORRIN_BUILD_BENCH=OFF >/dev/null 2>&1
log=$(cmake --build "$build" -j "$(nproc)" --target orrin32 2>&1)
if grep -qE '(warning|error):' <<<"$log"; then
  echo "$log"
  echo "windows build: warnings or errors"
  exit 1
fi
exports=$(x86_64-w64-mingw32-objdump -p "$build/orrin32.dll" | x86_64-w64-mingw32-c++filt)
missing=0
# Every public member function declared in CPlan.h, by name.
for name in InitOrrinDLL CVary::calc_departure CVary::calc_latitude CVary::calc_tvd \
    CVary::operator= CPlan::CPlan CPlan::operator= CPlan::K_BACKTARGET \
    $(sed -n '/^public:/,/^private:/p' plan/CPlan.h |
      grep -oE '^\s+(static\s+)?[A-Za-z_:<>0-9]+\s+[A-Za-z_][A-Za-z_0-9]*\(' |
      sed -E 's/.*\s([A-Za-z_][A-Za-z_0-9]*)\($/CPlan::\1/' | sort -u); do
  if ! grep -qE "(^|[^A-Za-z_0-9])${name}([([ ]|$)" <<<"$exports"; then
    echo "not exported: $name"
    missing=1
  fi
done
[ "$missing" -eq 0 ] || exit 1
echo "windows build: orrin32.dll exports the public interface"
