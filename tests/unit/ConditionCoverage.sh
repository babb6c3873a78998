#!/usr/bin/env bash
# Runs unit tests and shows each decision of the floors above the platform in which they do not show of every condition
# that it decides by itself (MC/DC); fails if there is one.
# usage: ConditionCoverage.sh BUILD_FOLDER PROGRAM...
set -euo pipefail

build=$1
shift
profiles=$build/profiles
rm -rf "$profiles"
mkdir -p "$profiles"

objects=()
for program in "$@"; do
  LLVM_PROFILE_FILE=$profiles/$program.profraw "$build/bin/$program" --gtest_brief=1 >"$profiles/$program.log" ||
    { cat "$profiles/$program.log" && exit 1; }
  objects+=(-object "$build/bin/$program")
done
llvm-profdata-19 merge -o "$profiles/all.profdata" "$profiles"/*.profraw

cd "$(dirname "${BASH_SOURCE[0]}")/../.."
llvm-cov-19 show "${objects[@]}" -instr-profile "$profiles/all.profdata" -show-mcdc \
  -sources Common/Socket Common/support Common/text |
  awk '/^\/.*:$/ { file = $0 }
    /MC\/DC Decision Region/ { decision = file; decisions++ }
    decision && /[^ |]/ { decision = decision "\n" $0 }
    /MC\/DC Coverage for Decision:/ {
      if ($0 !~ /100\.00%/) { print decision; open++ }
      decision = ""
    }
    END { printf "%d decisions, %d of them with a condition that no test shows to decide\n", decisions, open
          exit (decisions == 0 || open > 0) }'
