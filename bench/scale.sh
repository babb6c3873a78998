#!/usr/bin/env bash
# Counts what operations cost as the numbers grow that they depend on, and prints the table of growth.sh.
#
#   scale.sh PROGRAMS RESULTS     the folder of the benchmarks' programs, and the file that keeps what was counted
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
programs=$1
results=$2

# A table of hosts of its own needs a mount of its own.
can_mount() { unshare --map-root-user --mount true 2>/dev/null; }

count_with_own_hosts() {
  local hosts
  hosts=$(mktemp)
  # shellcheck disable=SC2016  # for the inner shell
  unshare --map-root-user --mount bash -c 'mount --bind "$1" /etc/hosts && "${@:2}" "$1"' - \
    "$hosts" "$here/count.sh" "$programs/bench_scale"
  rm "$hosts"
}

count() {
  if can_mount; then
    count_with_own_hosts
  else
    echo "scale: hosts of many addresses are not measured: no mount can be made" >&2
    "$here/count.sh" "$programs/bench_scale"
  fi
}

count >"$results.new"
mv "$results.new" "$results"

"$here/growth.sh" text "$results"
