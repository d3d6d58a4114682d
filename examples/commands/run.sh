#!/usr/bin/env bash
# Runs both scene commands on the shipped examples: FindMatchingObjects ranks the copies of
# "crate" in a scene of thirteen meshes, and OpenMostRecentScene opens the first scene of the
# recent-scenes list in examples/commands/userhome. Needs a built quillix (QUILLIX overrides
# the default path).
set -euo pipefail
cd "$(dirname "$0")/../.."
quillix=${QUILLIX:-build/release/bin/quillix}

echo "== quillix run Quillix__FindMatchingObjects inObj=crate (verbose, three best, selected)"
"$quillix" run Quillix__FindMatchingObjects inObj=crate numOut=3 selectOut=true verbose=true \
  --scene examples/commands/scenes/match_scene.json
echo
echo "== the same with the name weighed in: the renamed copy drops"
"$quillix" run Quillix__FindMatchingObjects inObj=crate numOut=0 weightName=1 \
  --scene examples/commands/scenes/match_scene.json
echo

# "OpenScene" records the scene at the top of the user's list, so the run works on a copy of
# the shipped user directory.
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
cp -R examples/commands/userhome/. "$home"
echo "== XSI_USERHOME=<copy of examples/commands/userhome> quillix run Quillix__OpenMostRecentScene"
XSI_USERHOME="$home" "$quillix" run Quillix__OpenMostRecentScene
