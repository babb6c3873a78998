#!/usr/bin/env bash
# The README and the guide for beginners show the examples as they are compiled, and the README's numbers of cases are
# those that the long tests printed last.
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
for cases in $(grep -oE '[(][0-9,]+ cases[)]' README.md | tr -cd '0-9\n'); do
  if ! grep -q "^$cases cases of " docs/proof.md; then
    echo "README.md speaks of $cases cases, docs/proof.md does not"
    exit 1
  fi
done
echo "README.md and docs/start.md show the examples as they stand"
