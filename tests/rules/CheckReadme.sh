#!/usr/bin/env bash
# The README and the guide for beginners show the examples as they are compiled.
# usage: CheckReadme.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
for page in README.md docs/start.md; do
  for example in examples/Client.cpp examples/Server.cpp; do
    if [[ "$(cat "$page")" != *"$(cat "$example")"* ]]; then
      echo "$page does not show $example as it stands"
      exit 1
    fi
  done
done
echo "README.md and docs/start.md show the examples as they stand"
