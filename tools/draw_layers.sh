#!/usr/bin/env bash
# Draws docs/layers.svg from docs/layers.dot.
#
# usage: tools/draw_layers.sh [--check]     --check only asks whether the picture is current
#
# The picture carries a digest of the text it was drawn from. Comparing pictures wouldn't do: their
# measures depend on the fonts of the machine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_PICTURE_PACKAGES[@]}"
digest=$(sha256sum <docs/layers.dot | cut -d ' ' -f 1)
mark="<!-- drawn from layers.dot, sha256 $digest -->"

if [ "${1:-}" = --check ]; then
  dot -Tsvg docs/layers.dot >/dev/null
  if ! grep -qxF -e "$mark" docs/layers.svg; then
    echo "docs/layers.svg isn't the picture of docs/layers.dot: run tools/draw_layers.sh" >&2
    exit 1
  fi
  echo "docs/layers.svg is current"
  exit
fi

drawn=$(mktemp docs/layers.XXXXXX)
trap 'rm -f "$drawn"' EXIT
dot -Tsvg docs/layers.dot >"$drawn"
echo "$mark" >>"$drawn"
chmod 644 "$drawn"
mv "$drawn" docs/layers.svg
