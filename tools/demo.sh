#!/usr/bin/env bash
# Builds oz-contours as it is shipped and lets it read drawings: joins their loose edges to contours,
# prints the table of contours and writes a picture of each drawing to build/demo/.
#
# usage: tools/demo.sh [DRAWING...]     ASCII DXF files [examples/data/plate.dxf]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

build=build/demo
drawings=("$@")
[ ${#drawings[@]} -gt 0 ] || drawings=(examples/data/plate.dxf)

oz_require_packages "${OZ_BUILD_PACKAGES[@]}"
cmake --preset release -B "$build" -DOZ_BUILD_TESTS=OFF -DOZ_BUILD_BENCHMARKS=OFF
cmake --build "$build" -j 2

for drawing in "${drawings[@]}"; do
  svg=$build/$(basename "$drawing" .dxf).svg
  echo
  echo "\$ oz-contours $drawing --svg $svg"
  result=0
  "$build/bin/oz-contours" "$drawing" --svg "$svg" || result=$?

  # The program ends with 1 where a contour is open, and the plate has an open one on purpose: that too
  # is a drawing read, joined and written.
  case $result in
    0) echo "Every contour is closed. The picture: $svg" ;;
    1) echo "Something in this drawing can't be cut as it stands; see the messages above. The picture: $svg" ;;
    *)
      echo "oz-contours ended with $result" >&2
      exit "$result"
      ;;
  esac
done
