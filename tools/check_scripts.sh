#!/usr/bin/env bash
# Lets shellcheck read every script of the tree.
#
# usage: tools/check_scripts.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_SCRIPT_PACKAGES[@]}"
mapfile -d '' -t scripts < <(find tools tests examples -name '*.sh' -print0 | sort -z)
[ ! -f .ci/run ] || scripts+=(.ci/run)
shellcheck -x "${scripts[@]}"
echo "${#scripts[@]} scripts are clean"
