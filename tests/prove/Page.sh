#!/usr/bin/env bash
# Makes docs/proof.md from what the stages have printed: each with what its script says of itself.
# usage: Page.sh PROJECT_FOLDER RESULTS_FOLDER
set -euo pipefail

project=$1 results=$2

machine() {
  local processor
  processor=$(sed -n 's/^model name[[:blank:]]*: //p' /proc/cpuinfo | sed q)
  echo "${processor:-$(uname -m)}, $(nproc) processors, $(uname -sr), $(g++ -dumpfullversion) of g++"
}

# description STAGE: the comment at the head of its script, without its usage.
description() {
  sed -n '2,/^# usage:/p' "$project/tests/prove/$1.sh" | sed '/^# usage:/d; s/^# \{0,1\}//'
}

# output STAGE: without what the build said.
output() {
  grep -vE '^(\[[0-9]+/[0-9]+\]|ninja:|Installing )' "$results/$1.txt"
}

cat <<TEXT
# What the long tests showed

What the stages of \`./run prove\` printed last, put together on $(date -u +%F), on
$(machine).
TEXT
for stage in $("$project/tests/prove/Stages.sh"); do
  # shellcheck disable=SC2016  # the marks of code
  printf '\n## %s\n\n%s\n\n```\n%s\n```\n' "${stage^}" "$(description "$stage")" "$(output "$stage")"
done
