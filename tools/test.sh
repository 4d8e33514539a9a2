#!/usr/bin/env bash
# Builds the library and passes its tests.
#
# usage: tools/test.sh [PRESET]     a preset of CMakePresets.json [dev]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

preset=${1:-dev}

packages=("${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}")
case $preset in
  dev) packages+=("${OZ_MODEL_PACKAGES[@]}") ;;
  clang) packages+=("${OZ_CLANG_PACKAGES[@]}") ;;
  release) packages+=("${OZ_BENCHMARK_PACKAGES[@]}") ;;
esac
oz_require_packages "${packages[@]}"

cmake --preset "$preset"
if [ "$preset" = tsan ]; then
  # Only what starts threads has anything to show here.
  cmake --build --preset tsan --target threaded_tests
  ctest --preset tsan --no-tests=error --label-regex 'threads|stress'
  exit
fi
cmake --build --preset "$preset"
# Each public header, compiled on its own.
cmake --build --preset "$preset" --target all_verify_interface_header_sets
ctest --preset "$preset" --no-tests=error
