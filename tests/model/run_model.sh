#!/usr/bin/env bash
# Checks the model of the job scheduler with spin: as it is, where no fault may be found, and with each known
# fault opened again, where one must be. Takes about a minute of one processor and at most 1.5 GiB.
#
# usage: run_model.sh [WORK_FOLDER]     exit 0: all as expected; 1: not; 77: spin or a C compiler is missing
set -euo pipefail

model=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/scheduler.pml

for tool in spin cc; do
  if ! command -v "$tool" >/dev/null; then
    echo "$tool is not installed: the model was not checked"
    exit 77
  fi
done

work=${1:-}
if [ -z "$work" ]; then
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
fi
mkdir -p "$work"

# search NAME DEFINE...
#
# Searches all states. Prints "no fault", the fault that was found, or why the search is worth nothing.
search()
{
  local name=$1
  shift
  mkdir -p "$work/$name"
  cd "$work/$name"
  if ! spin "$@" -a "$model" >spin.log 2>&1 || ! cc -O2 -w -DSAFETY -DCOLLAPSE -DMEMLIM=1500 -o pan pan.c; then
    echo "no search: the model could not be translated"
    cat spin.log
    return
  fi
  if ! timeout 300 ./pan -m100000 -w24 >pan.log; then
    echo "no search: it did not end"
  elif grep -q '^error: max search depth\|out of memory\|memory limit\|Search not completed.*errors: 0' pan.log; then
    echo "no search: it is not complete"
  elif grep -q 'errors: 0$' pan.log; then
    echo "no fault"
  else
    sed -n 's/^pan:1: \(.*\) (at depth.*/\1/p' pan.log
  fi
}

failed=0

# expect PATTERN NAME DEFINE...
expect()
{
  local pattern=$1 name=$2 found
  shift
  found=$(search "$@")
  echo "$name: $found"
  # shellcheck disable=SC2053 # a pattern
  if [[ $found != $pattern || ($found == no* && $found != "$pattern") ]]; then
    echo "  expected: $pattern"
    failed=1
  fi
}

expect 'no fault' plain -DREQUESTS
expect 'no fault' cancelled -DREQUESTS -DCANCEL -DFIRST_TASKS=1 -DSECOND_TASKS=3
expect 'no fault' replaced -DREQUESTS -DREPLACE
expect 'no fault' depending -DREQUESTS -DDEPEND -DFIRST_TASKS=3
expect 'no fault' all-at-once -DREQUESTS -DCANCEL -DREPLACE

expect 'assertion violated*in_service*' window-1 -DWINDOW_1 -DREQUESTS
expect 'invalid end state' window-2 -DWINDOW_2 -DCANCEL -DFIRST_TASKS=1 -DSECOND_TASKS=3
expect 'invalid end state' window-3 -DWINDOW_3 -DDEPEND -DSECOND_TASKS=3
expect '*' window-4 -DWINDOW_4
expect 'invalid end state' window-5 -DWINDOW_5
expect 'assertion violated*worker_task*' window-6 -DWINDOW_6 -DREPLACE

exit $failed
