#!/usr/bin/env bash
# Lets clang-tidy read the library's sources as .clang-tidy says.
#
# usage: tools/tidy.sh [PATTERN]     regular expression for the paths [(src|LumSysTS|examples)/]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}" "${OZ_CLANG_PACKAGES[@]}" "${OZ_TIDY_PACKAGES[@]}"
# The commands of a Clang build, whose options clang-tidy knows.
cmake --preset clang >/dev/null
run-clang-tidy-14 -quiet -j 2 -p build/clang "${1:-$PWD/(src|LumSysTS|examples)/}"
