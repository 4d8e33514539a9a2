#!/usr/bin/env bash
# Writes the reference of the public headers to build/docs/html/. A comment that Doxygen can't make
# sense of is an error.
#
# usage: tools/docs.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh

oz_require_packages "${OZ_DOCS_PACKAGES[@]}"
mkdir -p build/docs
doxygen docs/Doxyfile
echo "The reference: build/docs/html/index.html"
