#!/usr/bin/env bash
# What README promises to someone with a new machine: from nothing but git, ./run installs what it needs,
# builds and computes; once the packages are there it does so without a network, and for a user who may
# not install anything.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../tools/setup.sh"
source "$root/tests/checks/fresh_root.sh"

install_packages packages-full.txt
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fresh=$scratch/root
make_root "$fresh"
git clone --quiet --bare "$root" "$fresh/srv/matrix.git"

# expect COMMAND...: it prints the solution that README shows.
expect() {
  local output
  output=$("$@" 2>"$scratch/log") || { cat "$scratch/log" >&2; exit 1; }
  [[ $output == $'2 x 1 matrix\n  0.1\n  0.6' ]] || { echo "$output" >&2; exit 1; }
}
compute="cd && git clone --quiet /srv/matrix.git matrix && cd matrix && ./run -e 'lsolve([4,1;2,3],[1;2])'"

in_root "$fresh" sh -c 'apt-get -qq update && apt-get -qq install --yes --no-install-recommends git' \
  >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; exit 1; }
expect in_root "$fresh" sh -ec "$compute"
in_root "$fresh" sh -ec 'useradd --create-home user && chown -R user /srv/matrix.git'
expect in_root "$fresh" --offline setpriv --reuid=user --regid=user --init-groups \
  env HOME=/home/user sh -ec "$compute"
echo 'A new machine: from a clone to a result, then offline and without privileges'
