#!/usr/bin/env bash
# The README shows the examples as they are compiled.
# usage: CheckReadme.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
for example in examples/Client.cpp examples/Server.cpp; do
  if [[ "$(cat README.md)" != *"$(cat "$example")"* ]]; then
    echo "README.md does not show $example as it stands"
    exit 1
  fi
done
echo "README.md shows the examples as they stand"
