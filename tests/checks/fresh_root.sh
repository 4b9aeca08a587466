# Sourced by checks that want a Debian system on which nothing is installed yet.

# make_root DIRECTORY [OPTION...]: such a system, from the package archive that this machine uses, with
# options of debootstrap.
make_root() {
  local archive fresh=$1
  shift
  archive=$(apt-get indextargets --format '$(SITE) $(CODENAME)' | awk '$2 == "bookworm" { print $1; exit }')
  debootstrap --variant=minbase "$@" bookworm "$fresh" "$archive" >"$fresh.log" || {
    cat "$fresh.log" >&2
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
