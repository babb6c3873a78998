#!/usr/bin/env bash
# Measures the library beside bare system calls and its peers, and prints the table.
#
#   report.sh PROGRAMS MODULE RESULTS     the folder of the benchmarks' programs, the library, and the file that
#                                         keeps what was measured, in lines as those of count.sh
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
programs=$1
module=$2
results=$3

# The modules that the program for the comparison was linked with, as lines "SUBJECT PATH".
peer_modules() {
  ldd "$programs/bench_report" | awk '
    $1 ~ /^libPocoNet\./ { print "POCO", $3 }
    $1 ~ /^libACE-/ { print "ACE", $3 }
    $1 ~ /^libsfml-network\./ { print "SFML", $3 }
    $1 ~ /^libuv\./ { print "libuv", $3 }
    $1 ~ /^libspdlog\./ { print "spdlog", $3 }'
}

measure() {
  "$programs/bench_report" times
  "$here/count.sh" "$programs/bench_report" counts
  "$here/module.sh" "$programs/bench_load" library "$module"
  peer_modules | while read -r subject path; do
    "$here/module.sh" "$programs/bench_load" "$subject" "$path"
  done
}

measure >"$results.new"
mv "$results.new" "$results"
"$here/table.sh" text "$results"
