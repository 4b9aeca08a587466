#!/usr/bin/env bash
# Twenty processes that enter the catalogue at once: no entry is lost, and nothing is left behind.
#   registrations.sh PROGRAM...   the program that enters one, behind what runs it
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export WORKSHEET_CATALOGUE=$scratch/packs.json
processes=()
for number in {1..20}; do
  "$@" "$number" &
  processes+=($!)
done
failed=0
for process in "${processes[@]}"; do wait "$process" || failed=1; done
count=$(grep -c '"id"' "$scratch/packs.json")
files=$(ls -A "$scratch" | tr '\n' ' ')
[[ $failed == 0 && $count == 20 && $files == 'packs.json packs.json.lock ' ]] ||
  { echo "$count entries, and the files $files" >&2; exit 1; }
