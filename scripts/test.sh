#!/usr/bin/env bash
# Builds and runs every test: the optimised build (its ctest run includes the Python
# package's pytest suite, label "python") and its install (tests/install/run.sh), then
# AddressSanitizer + UndefinedBehavior Sanitizer, then ThreadSanitizer over the tests that run
# nodes on several threads, then each fuzz target for a bounded time from its committed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh test bench blender
jobs=$(nproc)
summary=$(mktemp)
trap 'rm -f "$summary"' EXIT
run_ctest() { ctest "$@" | tee -a "$summary"; }

for preset in release asan; do
  echo "== $preset build and tests"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  run_ctest --preset "$preset" -j "$jobs"
  if [[ "$preset" == release ]]; then
    echo "== install into a scratch prefix, consumers, the .deb"
    tests/install/run.sh build/release | tee -a "$summary"
  fi
done

echo "== tsan build and threaded tests"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j "$jobs"
run_ctest --preset tsan -j "$jobs" -L threads

echo "== fuzzing"
scripts/fuzz.sh

# Every run above stops the script on its first failure, so reaching here means all passed.
total=$(grep -oE 'tests failed out of [0-9]+|^install: [0-9]+ passed' "$summary" |
  awk '/^install/ { sum += $2; next } { sum += $5 } END { print sum + 0 }')
echo "tests: $total passed, 0 failed"
