#!/bin/sh
# The checks beside the plain tests: format, unity build, sanitizers, fuzzing, static analysis. Each prints its
# name and its time; the first fault ends the run. Usage: tools/checks.sh [NAME...] (default: all)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
. tools/install.sh

sources() { git ls-files -- "$@" | grep -E '\.(cpp|h)$'; }

check_format() { sources . | xargs clang-format --dry-run --Werror; }
check_unity() { cmake_build "$root" unity; }
check_asan() {
  cmake_build "$root" asan zan_engine_tests zan_face_tests
  export ASAN_OPTIONS=detect_stack_use_after_return=1
  export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
  export LSAN_OPTIONS="suppressions=$root/tests/lsan.supp:print_suppressions=0"
  ctest --preset asan -j 2 -E '^program\.'
}
check_tsan() {
  cmake_build "$root" tsan zan_engine_tests zan_face_tests
  export TSAN_OPTIONS="halt_on_error=1:suppressions=$root/tests/tsan.supp"
  ctest --preset tsan -j 2 -R '^(engine|face)\.'
}
check_fuzz() {
  cmake_build "$root" fuzz fuzzers
  for target in build/fuzz/bin/*_fuzz; do
    echo "-- $(basename "$target")"
    corpus=$(mktemp -d)
    "$target" -max_total_time=5 -rss_limit_mb=4096 -print_final_stats=0 -verbosity=0 "$corpus" >"$corpus.log" 2>&1 || {
      cat "$corpus.log"
      return 1
    }
    rm -rf "$corpus" "$corpus.log"
  done
}
check_tidy() {
  cmake_build "$root" dev
  sources core dirmodel views fileops commands platform op companions | grep '\.cpp$' |
    xargs -P 2 -n 4 clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option 2>/dev/null
}
check_cppcheck() {
  cppcheck -q -j 2 --std=c++20 --language=c++ --enable=warning,performance,portability --inline-suppr \
    --suppress=missingIncludeSystem --suppress=unknownMacro --suppress=identicalConditionAfterEarlyExit --suppress=virtualCallInConstructor -D__linux__ -I. --error-exitcode=1 \
    core dirmodel views fileops commands platform op companions
}

for name in ${*:-format unity asan tsan fuzz tidy cppcheck}; do
  start=$(date +%s)
  echo "== $name"
  "check_$name"
  echo "== $name: $(($(date +%s) - start)) s"
done
