#!/usr/bin/env bash
# Each tool has a manual page, which mandoc finds nothing wrong with.
# usage: CheckManuals.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
command -v mandoc >/dev/null || {
  echo "mandoc is missing"
  exit 1
}
problems=0
problem() {
  echo "$1"
  problems=$((problems + 1))
}

pages=0
for help in tools/velsock-*/Help.cpp; do
  tool=$(basename "$(dirname "$help")")
  page=docs/man/$tool.1
  if [ ! -e "$page" ]; then
    problem "$tool has no manual page"
    continue
  fi
  # Pages name each other whether or not they are installed.
  findings=$(mandoc -T lint "$page" | grep -v 'referenced manual not found' || true)
  [ -z "$findings" ] || problem "$findings"
  pages=$((pages + 1))
done
[ "$pages" -gt 0 ] || problem "there are no tools"
[ "$problems" = 0 ] || exit 1
echo "$pages tools have their manual pages"
