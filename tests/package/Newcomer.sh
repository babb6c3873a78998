#!/usr/bin/env bash
# Plays somebody who has just heard of the library: on a fresh system, installs its packages, copies the programs out of
# the README, builds them by CMake and with pkg-config, and runs them. Needs root, for the fresh system.
# usage: Newcomer.sh FOLDER_OF_PACKAGES
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
packages=$(realpath "$1")

# Mounts that end with this script, whatever happens.
if [ -z "${NEWCOMER_MOUNTS-}" ]; then
  NEWCOMER_MOUNTS=own exec unshare --mount "$here/Newcomer.sh" "$packages"
fi

root=$(mktemp -d)
chmod 755 "$root"
trap 'umount "$root/proc" 2>/dev/null || true; rm -rf "$root"' EXIT

in_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }

echo "A fresh system"
debootstrap --variant=minbase bookworm "$root" >"$root.log" 2>&1 || {
  tail "$root.log" >&2
  exit 1
}
rm "$root.log"
mount -t proc proc "$root/proc"
mkdir "$root/velsock"
cp "$packages"/*.deb "$root/velsock"
cp -r "$here" "$root/velsock/tests"

begin=$SECONDS
echo "The packages"
# shellcheck disable=SC2016  # for the inner shell
in_root sh -c 'apt-get -qq update &&
  apt-get -qq -o Dpkg::Use-Pty=0 install -y --no-install-recommends /velsock/*.deb cmake g++ make pkgconf >/dev/null'
in_root velsock-cat --version
in_root velsock-resolve --version
in_root /velsock/tests/Consume.sh /usr /usr/share/doc/libvelsock-dev/README.md
echo "From the packages to programs that run: $((SECONDS - begin)) s"
