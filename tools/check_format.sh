#!/usr/bin/env bash
# Shows what the formatter would change in the C++ files, and ends with an error if that is anything.
#
# usage: tools/check_format.sh [--fix]     --fix changes the files instead
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_FORMAT_PACKAGES[@]}"

folders=()
for folder in ProtectedInterfaces src LumSysTS tests benchmarks examples; do
  [ ! -d "$folder" ] || folders+=("$folder")
done
mapfile -d '' -t files < <(find "${folders[@]}" \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z)

if [ "${1:-}" = --fix ]; then
  clang-format-14 -i "${files[@]}"
  exit
fi

unformatted=0
for file in "${files[@]}"; do
  clang-format-14 "$file" | diff -u --label "$file" --label "$file, formatted" "$file" - || unformatted=$((unformatted + 1))
done
if [ "$unformatted" -gt 0 ]; then
  echo "$unformatted of ${#files[@]} files aren't formatted: run tools/check_format.sh --fix" >&2
  exit 1
fi
echo "${#files[@]} files are formatted"
