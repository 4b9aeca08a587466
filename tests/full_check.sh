#!/usr/bin/env bash
# The part of ./check --full that is about builds: every further build passes all tests, and all
# builds give the same bits. The digest of a build says what all functions answer on a fixed corpus;
# see tests/digest/digest.cpp.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../tools/setup.sh"

install_packages packages-full.txt
cd "$root"
digests=build/digests
mkdir -p "$digests"

print_digest() {
  local emulator=()
  [[ $1 == arm64 ]] && emulator=(qemu-aarch64 -L /usr/aarch64-linux-gnu)
  "${emulator[@]}" "build/$1/tests/digest/digest"
}

# ./check runs the tests of these two; here they are the measure for the others.
for preset in release flags; do
  build "$preset" digest
  print_digest "$preset" >"$digests/$preset"
done
for preset in debug clang m32 arm64; do
  SECONDS=0
  build "$preset"
  print_digest "$preset" >"$digests/$preset"
  ctest --preset "$preset" --parallel "$(nproc)"
  echo "$preset: built and tested in $SECONDS s"
done

# same KIND PRESET...: the builds print the same lines of that kind.
same() {
  local kind=$1 reference=$2 preset
  shift
  for preset in "$@"; do
    if ! diff <(lines "$kind" "$reference") <(lines "$kind" "$preset"); then
      echo "The $kind of $reference and $preset differ: see digest --calls NAME of both" >&2
      return 1
    fi
  done
  echo "Same $kind: $*"
}
lines() {
  case $1 in
    results) grep -v -e '^#' -e '^fault-words' "$digests/$2" ;;
    fault-words) grep '^fault-words' "$digests/$2" ;;
  esac
}

same results release flags debug clang m32 arm64
same fault-words release debug m32
same fault-words flags clang arm64
