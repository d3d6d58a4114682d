#!/usr/bin/env bash
# Builds Quillix and shows what it does: loads the plug-in, lists it, evaluates the shipped
# example requests and prints their results.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake --preset demo >/dev/null
cmake --build --preset demo --target quillix Quillix _quillix

# Debian's python3 finds the package in the build tree from now on, whatever python3 comes
# first on the PATH.
python=/usr/bin/python3
user_site=$("$python" -m site --user-site)
mkdir -p "$user_site"
echo "$PWD/build/demo/python" > "$user_site/quillix-build.pth"

quillix=build/demo/bin/quillix
echo
echo "== quillix list: the plug-in's identity, commands and nodes"
"$quillix" list
echo
for request in examples/*.json examples/*/*.json; do
  [[ -e "$request" ]] || continue
  case "$request" in */scenes/*|*/userhome/*) continue ;; esac
  echo "== quillix eval $request"
  "$quillix" eval "$request"
  echo
done

echo "== the two scene commands, run by quillix over the shipped example scenes"
QUILLIX="$quillix" examples/commands/run.sh

echo
for script in examples/python/*.py; do
  echo "== $python $script"
  "$python" "$script"
  echo
done
