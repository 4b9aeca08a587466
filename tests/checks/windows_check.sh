#!/usr/bin/env bash
# The builds for Windows, 64-bit and 32-bit, pass their tests under Wine, and the zip is whole. Their
# digests go to a directory:
#   windows_check.sh DIRECTORY
# MATRIX_WINE32 may name a system with Wine for 32-bit programs; else one is made for this run (two
# minutes, 1.1 GB).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"
source "$root/tests/checks/fresh_root.sh"

digests=$(realpath "$1")
install_packages
install_packages packages-windows.txt
cd "$root"
# What is compared with.
build release
build release tiny_packs
scratch=$(mktemp -d)
export WINEPREFIX=$scratch/prefix WINEDEBUG=-all
leave() {
  wineserver -k 2>/dev/null || true
  rm -rf "$scratch"
}
trap leave EXIT
if [[ -z ${MATRIX_WINE32:-} ]]; then
  export MATRIX_WINE32=$scratch/wine32
  make_root "$MATRIX_WINE32" --arch=i386 --include=wine,wine32
fi

# The first start makes what Wine keeps for its user.
wine wineboot --init >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; exit 1; }
for target in 64 32; do
  SECONDS=0
  build win$target
  run=wine
  [[ $target == 32 ]] && run=cmake/windows/wine32
  "$run" build/win$target/digest.exe | tr -d '\r' >"$digests/win$target"
  # One at a time: a program of tests holds many, and the checks among them start many at once.
  ctest --preset win$target
  tests/checks/windows_packcheck.sh build/release build/win$target "$run"
  echo "win$target: built and tested in $SECONDS s"
done

tests/checks/windows_worksheets.sh build/release build/win64 wine

cmake --workflow --preset package-windows >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; exit 1; }
(cd "$scratch" && cmake -E tar xf "$root"/build/package-windows/matrix-pack-*-win64.zip)
[[ $(cd "$scratch"/matrix-pack-* && wine bin/minimal_host.exe bin/matrix.dll | tr -d '\r') == \
  $'0.10000000000000001\n0.59999999999999998\n'* ]]
[[ $(cd "$scratch"/matrix-pack-* && wine bin/worksheet.exe -e 'svds([3,4;0,0]) * 1 {kN} in {N}' | tr -d '\r') == \
  *5000* ]]
echo 'The zip for Windows: unpacked, and results computed'
