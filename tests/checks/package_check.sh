#!/usr/bin/env bash
# The Debian package: it is sound, and in a fresh system it installs with what it depends on, runs, and
# goes without leaving anything behind.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"
source "$root/tests/checks/fresh_root.sh"

install_packages packages-full.txt
cd "$root"
./package >/dev/null
packages=(build/package/matrix-pack_*.deb build/package/matrix-pack-jupyter_*.deb)
lintian --allow-root --fail-on error,warning build/package/*.deb

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fresh=$scratch/root
make_root "$fresh"
run() {
  in_root "$fresh" "$@"
}
fail() {
  echo "$*" >&2
  exit 1
}

run apt-get -qq update
list_files() {
  (cd "$fresh" && find . -xdev \( -path ./proc -o -path ./tmp -o -path ./var/cache -o -path ./var/log \
    -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune -o -print | sort)
}
list_files >"$scratch/before"

cp "${packages[@]}" "$fresh/tmp/"
run sh -c 'apt-get -qq install --yes --no-install-recommends /tmp/*.deb' >/dev/null

examples=/usr/share/doc/matrix-pack/examples
diff <(run worksheet "$examples/circuit.ws") <(build/package/worksheet examples/circuit.ws) ||
  fail 'another answer than that of the build'
for example in "$fresh$examples"/*.ws; do
  run worksheet "${example#"$fresh"}" >/dev/null || fail "$example fails"
done
run worksheet --functions | grep 'lsolve' >/dev/null || fail 'no list of the functions'
run sh -ec '
  export WORKSHEET_CATALOGUE=/tmp/packs.json
  pack=$(find /usr/lib -name libmatrix.so.0)
  worksheet --register "$pack"
  worksheet --packs | grep -q libmatrix
  worksheet --unregister "$pack"
  test -z "$(worksheet --packs | grep libmatrix)"' || fail 'the catalogue fails'
for page in docs/man/*; do
  test -s "$fresh/usr/share/man/man${page##*.}/${page##*/}.gz" || fail "no manual page $page"
done
run sh -c 'test -x /usr/bin/worksheet && ldconfig -p | grep -q libEfiUtils.so.0' ||
  fail 'the libraries are not known to the loader'

run grep -q '"/usr/libexec/worksheet-kernel"' /usr/share/jupyter/kernels/worksheet/kernel.json &&
  run sh -c '/usr/libexec/worksheet-kernel 2>&1 | grep -q usage' || fail 'no notebook kernel'

# The worker of the extension needs what it brings along and what every system has.
worker=build/package/calc/extension/worker
for library in $(objdump -p "$worker/pack_worker" | awk '/NEEDED/ { print $2 }'); do
  [[ -e $worker/$library || $library =~ ^lib(stdc\+\+|gcc_s|m|c)\.so ]] || fail "the extension needs $library"
done

run apt-get -qq purge --yes --auto-remove matrix-pack matrix-pack-jupyter >/dev/null
list_files >"$scratch/after"
diff "$scratch/before" "$scratch/after" || fail 'the package leaves something behind'
run dpkg --audit
echo "${packages[*]##*/}: installs, runs and goes"
