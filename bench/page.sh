#!/usr/bin/env bash
# Puts what was measured into docs/performance.md, between the comments that say so, and draws its chart.
#
#   page.sh RESULTS GROWTH     what report.sh and scale.sh have kept
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
results=$1
growth=$2
page=$here/../docs/performance.md

# replace PART: what stands between "<!-- PART -->" and "<!-- end of PART -->" becomes what is read.
replace() {
  local text
  text=$(mktemp)
  cat >"$text"
  awk -v part="$1" -v text="$text" '
    $0 == "<!-- end of " part " -->" { while ((getline line < text) > 0) print line; within = 0 }
    !within { print }
    $0 == "<!-- " part " -->" { within = 1 }' "$page" >"$page.new"
  mv "$page.new" "$page"
  rm "$text"
}

machine() {
  local processor
  processor=$(sed -n 's/^model name[[:blank:]]*: //p' /proc/cpuinfo | sed q)
  echo "Measured with $(g++ -dumpfullversion) of g++, on ${processor:-$(uname -m)}, $(nproc) processors, $(uname -sr)."
}

machine | replace machine
"$here/table.sh" markdown "$results" | replace costs
"$here/growth.sh" markdown "$growth" | replace growth
"$here/chart.sh" "$results" >"$here/../docs/performance.svg"
