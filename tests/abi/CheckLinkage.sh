#!/usr/bin/env bash
# Links one use of each function and variable that the public headers declare with the module: a client that uses
# what it sees must not end in an undefined reference. Nothing is to be linked of what is inline, deleted or pure, or
# a template that clients instantiate themselves.
# usage: CheckLinkage.sh COMPILER NM OBJDUMP LIBRARY INCLUDE_FOLDER... < LIST_OF_PUBLIC_HEADERS
# LIBRARY is what clients link.
set -euo pipefail

compiler=$1
nm=$2
objdump=$3
library=$4
shift 4
mapfile -t public_headers
here=$(cd "$(dirname "$0")" && pwd)
includes=(-I "$here")
for folder in "$@"; do includes+=(-I "$folder"); done
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# describe HEADER...: has the compiler write down what they declare, as specifications in another language and as
# debugging information. Of the functions only those that are inline are defined in the object.
describe() {
  rm -f ./*.ads
  printf '#include <%s>\n' "$@" >headers.cpp
  "$compiler" -std=c++17 -DVELSOCK_STATIC "${includes[@]}" -c headers.cpp -g -O0 -fdump-ada-spec \
    -fkeep-inline-functions -fno-eliminate-unused-debug-types -femit-class-debug-always
  "$objdump" --dwarf=info headers.o >debugging
}

# The symbols in what the compiler writes for Ada, which have all but copy and move constructors.
specified() { sed -nE 's/.*(External_Name => |CPP_Constructor \([^,]*, )"([^"]*)".*/\2/p' ./*.ads; }

# The symbols of constructors in the debugging information, except those of templates that the Ada text does
# not know: clients instantiate them.
debugged_constructors() {
  local symbol class
  while read -r symbol; do
    class=${symbol%%C4E*}
    [[ $class == *I*E ]] && ! grep -qF "$class" specified.txt || echo "${class}C1E${symbol#*C4E}"
  done < <(grep -oE '_ZN[A-Za-z0-9_]+C4E[A-Za-z0-9_]+$' debugging)
}

# The symbols that are not for the module to define.
complete() {
  "$nm" --defined-only headers.o | awk '{ print $NF }'
  awk '/Abbrev Number:/ { symbol = "" }
       /DW_AT_linkage_name/ { symbol = $NF; sub(/C4E/, "C1E", symbol); sub(/D4E/, "D1E", symbol) }
       symbol != "" && /DW_AT_(inline|deleted) |DW_AT_defaulted .*in class/ { print symbol }' debugging
}

# A constructor or destructor of whole objects has a companion for bases.
with_companions() { sed -E 'p; s/([CD])1E/\12E/' | LC_ALL=C sort -u; }

# declared HEADER...: all symbols that they leave to the module; the standard library's are not theirs.
declared() {
  describe "$@"
  specified >specified.txt
  debugged_constructors >constructors.txt
  complete | with_companions >complete.txt
  with_companions < <(cat specified.txt constructors.txt) | grep -vxFf complete.txt | grep -vE '^_Z(NK?)?St'
}

# Reads symbols and links a use of each; the names of those that cannot be linked.
unlinkable() {
  awk '{ printf "void use%d() __asm__(\"%s\");\n", NR, $0; uses = uses sprintf("use%d, ", NR) }
       END { printf "extern void (*const uses[])();\nvoid (*const uses[])() = {%s};\nint main() {}\n", uses }' >uses.cpp
  "$compiler" uses.cpp "$library" -o uses 2>errors && return
  grep -q 'undefined reference' errors || cat errors
  sed -nE "s/.*undefined reference to .([^']*)'.*/\1/p" errors | LC_ALL=C sort -u
}

# First that no kind of declaration is overlooked, and nothing else taken for one.
expected='EveryKind::Abstract::Abstract()
EveryKind::Abstract::Abstract(EveryKind::Abstract const&)
EveryKind::Abstract::Protected()
EveryKind::Abstract::Virtual()
EveryKind::Abstract::~Abstract()
EveryKind::Function(char const*)
EveryKind::Plain::Method() const
EveryKind::Plain::Plain()
EveryKind::Plain::Plain(EveryKind::Plain const&)
EveryKind::Plain::Plain(EveryKind::Plain&&)
EveryKind::Plain::Plain(int)
EveryKind::Plain::StaticMethod()
EveryKind::Plain::operator=(EveryKind::Plain const&)
EveryKind::Plain::staticMember
EveryKind::Plain::~Plain()
EveryKind::Template<int>::Method() const
EveryKind::Template<int>::Template()
EveryKind::Template<int>::Template(EveryKind::Template<int> const&)
EveryKind::operator==(EveryKind::Plain const&, EveryKind::Plain const&)
EveryKind::variable
EveryKindOfC'
if ! difference=$(diff <(echo "$expected") <(declared EveryKind.h | unlinkable)); then
  echo "These kinds of declarations are not told apart (< must be linked, > is taken for it):"
  echo "$difference"
  exit 1
fi

declared "${public_headers[@]}" >declared.txt
missing=$(unlinkable <declared.txt)
if [ -n "$missing" ]; then
  echo "The public headers declare what clients cannot link:"
  echo "$missing"
  exit 1
fi
echo "$(wc -l <declared.txt) symbols of ${#public_headers[@]} public headers can be linked"
