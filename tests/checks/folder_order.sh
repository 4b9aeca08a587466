#!/usr/bin/env bash
# Includes point one way: a folder of the host knows those above it in these lists, and no other.
set -euo pipefail
cd "$1"
shared="host/efiutils/system host/efiutils host/text host/units host/packs"
worksheet="$shared host/arguments host/audit/numeric host/audit
  host/worksheet/values host/worksheet/engine host/worksheet/operators host/worksheet/data
  host/worksheet/plot host/worksheet/functions host/worksheet/language host/worksheet/help
  host/worksheet/session host/worksheet/output host/worksheet/state host/worksheet/report
  host/worksheet/program/system host/worksheet/program host/kernel"
packcheck="$shared host/arguments host/packcheck/memory host/packcheck/watch host/packcheck
  host/packcheck/arguments host/packcheck/process host/packcheck/checks host/packcheck/program"
calc="$shared calc"
failed=0
for order in "$worksheet" "$packcheck" "$calc"; do
  known=""
  for folder in $order; do
    known+=" $folder "
    while IFS=: read -r file line; do
      [[ $known == *" $(dirname "$line") "* ]] && continue
      echo "$file includes $line, which stands above it"
      failed=1
    done < <(grep -Ho '^#include "host/[^"]*' "$folder"/*.[ch]pp | sed 's/#include "//')
  done
done
# No folder is forgotten.
for folder in $(find host -name '*.[ch]pp' -printf '%h\n' | sort -u); do
  [[ " $(echo $worksheet $packcheck) " == *" $folder "* ]] || { echo "$folder has no place in the order"; failed=1; }
done
exit $failed
