#!/usr/bin/env bash
# packcheck for Windows finds in each of the broken packs what packcheck for this system finds, but for
# what it says that it leaves out, and nothing in the one that is not broken.
#   windows_packcheck.sh BUILD WINDOWS_BUILD COMMAND...      the command runs a program of Windows
set -euo pipefail
build=$1 windows=$2
shift 2
packs=tests/packs/broken_packs
left_out=' leaks_malloc blocks_a_signal too_many_rows '

# check PACK PROGRAM [OPTION...]: the checks that find something, in order.
check() {
  local pack=$1 hangs=()
  shift
  case $pack in *spins* | *sleeps*) hangs=(--time-limit 0.5) ;; esac
  { "$@" --json --depth brief "${hangs[@]}" "$pack" || true; } | tr -d '\r' |
    grep '"type":"finding"' |
    sed 's/.*"check":"\([^"]*\)".*/\1/' | sort -u || true
}

tried=0
for pack in "$build/$packs"/tiny_*.so; do
  name=$(basename "$pack" .so)
  [[ $left_out == *" ${name#tiny_} "* ]] && continue
  wanted=$(check "$pack" "$build/packcheck")
  # Where something is wrong, only the checks that say so: to start a process takes its time.
  only=()
  for found in $wanted; do only+=(--only "$found"); done
  got=$(check "$windows/$packs/$name.dll" "$@" "$windows/packcheck.exe" "${only[@]}")
  [[ $got == "$wanted" ]] || {
    printf '%s: found\n%s\nnot\n%s\n' "$name" "$got" "$wanted" >&2
    exit 1
  }
  tried=$((tried + 1))
done
((tried > 40))
echo "packcheck: $tried packs, the same findings as here"
