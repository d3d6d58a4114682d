#!/usr/bin/env bash
# Formats every C++ file of the tree with the repository's .clang-format, or with --check only
# reports the files that differ (and fails when any does). The version is pinned: another
# clang-format release formats some constructs differently, and the check must not flap.
set -euo pipefail
cd "$(dirname "$0")/.."

formatter=clang-format-14
if ! command -v "$formatter" >/dev/null; then
  echo "format: $formatter is missing (scripts/install-deps.sh installs it)" >&2
  exit 2
fi

mapfile -t files < <(git ls-files '*.cpp' '*.h' '*.inc' | grep -v -E '^fuzz/corpus/')
if [[ "${1:-}" == "--check" ]]; then
  differing=()
  for f in "${files[@]}"; do
    "$formatter" --dry-run --Werror "$f" >/dev/null 2>&1 || differing+=("$f")
  done
  if ((${#differing[@]} > 0)); then
    echo "format: ${#differing[@]} files differ from $formatter's formatting (run scripts/format.sh):"
    printf '  %s\n' "${differing[@]}"
    exit 1
  fi
  echo "format: ${#files[@]} files as $formatter formats them"
else
  "$formatter" -i "${files[@]}"
fi
