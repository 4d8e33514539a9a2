# shellcheck shell=bash
# The Debian packages that the scripts of this folder need, and the function that gets them.
# Sourced, never run.

# shellcheck disable=SC2034 # used by the scripts that source this file
{
  OZ_BUILD_PACKAGES=(g++ cmake ninja-build libcli11-dev)
  OZ_TEST_PACKAGES=(libgtest-dev libgmock-dev python3 graphviz)
  OZ_MODEL_PACKAGES=(spin gcc)
  OZ_BENCHMARK_PACKAGES=(libbenchmark-dev libabsl-dev libtbb-dev)
  OZ_CLANG_PACKAGES=(clang-14)
  OZ_FORMAT_PACKAGES=(clang-format-14)
  OZ_TIDY_PACKAGES=(clang-tidy-14 python3)
  OZ_SCRIPT_PACKAGES=(shellcheck)
  OZ_CONSUMER_PACKAGES=(pkg-config)
  OZ_DOCS_PACKAGES=(doxygen)
  OZ_PICTURE_PACKAGES=(graphviz)
  OZ_COVERAGE_PACKAGES=(gcovr)
  OZ_MEMCHECK_PACKAGES=(valgrind)
}

oz_package_installed()
{
  local status
  status=$(dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null) || return 1
  grep -qx installed <<<"$status"
}

# oz_require_packages PACKAGE...
#
# Returns when all are there. As root it installs those that are missing; anyone else is told the
# command, and the script ends.
oz_require_packages()
{
  if ! command -v dpkg-query >/dev/null; then
    echo "No dpkg here: this needs what Debian 12 calls $*" >&2
    return 0
  fi

  local package missing=()
  for package in "$@"; do
    oz_package_installed "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  if [ "$(id -u)" -ne 0 ]; then
    echo "Some packages are missing. As root, run:" >&2
    echo "  apt-get install --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi

  echo "Installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  if [ -z "${OZ_PACKAGE_LISTS_ARE_FRESH:-}" ]; then
    oz_quietly apt-get update -qq
    export OZ_PACKAGE_LISTS_ARE_FRESH=1
  fi
  oz_quietly apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# Says what a command said only if it fails, and then the script ends.
oz_quietly()
{
  local said
  if ! said=$("$@" </dev/null 2>&1); then
    echo "$said" >&2
    echo "Failed: $*" >&2
    exit 1
  fi
}
