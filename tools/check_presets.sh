#!/usr/bin/env bash
# Configures every preset, each in a folder of its own that is removed again, and asks that every
# configure preset has a build preset and a test preset of the same name.
#
# usage: tools/check_presets.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}" "${OZ_BENCHMARK_PACKAGES[@]}" \
  "${OZ_CLANG_PACKAGES[@]}"

names_of()
{
  cmake --list-presets="$1" | sed -n 's/^  "\([^"]*\)".*/\1/p' | sort
}

configure=$(names_of configure)
for kind in build test; do
  if [ "$(names_of "$kind")" != "$configure" ]; then
    echo "The $kind presets aren't those of configure:" >&2
    diff <(echo "$configure") <(names_of "$kind") >&2
    exit 1
  fi
done

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
for preset in $configure; do
  if ! cmake --preset "$preset" -B "$folder/$preset" >"$folder/$preset.log" 2>&1; then
    cat "$folder/$preset.log" >&2
    echo "Preset $preset doesn't configure" >&2
    exit 1
  fi
  echo "$preset configures"
done
