#!/usr/bin/env bash
# Prints how large a module is when it is stripped, and how many instructions it takes to load it and to bind all its
# symbols, in lines as those of count.sh.
#
#   module.sh LOADER SUBJECT MODULE
set -euo pipefail

loader=$1
subject=$2
module=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

strip -o "$scratch/module" "$module"
echo "module $subject bytes $(stat -L -c %s "$scratch/module")"
# The loader's work depends on how long names and the environment are, and thereby where they end.
cp "$loader" "$scratch/loader"
env -i "$(command -v valgrind)" --quiet --tool=callgrind --callgrind-out-file="$scratch/profile" --collect-atstart=no \
  "$scratch/loader" "$scratch/module"
awk -v subject="$subject" '/^totals:/ { print "load", subject, "instructions", $2 }' "$scratch/profile"
