#!/usr/bin/env bash
# Runs the tests in a build that counts, and reports which lines of the library they ran. Ends with an
# error if that is less than the given share.
#
# usage: tools/coverage.sh [PERCENT]     the least share of lines [98]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

least=${1:-98}

oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}" "${OZ_COVERAGE_PACKAGES[@]}"
# Counts of an earlier run would add to this one's.
if [ -d build/coverage ]; then
  find build/coverage -name '*.gcda' -delete
fi
tools/test.sh coverage

mkdir -p build/coverage/report
gcovr --root . --object-directory build/coverage \
  --filter 'ProtectedInterfaces/' --filter 'src/' \
  --exclude-throw-branches --exclude-unreachable-branches \
  --html-details build/coverage/report/index.html \
  --txt build/coverage/report/summary.txt \
  --print-summary --fail-under-line "$least" build/coverage >build/coverage/report/totals.txt || result=$?
cat build/coverage/report/summary.txt build/coverage/report/totals.txt
echo "Line by line: build/coverage/report/index.html"
exit "${result:-0}"
