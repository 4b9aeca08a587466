#!/usr/bin/env bash
# The part of ./check --full that takes long: every further build passes all tests, all builds give
# the same bits, the pack stands threads, a million calls, memcheck and fuzzing, the tests find
# faults put in at random, the reference has no gaps, and the Debian package and ./run work in a
# fresh system. The digest of a build says what all functions answer on a fixed corpus; see
# tests/digest/digest.cpp.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-full.txt
cd "$root"
digests=build/digests
mkdir -p "$digests"

print_digest() {
  local emulator=() program=build/$1/tests/digest/digest
  [[ $1 == arm64 ]] && emulator=(qemu-aarch64 -L /usr/aarch64-linux-gnu)
  [[ $1 == flags ]] && program=build/release/tests/digest/digest_flags
  "${emulator[@]}" "$program"
}

# ./check runs the tests of these two, which the release build holds; here they are the measure for
# the others.
failed=()
build release
print_digest release >"$digests/release"
print_digest flags >"$digests/flags"
for pack in libmatrix.so flags/libmatrix.so; do
  build/release/packcheck --depth full "build/release/$pack" || failed+=("$pack")
done
for preset in debug clang m32 arm64; do
  SECONDS=0
  if build "$preset"; then
    print_digest "$preset" >"$digests/$preset"
    ctest --preset "$preset" --parallel "$(nproc)" || failed+=("tests of $preset")
  else
    failed+=("build of $preset")
  fi
  echo "$preset: built and tested in $SECONDS s"
done

tests/checks/windows_check.sh "$digests" || failed+=("Windows")

# same KIND PRESET...: the builds print the same lines of that kind as the first of them. What differs
# can be found by digest --calls NAME of both.
same() {
  local kind=$1 reference=$2 preset
  shift 2
  for preset in "$@"; do
    if diff <(lines "$kind" "$reference") <(lines "$kind" "$preset"); then
      echo "Same $kind: $reference, $preset"
    else
      failed+=("$kind of $reference and $preset")
    fi
  done
}
lines() {
  case $1 in
    results) grep -v -e '^#' -e '^fault-words' "$digests/$2" ;;
    fault-words) grep '^fault-words' "$digests/$2" ;;
  esac
}

same results release flags debug clang m32 arm64 win64 win32
same fault-words release debug m32 win64 win32
same fault-words flags clang arm64

# Threads of their own contexts: the sanitizer wants its addresses, not random ones.
threads() {
  build tsan pack_tests &&
    setarch -R build/tsan/tests/pack_tests --gtest_filter='Robustness.Threads*'
}
long_run() {
  MATRIX_CALLS=1000000 build/release/tests/pack_tests --gtest_filter='Robustness.ManyMixedCalls*'
}
threads || failed+=("threads under the thread sanitizer")
long_run || failed+=("a million calls")
tests/checks/memcheck.sh || failed+=("memcheck")
tests/fuzz/run.sh 30 || failed+=("fuzzing")
tests/checks/coverage.sh || failed+=("coverage")
tools/mutants --seeds 1 --count 8 --quick --least 0.75 || failed+=("mutations")

doxygen docs/Doxyfile || failed+=("the reference of the programming interface")
tests/checks/package_check.sh || failed+=("the Debian package")
tests/checks/calc_check.sh || failed+=("the extension for LibreOffice Calc")
tests/checks/browser_check.sh || failed+=("the reports in a browser")
tests/checks/fresh_machine_check.sh || failed+=("a new machine")

if ((${#failed[@]})); then
  printf 'Failed: %s\n' "${failed[@]}" >&2
  exit 1
fi
