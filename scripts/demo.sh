#!/usr/bin/env bash
# Builds Quillix and shows what it does in one screenful per part: the plug-in's identity and
# nodes, every example request with a short summary of its results (and, for geometric results,
# pictures and OBJ/PLY files in build/demo/), the two scene commands and the Python examples.
#
#   scripts/demo.sh                      # the summary
#   QUILLIX_DEMO_FULL=1 scripts/demo.sh  # the same with the complete output of every run
set -euo pipefail
cd "$(dirname "$0")/.."

full=${QUILLIX_DEMO_FULL:-0}
python=/usr/bin/python3
summarise() { "$python" scripts/summarise_results.py "$@"; }
# At most $1 lines of standard input, each cut to the terminal's usual width.
brief() {
  local text count
  text=$(cat)
  count=$(wc -l <<<"$text")
  head -n "$1" <<<"$text" | cut -c1-110
  ((count <= $1)) || echo "  ... $((count - $1)) more lines (QUILLIX_DEMO_FULL=1 shows them)"
}

log=build/demo-build.log
mkdir -p build
echo "== building the tool, the plug-in and the Python package (log: $log)"
if ! { scripts/install-deps.sh && cmake --preset demo && \
       cmake --build --preset demo --target quillix Quillix _quillix; } >"$log" 2>&1; then
  tail -n 30 "$log"
  exit 1
fi

# Debian's python3 finds the package in the build tree from now on, whatever python3 comes
# first on the PATH.
user_site=$("$python" -m site --user-site)
mkdir -p "$user_site"
echo "$PWD/build/demo/python" >"$user_site/quillix-build.pth"

quillix=build/demo/bin/quillix
echo
echo "== quillix list: the plug-in's identity, commands and nodes"
if ((full)); then "$quillix" list; else "$quillix" list --json | summarise list; fi

# Pictures and result files come from `quillix eval --png DIR --out DIR`, one folder per example.
pictures=build/demo/pictures
results=build/demo/results
rm -rf "$pictures" "$results"
with_pictures=0
if "$quillix" eval --help 2>&1 | grep -q -- '--png'; then with_pictures=1; fi

declare -A shows=(
  [examples/divi.json]="integer quotient (2010) and remainder (2020) per element, on arrays, in a batch"
  [examples/curve/dsals.json]="spheres along splines: filled stretches, corner spheres, intervals, a bad seed"
  [examples/curve/gpoc.json]="position, tangent, normal, binormal on the scene's curve \"track\""
  [examples/curve/rlins.json]="polylines resampled to evenly spaced points, then smoothed"
  [examples/curve/slins.json]="polylines simplified to a tolerance; closed and at-least-three variants"
  [examples/pathfind/fpom.json]="shortest vertex paths on a grid mesh, through waypoints, around blocked vertices"
  [examples/pathfind/gpos.json]="positions generated on the surfaces of named scene meshes"
  [examples/spatial/cdbte.json]="the gap between two ellipsoids along the line of their centres"
  [examples/spatial/iotb.json]="whether two oriented boxes intersect (1) or not (0), three test strengths"
  [examples/spatial/iotmb.json]="when in a step two moving boxes first touch (-1: not found)"
  [examples/spatial/otos.json]="bounding spheres (x, y, z, radius) of named scene objects; bones give rows"
  [examples/utility/array_order.json]="arrays reversed and shifted"
  [examples/utility/bits.json]="integers split into bytes; single bits tested"
  [examples/utility/file_exists.json]="whether files exist"
  [examples/utility/float_class.json]="floats classified: NaN, infinite, denormal"
  [examples/utility/running_ids.json]="running IDs over per-element arrays"
  [examples/utility/strings.json]="strings joined, and packed into integers"
  [examples/utility/to_string.json]="booleans, integers and floats as text"
)

echo
echo "== quillix eval on every example: what it shows, then per request its results in short"
if ((with_pictures)); then
  echo "   pictures in $pictures/, OBJ/PLY files in $results/ (one folder per example)"
else
  echo "   (this quillix has no --png option yet: no pictures or result files)"
fi
for request in examples/*.json examples/*/*.json; do
  [[ -e "$request" ]] || continue
  case "$request" in */scenes/*|*/userhome/*) continue ;; esac
  echo "-- $request: ${shows[$request]:-}"
  args=()
  if ((with_pictures)); then
    name=${request#examples/}
    name=${name%.json}
    name=${name//\//-}
    args=(--png "$pictures/$name" --out "$results/$name")
  fi
  if ((full)); then
    "$quillix" eval "$request" "${args[@]}"
  else
    "$quillix" eval "$request" "${args[@]}" | summarise eval
  fi
  if ((with_pictures)) && [[ -d "$pictures/$name" ]]; then
    echo "   $(ls "$pictures/$name" | wc -l) pictures in $pictures/$name/"
  fi
done

echo
echo "== the two scene commands, run by quillix over the shipped example scenes"
if ((full)); then
  QUILLIX="$quillix" examples/commands/run.sh
else
  QUILLIX="$quillix" examples/commands/run.sh | grep -E '^(==|status|return value|selection)' | brief 20
fi

for script in examples/python/*.py; do
  echo
  echo "== $python $script"
  if ((full)); then "$python" "$script"; else "$python" "$script" | brief 10; fi
done
