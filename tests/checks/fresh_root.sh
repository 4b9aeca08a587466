# Sourced by checks that want a Debian system on which nothing is installed yet.

# make_root DIRECTORY: such a system, from the package archive that this machine uses.
make_root() {
  local archive
  archive=$(apt-get indextargets --format '$(SITE) $(CODENAME)' | awk '$2 == "bookworm" { print $1; exit }')
  debootstrap --variant=minbase bookworm "$1" "$archive" >"$1.log" || {
    cat "$1.log" >&2
    return 1
  }
}

# in_root DIRECTORY [--offline] COMMAND...: runs a command there as root, with nothing of our
# environment and processes and terminals of its own.
in_root() {
  local fresh=$1 options=(--mount --pid --fork --mount-proc="$1/proc")
  shift
  if [[ $1 == --offline ]]; then
    options+=(--net)
    shift
  fi
  unshare "${options[@]}" sh -ec '
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$0/dev/pts"
    mount --bind "$0/dev/pts/ptmx" "$0/dev/ptmx"
    exec chroot "$0" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      HOME=/root DEBIAN_FRONTEND=noninteractive "$@"' "$fresh" "$@"
}
