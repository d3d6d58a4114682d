#!/usr/bin/env bash
# Builds the libFuzzer targets (the fuzz preset: clang-14, ASan+UBSan) and runs each one for a
# bounded time from its committed corpus (fuzz/corpus/<target>/). Ends with one table of
# executions and coverage per target; fails when any target crashed, leaked, timed out or ran
# out of memory, and leaves the failing input and the log in the scratch folder.
#
#   scripts/fuzz.sh [seconds-per-target] [target...]
#       The CI run. The committed folder is only read: libFuzzer writes the inputs it finds
#       to the first corpus folder it is given, here a scratch folder. Default 40 s per
#       target, so that ten targets fit the CI's seven minutes.
#   scripts/fuzz.sh --grow [seconds-per-target] [target...]
#       Grows the committed corpora (run it offline, under nice, one target at a time): runs
#       of 60 s with seeds 1, 2, ... until one adds no coverage or the time (default 240 s)
#       is spent, then a merge (-merge=1) keeps the hand-named seeds and regression inputs
#       and adds only the fewest found inputs that reach new coverage.
#
#   QUILLIX_FUZZ_SECONDS  seconds per target when not given
#   QUILLIX_FUZZ_SEED     libFuzzer's seed of the CI run (default 1: a failure reproduces)
#   QUILLIX_FUZZ_SCRATCH  scratch folder (default: a new temporary folder)
set -euo pipefail
cd "$(dirname "$0")/.."

grow=0
if [[ "${1:-}" == "--grow" ]]; then
  grow=1
  shift
fi
seconds="${1:-${QUILLIX_FUZZ_SECONDS:-$((grow ? 240 : 40))}}"
shift || true
targets=("$@")
if ((${#targets[@]} == 0)); then
  targets=(fuzz_geometry_set fuzz_path_description fuzz_vertex_path fuzz_vertex_path_reuse
           fuzz_line_simplify fuzz_line_resample fuzz_recent_scene fuzz_scene_file fuzz_mesh_file
           fuzz_quillix_request)
fi

QUILLIX_WITH_FUZZ=1 scripts/install-deps.sh
echo "== fuzz build"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)" >/dev/null

scratch="${QUILLIX_FUZZ_SCRATCH:-$(mktemp -d -t quillix-fuzz.XXXXXX)}"
mkdir -p "$scratch"
echo "== fuzzing ${#targets[@]} targets for ${seconds} s each; scratch folder $scratch"

# fuzz TARGET SEED SECONDS LOG CORPUS...: one bounded single-process run; a slow input (10 s)
# or 2 GB of memory counts as a failure.
fuzz() {
  local t=$1 seed=$2 time=$3 log=$4
  shift 4
  build/fuzz/bin/"$t" -seed="$seed" -max_total_time="$time" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$scratch/$t/" "$@" >"$log" 2>&1
}
# The value after "NAME: " on a run's last stats line: "#<runs> DONE cov: <edges> ft: <features>
# corp: <inputs>/<size> ...", or the last progress line of a run that stopped on a failure.
field() { grep -E '^#[0-9]+[[:space:]]' "$2" | tail -1 | sed -n "s/.* $1: \([^ ]*\).*/\1/p"; }
runs() { sed -n 's/^stat::number_of_executed_units: *//p' "$1"; }
report() {
  echo "$1: FAILED; input and log in $scratch/$1/"
  grep -E 'ERROR|SUMMARY|runtime error|invariant' "$2" | head -5 || true
}

status=0
rows=()
for t in "${targets[@]}"; do
  committed="fuzz/corpus/$t"
  rm -rf "${scratch:?}/$t"
  mkdir -p "$scratch/$t/new"
  seeds=$(find "$committed" -type f | wc -l)
  result=ok
  if ((grow == 0)); then
    log="$scratch/$t/log"
    fuzz "$t" "${QUILLIX_FUZZ_SEED:-1}" "$seconds" "$log" "$scratch/$t/new" "$committed" ||
      { result=FAILED; status=1; report "$t" "$log"; }
    total=$(runs "$log")
  else
    total=0
    previous=
    for ((k = 1; k * 60 <= seconds || k == 1; ++k)); do
      log="$scratch/$t/log.$k"
      if ! fuzz "$t" "$k" 60 "$log" "$scratch/$t/new" "$committed"; then
        result=FAILED; status=1; report "$t" "$log"; break
      fi
      total=$((total + $(runs "$log")))
      [[ "$(field cov "$log")" == "$previous" ]] && break
      previous=$(field cov "$log")
    done
    if [[ $result == ok ]]; then
      # Inputs named by their hash came from earlier merges: they compete again with the new.
      find "$committed" -type f -regextype egrep -regex '.*/[0-9a-f]{40}' -exec mv -t "$scratch/$t/new" {} +
      build/fuzz/bin/"$t" -merge=1 -timeout=10 -rss_limit_mb=2048 "$committed" "$scratch/$t/new" \
        >"$scratch/$t/merge.log" 2>&1 || { result=FAILED; status=1; report "$t" "$scratch/$t/merge.log"; }
    fi
  fi
  files=$(find "$committed" -type f -printf '%s\n' | awk '{n++; b+=$1} END {printf "%d files, %d bytes", n, b}')
  rows+=("$(printf '%-24s %-6s %12s %7s %8s %6s  %s' "$t" "$result" "${total:-?}" \
    "$(field cov "$log")" "$(field ft "$log")" "$seeds" "$files")")
done

echo "== fuzzing summary (${seconds} s per target$( ((grow)) && echo ", grown" ))"
printf '%-24s %-6s %12s %7s %8s %6s  %s\n' target result executions cov ft inputs "committed corpus"
printf '%s\n' "${rows[@]}"
exit "$status"
