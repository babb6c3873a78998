#!/usr/bin/env bash
# Loading the module must do nothing: it holds no initializer but the compiler's own single entry, and needs
# nothing but the language's and the system's libraries.
# usage: CheckInitializers.sh MODULE
set -euo pipefail

module=$1
entry_size=8

size=$(readelf --sections --wide "$module" | awk '$2 == ".init_array" || $3 == ".init_array" {
  for (i = 1; i <= NF; i++) if ($i == ".init_array") { print $(i + 4); exit } }')
if [[ -z $size ]]; then
  echo "no .init_array found"
  exit 1
fi
if ((16#$size > entry_size)); then
  echo "The module has $((16#$size / entry_size)) initializers; one, the compiler's own, is expected."
  exit 1
fi

if readelf --dynamic "$module" | grep NEEDED | grep -vE '\[(libstdc\+\+|libm|libgcc_s|libc|ld-linux[^]]*)\.so'; then
  echo "The module depends on more than the language's and the system's libraries."
  exit 1
fi
echo "one initializer, the compiler's own; no foreign library"
