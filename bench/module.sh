#!/usr/bin/env bash
# Prints how large the module is when it is stripped, and how many instructions it takes to load it, in lines as
# those of count.sh.
#
#   module.sh LOADER MODULE
set -euo pipefail

loader=$1
module=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

strip -o "$scratch/module" "$module"
echo "module library bytes $(stat -L -c %s "$scratch/module")"
valgrind --quiet --tool=callgrind --callgrind-out-file="$scratch/profile" --collect-atstart=no \
  "$loader" "$scratch/module"
awk '/^totals:/ { print "load library instructions", $2 }' "$scratch/profile"
