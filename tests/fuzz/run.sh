#!/usr/bin/env bash
# Fuzzes each target for a time, from the shipped corpus on.
#
#   tests/fuzz/run.sh [--keep] [SECONDS [TARGET...]]
#
# An input that fails is left in build/fuzz and shown as a line for the corpus. --keep then replaces
# the shipped corpora by the smallest sets of inputs that reach as much.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

keep=
if [[ ${1:-} == --keep ]]; then
  keep=1
  shift
fi
seconds=${1:-60}
shift || true
targets=("$@")
((${#targets[@]})) || targets=(handlers worksheet table matrix_market)

build fuzz fuzz
cd "$root/build/fuzz"
tool=$root/tests/fuzz/corpus.py

for target in "${targets[@]}"; do
  fuzzer=tests/fuzz/fuzz_$target
  shipped=$root/tests/fuzz/corpus/$target.txt
  inputs=inputs-$target
  "$tool" unpack "$shipped" "$inputs"
  echo "Fuzzing $target for $seconds seconds" >&2
  if ! "$fuzzer" -max_total_time="$seconds" -max_len=512 -timeout=30 -artifact_prefix="$target-" \
    -print_final_stats=1 "$inputs" >"$target.log" 2>&1; then
    grep -E 'Complaint|ERROR|runtime error|SUMMARY' "$target.log" >&2 || tail -20 "$target.log" >&2
    left=$(sed -n 's/.*Test unit written to //p' "$target.log")
    [[ -z $left ]] || "$tool" show "$left" >&2
    exit 1
  fi
  grep -E 'number_of_executed_units|average_exec_per_sec' "$target.log" >&2
  if [[ $keep ]]; then
    rm -rf "least-$target" && mkdir "least-$target"
    "$fuzzer" -merge=1 -timeout=30 "least-$target" "$inputs" >"$target-merge.log" 2>&1
    "$tool" pack "$shipped" "least-$target"
  fi
done
