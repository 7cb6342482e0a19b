#!/usr/bin/env bash
# Builds Tavrinsonic and runs the whole test suite, in three builds:
#   normal  gcc, optimised with debug information: every test
#   asan    clang, AddressSanitizer + UndefinedBehaviorSanitizer: every test,
#           and the fuzz targets over their corpora
#   tsan    clang, ThreadSanitizer, without the Qt shell: every test that
#           doesn't need Qt (the threaded ones among them)
# Usage: ./test.sh [normal] [asan] [tsan]   (default: all three)
set -euo pipefail
cd "$(dirname "$0")"
bash scripts/install-deps.sh

jobs=${JOBS:-2}
builds=("$@")
[ ${#builds[@]} -eq 0 ] && builds=(normal asan tsan)

configure_and_build() {
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja -DTS_WERROR=ON "$@" > "$dir.configure.log" 2>&1 \
    || { cat "$dir.configure.log"; return 1; }
  cmake --build "$dir" -j "$jobs"
}

run_tests() {
  local dir=$1; shift
  ctest --test-dir "$dir" --output-on-failure --timeout 600 -j "$jobs" "$@"
}

for build in "${builds[@]}"; do
  start=$SECONDS
  echo "=== $build build ==="
  case $build in
    normal)
      configure_and_build build -DCMAKE_BUILD_TYPE=RelWithDebInfo
      run_tests build
      ;;
    asan)
      configure_and_build build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DTS_SANITIZE=address -DTS_BUILD_FUZZERS=ON -DTS_BUILD_BENCHMARKS=OFF
      ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
        LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp run_tests build-asan
      ;;
    tsan)
      configure_and_build build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DTS_SANITIZE=thread -DTS_BUILD_GUI=OFF -DTS_BUILD_BENCHMARKS=OFF
      TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" run_tests build-tsan
      ;;
    *) echo "unknown build '$build' (normal, asan, tsan)"; exit 2 ;;
  esac
  echo "=== $build build passed in $((SECONDS - start)) s ==="
done
