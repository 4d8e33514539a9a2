#!/usr/bin/env bash
# Builds a client of the library in every way that the README names: with CMake and with pkg-config, from
# an installed tree and from the build tree, and as a part of the client's own build.
#
# Before that it looks at the libraries themselves: their SONAME, what they need, and what they export.
#
# usage: tests/package/check.sh [BUILD]     a folder in which the library was built [build/dev]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
oz_require_packages "${OZ_BUILD_PACKAGES[@]}" "${OZ_CONSUMER_PACKAGES[@]}"

build=$(realpath "${1:-build/dev}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
expected='slotholeplate 4 8 13'

# The tree is moved after it was installed, since packages are.
cmake --install "$build" --prefix "$work/staged" >/dev/null
mv "$work/staged" "$work/installed"
libraries=$(dirname "$(find "$work/installed" -name liboz.so)")

# expect_lines WHAT EXPECTED FOUND
expect_lines()
{
  if [ "$2" != "$3" ]; then
    echo "$1, expected (<) and found (>):" >&2
    diff <(echo "$2") <(echo "$3") >&2
    exit 1
  fi
}

dynamic_entries()
{
  readelf -d "$1" | sed -n "s/.*($2).*\[\(.*\)\]/\1/p" | sort
}

# Functions and data, without what every translation unit has of the templates that it uses. An operator that stands
# outside its class is known by what it takes first.
foreign_exports()
{
  nm -DC --defined-only "$1" | sed -n 's/^[0-9a-f]* [TDBR] //p' | sed -E 's/^[a-zA-Z -]+ (for|to) //' |
    sed -E 's/^operator[^(]+\(//' | grep -vE "^($2)" || true
}

major=$(sed -nE 's/^  VERSION ([0-9]+)\..*/\1/p' CMakeLists.txt)
expect_lines "SONAME of the library" "liboz.so.$major" "$(dynamic_entries "$libraries/liboz.so" SONAME)"
expect_lines "SONAME of the platform library" "libLumSysTS.so.$major" \
  "$(dynamic_entries "$libraries/libLumSysTS.so" SONAME)"
expect_lines "Libraries that are needed beyond the standard one" "libLumSysTS.so.$major" \
  "$(for library in "$libraries"/lib{oz,LumSysTS}.so; do dynamic_entries "$library" NEEDED; done |
    grep -vE '^(libstdc\+\+|libgcc_s|libm|libc|ld-linux-x86-64)\.so' | sort -u)"
expect_lines "Foreign names that the library exports" "" \
  "$(foreign_exports "$libraries/liboz.so" 'Oz|oz|Faked_Oz|dkb_|set_dkb_|time_start\(|time_end\(|ts_job_processor')"
expect_lines "Foreign names that the platform library exports" "" "$(foreign_exports "$libraries/libLumSysTS.so" 'Lum')"
echo "The libraries have their SONAME, need only the standard library and export only what is theirs"

run_client()
{
  local how=$1 printed
  shift
  printed=$("$@")
  if [ "$printed" != "$expected" ]; then
    echo "A client $how prints \"$printed\", not \"$expected\"" >&2
    exit 1
  fi
  echo "A client $how works"
}

quietly()
{
  if ! "$@" >"$work/log" 2>&1; then
    cat "$work/log" >&2
    exit 1
  fi
}

client_by_cmake()
{
  local source=$1 folder=$2
  shift 2
  quietly cmake -G Ninja -S "$source" -B "$work/$folder" "$@"
  quietly cmake --build "$work/$folder" -j 2
}

client_by_pkg_config()
{
  local folder=$1 flags
  # Only the given folder counts, not what the machine may have.
  flags=$(PKG_CONFIG_LIBDIR=$folder pkg-config --cflags --libs 'oz >= 0.1')
  # shellcheck disable=SC2086 # the flags are words
  quietly "${CXX:-g++}" -std=c++17 -Wall -Wextra -Wpedantic -Werror tests/package/client.cpp -o "$work/client" $flags
}

client_by_cmake tests/package/cmake installed_cmake -DCMAKE_PREFIX_PATH="$work/installed"
run_client "of the installed CMake package" "$work/installed_cmake/client"

client_by_cmake tests/package/cmake built_cmake -Doz_DIR="$build/cmake"
run_client "of the CMake package in the build tree" "$work/built_cmake/client"

client_by_pkg_config "$libraries/pkgconfig"
run_client "of the installed pkg-config package" env LD_LIBRARY_PATH="$libraries" "$work/client"

client_by_pkg_config "$build/pkgconfig"
run_client "of the pkg-config package in the build tree" env LD_LIBRARY_PATH="$build/lib" "$work/client"

client_by_cmake tests/package/subproject subproject
run_client "with the library in its own build" "$work/subproject/client"

# The examples are clients too, and see nothing here but what is installed.
if [ -f examples/contours/main.cpp ]; then
  client_by_cmake examples/contours contours -DCMAKE_PREFIX_PATH="$work/installed"
  quietly "$work/contours/oz-contours" --version
  echo "oz-contours builds from the installed package"
fi
