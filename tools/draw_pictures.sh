#!/usr/bin/env bash
# Draws a picture docs/NAME.svg from each text docs/NAME.dot.
#
# usage: tools/draw_pictures.sh [--check]     --check only asks whether the pictures are current
#
# A picture carries a digest of the text it was drawn from. Comparing pictures wouldn't do: their
# measures depend on the fonts of the machine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_PICTURE_PACKAGES[@]}"
drawn=$(mktemp docs/picture.XXXXXX)
trap 'rm -f "$drawn"' EXIT

for text in docs/*.dot; do
  picture=${text%.dot}.svg
  digest=$(sha256sum <"$text" | cut -d ' ' -f 1)
  mark="<!-- drawn from $(basename "$text"), sha256 $digest -->"
  dot -Tsvg "$text" >"$drawn"

  if [ "${1:-}" = --check ]; then
    if ! grep -qxF -e "$mark" "$picture"; then
      echo "$picture isn't the picture of $text: run tools/draw_pictures.sh" >&2
      exit 1
    fi
    echo "$picture is current"
  elif ! grep -sqxF -e "$mark" "$picture"; then
    echo "$mark" >>"$drawn"
    chmod 644 "$drawn"
    cp "$drawn" "$picture"
    echo "$picture is drawn anew"
  fi
done
