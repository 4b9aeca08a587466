#!/usr/bin/env bash
# The extension for LibreOffice Calc, as a user installs it: calc_check.py beside this says what is
# tried. Root cannot install extensions for himself: then it is done as nobody.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"

install_packages packages-calc.txt
build package oxt
build release worksheet matrix tiny_packs
/usr/bin/python3 "$root/tests/calc/worker_test.py" "$root/build/package/calc/extension/worker/pack_worker" \
  "$root/build/release/libmatrix.so" "$root/build/release/tests/packs/broken_packs"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$root"/build/package/*.oxt "$work/pack.oxt"
cp "$root"/build/release/tests/packs/broken_packs/tiny_{crashes,spins,none}.so "$work"
cp -L "$root"/build/release/{worksheet,libEfiUtils.so.0,libmatrix.so.0} "$work"
cp "$root/docs/functions.md" "$work/libmatrix.md"
cp -r "$root"/build/release/share "$root"/tests/checks/calc_check.py "$root"/calc/office.py "$root"/examples/vibration.ods "$work"
as_user=()
if ((EUID == 0)); then
  chown -R nobody "$work"
  as_user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi
cd "$work"
# Whatever it starts ends with it.
"${as_user[@]}" env HOME="$work" LD_LIBRARY_PATH="$work" \
  timeout --kill-after=10 300 /usr/bin/python3 calc_check.py "$@"
