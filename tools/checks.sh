#!/bin/sh
# The checks beside the tests. Each prints its name and its time; the first fault ends the run.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
. tools/install.sh

step() {
  name=$1
  shift
  start=$(date +%s)
  echo "== $name"
  "$@"
  echo "== $name: $(($(date +%s) - start)) s"
}

sources() { git ls-files '*.cpp' '*.h'; }
check_format() { sources | xargs clang-format --dry-run --Werror; }
check_sanitizer() {
  cmake_build "$root" "$1"
  shift
  ctest --preset "$@"
}

step format check_format
