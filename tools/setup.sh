# Sourced by ./run, ./check, ./benchmark, ./package and the checks: the packages of a list, and builds of
# what is out of date.
# Nothing here writes to standard output.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# install_packages [LIST]: installs the Debian packages of the list, packages.txt unless another is
# named, that are not there.
install_packages() {
  local wanted installed missing
  wanted=$(sed -e '/^#/d' -e '/^$/d' "$root/${1:-packages.txt}" | sort -u)
  # To ask for all takes as long as for one; it fails where one is unknown.
  installed=$({ xargs dpkg-query -W -f '${Status} ${Package}\n' <<<"$wanted" 2>/dev/null || true; } |
    sed -n 's/^install ok installed //p' | sort -u)
  mapfile -t missing < <(comm -23 <(echo "$wanted") <(echo "$installed"))
  ((${#missing[@]})) || return 0

  local as_root=()
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "These Debian packages are missing: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq)
  { "${apt[@]}" update && "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"; } >&2
}

# build PRESET [TARGET...]: configures if need be and builds. Shows the progress of a first build;
# of a later one only what goes wrong.
build() (
  local preset=$1
  shift
  local directory=$root/build/$preset
  mkdir -p "$directory"
  # One build at a time: two programs may be started at once. What a build starts does not keep the
  # lock.
  exec 9>"$root/build/.lock"
  flock 9
  cd "$root"
  steps() {
    [[ -f $directory/build.ninja ]] || cmake --preset "$preset"
    cmake --build "$directory" ${1:+--target "$@"}
  }
  if [[ -f $directory/.built ]]; then
    steps "$@" >"$directory/build.log" 2>&1 9>&- || { cat "$directory/build.log" >&2; exit 1; }
  else
    steps "$@" >&2 9>&- && touch "$directory/.built"
  fi
)
