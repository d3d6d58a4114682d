#!/usr/bin/env bash
# Builds the libFuzzer targets (the fuzz preset: clang-14, ASan+UBSan) and runs each one for a
# bounded time from its committed seed corpus. The corpus is copied to a scratch folder first,
# so the run never changes the committed files. Fails on the first crash, leak, timeout or
# out-of-memory, and leaves the failing input in the scratch folder.
#
#   scripts/fuzz.sh [seconds-per-target] [target...]
#   QUILLIX_FUZZ_SECONDS  seconds per target when not given (default 45)
set -euo pipefail
cd "$(dirname "$0")/.."

QUILLIX_WITH_FUZZ=1 scripts/install-deps.sh
seconds="${1:-${QUILLIX_FUZZ_SECONDS:-45}}"
shift || true
targets=("$@")
if ((${#targets[@]} == 0)); then
  targets=(fuzz_geometry_set fuzz_path_description fuzz_vertex_path fuzz_line_simplify
           fuzz_line_resample fuzz_recent_scene fuzz_scene_file fuzz_mesh_file fuzz_quillix_request)
fi

echo "== fuzz build"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)" >/dev/null

scratch="${QUILLIX_FUZZ_SCRATCH:-$(mktemp -d -t quillix-fuzz.XXXXXX)}"
mkdir -p "$scratch"
echo "== fuzzing ${#targets[@]} targets for ${seconds} s each; scratch folder $scratch"
status=0
for t in "${targets[@]}"; do
  corpus="$scratch/$t/corpus"
  rm -rf "$scratch/$t"
  mkdir -p "$corpus"
  cp -R "fuzz/corpus/$t/." "$corpus/"
  # Single process, bounded time; a slow input (10 s) or 2 GB of memory counts as a failure.
  # A fixed seed makes every run walk the same mutations, so a failure here reproduces.
  if build/fuzz/bin/"$t" -seed="${QUILLIX_FUZZ_SEED:-1}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
       -artifact_prefix="$scratch/$t/" "$corpus" >"$scratch/$t/log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$scratch/$t/log")
    cov=$(grep -o 'cov: [0-9]*' "$scratch/$t/log" | tail -1)
    echo "$t: ok, ${runs:-?} executions, ${cov:-cov: ?}"
  else
    status=1
    echo "$t: FAILED; input and log in $scratch/$t/"
    grep -E 'ERROR|SUMMARY|runtime error|invariant' "$scratch/$t/log" | head -5 || true
  fi
done
exit "$status"
