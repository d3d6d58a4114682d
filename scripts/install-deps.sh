#!/usr/bin/env bash
# Installs the Debian packages Quillix builds with, when they are missing. Safe to run again.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev libcli11-dev libboost-dev libtinyobjloader-dev libtinygltf-dev
  libopenmesh-dev
  pybind11-dev python3-dev python3-numpy python3-pytest
)
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
