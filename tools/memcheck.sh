#!/usr/bin/env bash
# Runs the tests under Valgrind's memcheck, as many programs at once as there are processors, and goes through
# all of them whatever it finds. Any error or leak, and any program that takes longer than the limit, makes it
# end with an error. What a program said is in build/memcheck/.
#
# usage: tools/memcheck.sh [PATTERN [MINUTES]]
#   PATTERN   only test programs whose name fits this shell pattern [*_test]
#   MINUTES   the most that one program may take [30]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_TEST_PACKAGES[@]}" "${OZ_MEMCHECK_PACKAGES[@]}"
cmake --preset dev
cmake --build --preset dev

mapfile -d '' -t programs < <(find build/dev/bin -name "${1:-*_test}" -type f -print0 | sort -z)
if [ ${#programs[@]} -eq 0 ]; then
  echo "No test program is called ${1:-*_test}" >&2
  exit 1
fi
export OZ_MEMCHECK_MINUTES=${2:-30} OZ_TEST_PATIENCE=20
mkdir -p build/memcheck

# Threads take turns rather than going by chance, since some of them wait for others. What a death test
# leaves behind in its own process is no leak. Tests that have memory functions of their own keep them.
check()
{
  local name=${1##*/} start=$SECONDS status=0
  local log=build/memcheck/$name.log
  timeout --kill-after=10 $((60 * OZ_MEMCHECK_MINUTES)) \
    valgrind --quiet --fair-sched=try --child-silent-after-fork=yes --soname-synonyms=somalloc=nouserintercepts \
    --leak-check=full --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
    --error-exitcode=9 "$1" --gtest_brief=1 </dev/null >"$log" 2>&1 || status=$?
  case $status in
    0) printf '%-50s clean  %5d s\n' "$name" $((SECONDS - start)) ;;
    124 | 137) printf '%-50s STOPPED after %s minutes\n' "$name" "$OZ_MEMCHECK_MINUTES" ;;
    *)
      printf '%-50s FAILED %5d s\n' "$name" $((SECONDS - start))
      head -n 60 "$log" | sed 's/^/  | /'
      ;;
  esac
  return "$status"
}
export -f check
# shellcheck disable=SC2016 # $1 is for the inner shell
printf '%s\0' "${programs[@]}" |
  xargs -0 --max-args=1 --max-procs="$(nproc)" bash -c 'check "$1" || exit 1' check
echo "${#programs[@]} programs are clean"
