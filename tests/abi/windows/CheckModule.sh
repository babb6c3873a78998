#!/usr/bin/env bash
# Looks at the Windows module as a file: what it exports, what it needs, how it may be loaded, and that it
# tells its version.
# usage: CheckModule.sh OBJDUMP MODULE LIST_OF_EXPORTS
set -euo pipefail

objdump=$1
module=$2
list=$3
headers=$("$objdump" --private-headers "$module")

fail() {
  echo "$1"
  exit 1
}

# The compiler exports along what clients cannot name: copies of exported functions that the optimizer makes, and
# type descriptions of classes nothing else of which is exported, now of these and now of those.
exports() {
  sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$headers" | awk 'NR > 1 && NF >= 3 { print $NF }' |
    c++filt | grep -v "\[clone " | LC_ALL=C sort -u | without_internal_types
}

without_internal_types() {
  awk '{ names[NR] = $0; all = all "\n" $0 }
    END {
      for (line = 1; line <= NR; ++line) {
        class = names[line]
        if (sub(/^typeinfo for /, "", class) && !index(all, "\n" class "::"))
          continue
        print names[line]
      }
    }'
}

[ "$(exports | wc -l)" -gt 1 ] || fail "no exports were found"
difference=$(diff <(grep -v '^#' "$list" | grep -v '^$' | LC_ALL=C sort -u) <(exports)) ||
  fail "The module's exports differ from the list (< listed, > exported):"$'\n'"$difference"

needs() { "$objdump" --private-headers "$1" | sed -n 's/.*DLL Name: //p'; }

# The language's library waits by means of libwinpthread; the module itself does not.
foreign=$(needs "$module" | grep -viE '^(ws2_32|advapi32|kernel32|msvcrt|libstdc\+\+-6|libgcc_s_seh-1)\.dll$' || true)
[ -z "$foreign" ] || fail "The module needs more than the system's and the language's libraries: $foreign"

# What the language's libraries need is theirs or the system's, and lies beside the module.
for library in libstdc++-6 libgcc_s_seh-1 libwinpthread-1; do
  path=$(dirname "$module")/$library.dll
  [ -s "$path" ] || fail "$library.dll does not lie beside the module"
  foreign=$(needs "$path" |
    grep -viE '^(kernel32|msvcrt|user32|libstdc\+\+-6|libgcc_s_seh-1|libwinpthread-1)\.dll$' || true)
  [ -z "$foreign" ] || fail "$library.dll needs what is not shipped: $foreign"
done

for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
  grep -q "$flag" <<<"$headers" || fail "The module is not marked $flag"
done
"$objdump" --section-headers "$module" | grep -q '\.reloc' || fail "The module cannot be moved: it has no relocations"

grep -aq "$(printf 'V\0S\0_\0V\0E\0R\0S\0I\0O\0N\0_\0I\0N\0F\0O' | tr '\0' '.')" "$module" ||
  fail "The module has no version resource"
echo "$(exports | wc -l) exported names, all listed; no foreign library"
