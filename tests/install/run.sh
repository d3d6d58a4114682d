#!/usr/bin/env bash
# Installs the release build into a scratch prefix and uses it the way people outside this tree
# would: a CMake project (find_package(Quillix), Quillix::core) and a pkg-config build
# (quillix-core) compile tests/install/consumer.cpp against the prefix and run it; the installed
# `quillix` lists the plug-in; the .deb that cpack makes is unpacked into a scratch root and its
# `quillix` lists the plug-in too. Installed programs run with the build folder hidden (a
# private mount over it, where the system allows it), and their run paths must not name it. Ends with one line "install: N passed, M failed"; exits non-zero on any failure.
#
#   tests/install/run.sh [BUILD_DIR]     # default build/release, already built
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$(realpath "${1:-build/release}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

passed=0
failed=0
# check NAME COMMAND...: runs the command quietly and counts it; shows its output on failure.
check() {
  local name=$1
  shift
  if "$@" >"$scratch/check.log" 2>&1; then
    passed=$((passed + 1))
    echo "  ok    $name"
  else
    failed=$((failed + 1))
    echo "  FAIL  $name"
    tail -n 20 "$scratch/check.log" | sed 's/^/        /'
  fi
}

# Runs a command with the build folder replaced by an empty one, so that nothing installed can
# reach back into it. Without the rights for a private mount it runs as is; the run-path check
# below still holds the installed files to the same rule.
if unshare --mount true 2>/dev/null; then
  hidden() {
    unshare --mount sh -c 'mount -t tmpfs none "$0" && exec "$@"' "$build" "$@"
  }
else
  echo "  (no private mounts here: installed programs run with the build tree in place)"
  hidden() { "$@"; }
fi

# The installed host finds its plug-in by itself, in lib/quillix/ beside bin/.
installed_quillix() {
  local root=$1
  shift
  hidden "$root/bin/quillix" "$@"
}
# Whether the installed host under $1 lists every node (read whole: no early close of the pipe).
lists_plugin() {
  installed_quillix "$1" list >"$scratch/list.txt" && grep -q '^Nodes (29):' "$scratch/list.txt"
}

no_build_run_paths() {
  local file
  for file in "$@"; do
    if readelf -d "$file" | grep -E 'R(UN)?PATH' | grep -qF "$build"; then
      echo "$file: run path names the build tree: $(readelf -d "$file" | grep -E 'R(UN)?PATH')"
      return 1
    fi
  done
}

prefix=$scratch/prefix
echo "== install: $build into a scratch prefix, consumers, the .deb"
check "cmake --install" cmake --install "$build" --prefix "$prefix"
check "installed run paths are relative" no_build_run_paths \
  "$prefix/bin/quillix" "$prefix/lib/libxsisdk.so" "$prefix/lib/quillix/libQuillix.so"
check "quillix list from the prefix" lists_plugin "$prefix"

cmake_consumer() {
  cmake -S tests/install/cmake_consumer -B "$scratch/cmake_consumer" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release &&
    cmake --build "$scratch/cmake_consumer" &&
    hidden "$scratch/cmake_consumer/cmake_consumer" | grep -qx ok
}
check "find_package(Quillix) consumer" cmake_consumer

pkgconfig_consumer() {
  local flags
  flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs quillix-core) &&
    g++ -std=c++20 tests/install/consumer.cpp $flags -o "$scratch/pkgconfig_consumer" &&
    hidden "$scratch/pkgconfig_consumer" | grep -qx ok
}
check "pkg-config quillix-core consumer" pkgconfig_consumer

debian_package() {
  cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" &&
    dpkg -x "$scratch"/package/*.deb "$scratch/root" &&
    lists_plugin "$scratch/root/usr"
}
check "cpack -G DEB, unpacked: quillix list" debian_package

echo "install: $passed passed, $failed failed"
((failed == 0))
