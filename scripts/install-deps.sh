#!/usr/bin/env bash
# Installs the Debian packages Quillix needs, when they are missing. Safe to run again.
#
#   scripts/install-deps.sh [test] [bench] [fuzz] [blender]
#
# Without arguments: what building and running the tool, the plug-in and the Python package
# need, and nothing more (the demo). Each group adds what that job needs on top.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  nlohmann-json3-dev libcli11-dev libtinyobjloader-dev libtinygltf-dev libcairo2-dev
  pybind11-dev python3-dev python3-numpy help2man
)
for group in "$@"; do
  case "$group" in
    test) packages+=(googletest libgtest-dev libgmock-dev python3-pytest python3-hypothesis clang-format-14) ;;
    # The comparison libraries of the benchmarks are found only when benchmarks are built.
    bench) packages+=(libbenchmark-dev libboost-dev libopenmesh-dev time) ;;
    fuzz) packages+=(clang-14 libclang-rt-14-dev) ;;
    blender) packages+=(blender) ;;
    *) echo "install-deps: unknown group '$group' (test, bench, fuzz, blender)" >&2; exit 2 ;;
  esac
done
if [[ "${QUILLIX_WITH_FUZZ:-0}" == "1" ]]; then
  packages+=(clang-14 libclang-rt-14-dev)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "Installing: ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
