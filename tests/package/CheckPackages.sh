#!/usr/bin/env bash
# Unpacks packages for Debian, and looks for the compiler's protections in what is in them.
# usage: CheckPackages.sh PACKAGE...
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

for package in "$@"; do dpkg-deb --extract "$package" "$folder"; done
mapfile -t files < <(find "$folder/usr" -type f \( -path '*/bin/*' -o -name 'libvelsock*.so.*[0-9]' -o -name 'libvelsock*.a' \))
"$(dirname "${BASH_SOURCE[0]}")/CheckProtections.sh" --installed "${files[@]}"
