#!/usr/bin/env bash
# Installs what building, testing and the tools need, from Debian's packages, when it is missing.
set -euo pipefail

packages=(g++ cmake make pkg-config libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
          libcli11-dev clang-format g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
          clang libclang-rt-14-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
