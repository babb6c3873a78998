#!/usr/bin/env bash
# Reference counts are plain integers in the built code, too: to take or drop a reference makes no interlocked
# instruction, and does not call anything that could make one.
# usage: CheckCounting.sh OBJDUMP MODULE
set -euo pipefail

objdump=$1
module=$2
class=_ZNK8VelSynch20ReferenceCountedImplIiE

fail() {
  echo "$1"
  exit 1
}

# The function's instructions, one per line.
code_of() {
  "$objdump" --disassemble="$class$1" --no-show-raw-insn "$module" |
    sed -nE 's/^ *[0-9a-f]+:[[:space:]]+//p'
}

# xchg with memory locks implicitly.
interlocked='^(lock|xacquire|xrelease|xadd|cmpxchg|xchg.*\()|mfence'

add_ref=$(code_of 6AddRefEv)
release=$(code_of 7ReleaseEv)
[[ -n $add_ref && -n $release ]] || fail "The functions were not found in the module"
for code in "$add_ref" "$release"; do
  if grep -E "$interlocked" <<<"$code"; then fail "A reference is counted with an interlocked instruction"; fi
done
if grep -E '^call' <<<"$add_ref"; then fail "To take a reference calls another function"; fi
grep -qE '^(add|inc|sub)[lq]? .*\(' <<<"$add_ref" || fail "No increment was found:"$'\n'"$add_ref"
echo "references are counted by plain instructions"
