#!/usr/bin/env bash
# Runs the tests under Valgrind's memcheck, one program after the other. Any error or leak ends it.
#
# usage: tools/memcheck.sh [PATTERN]     only test programs whose name fits the shell pattern [*_test]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}" "${OZ_MEMCHECK_PACKAGES[@]}"
cmake --preset dev
cmake --build --preset dev

mapfile -d '' -t programs < <(find build/dev/bin -name "${1:-*_test}" -type f -print0 | sort -z)
for program in "${programs[@]}"; do
  echo "$program"
  valgrind --quiet --leak-check=full --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
    --error-exitcode=9 "$program" --gtest_brief=1
done
