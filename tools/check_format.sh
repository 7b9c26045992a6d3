#!/bin/bash
# Refuses tracked C++ files that clang-format 14 would change. Other versions lay some lines out
# differently, so none of them will do.
#
# usage: check_format.sh ROOT
set -euo pipefail
cd "${1:?usage: check_format.sh ROOT}"

program=
for candidate in clang-format-14 clang-format; do
  if command -v "$candidate" >/dev/null && "$candidate" --version | grep -q 'version 14\.'; then
    program=$candidate
    break
  fi
done
if [ -z "$program" ]; then
  echo "clang-format 14 is not installed (Debian package clang-format-14)" >&2
  exit 2
fi

# A file that was deleted but is still in the index is left out; safe.directory is for a checkout
# that belongs to somebody else, as in a container.
git -c safe.directory='*' ls-files -z -- '*.h' '*.cpp' ':!third_party' |
  while IFS= read -r -d '' file; do if [ -f "$file" ]; then printf '%s\0' "$file"; fi; done |
  xargs -0 --no-run-if-empty -n 8 -P 2 "$program" --dry-run -Werror
