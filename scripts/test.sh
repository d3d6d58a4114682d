#!/usr/bin/env bash
# Builds and runs every test: the optimised build, then AddressSanitizer + UndefinedBehavior
# Sanitizer, then ThreadSanitizer over the tests that run nodes on several threads.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
jobs=$(nproc)

for preset in release asan; do
  echo "== $preset build and tests"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  ctest --preset "$preset" -j "$jobs"
done

echo "== tsan build and threaded tests"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j "$jobs"
ctest --preset tsan -j "$jobs" -L threads
scripts/fuzz.sh
