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

# in_root DIRECTORY COMMAND...: runs a command there as root, with nothing of our environment.
in_root() {
  local root=$1
  shift
  unshare --mount --pid --fork --mount-proc="$root/proc" chroot "$root" \
    env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
    DEBIAN_FRONTEND=noninteractive "$@"
}
