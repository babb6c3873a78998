#!/usr/bin/env bash
# The scenes call every public operation: each function that the module exports, and each slot of the exported classes.
# The objects' symbols tell of the first, the compiler's account of calls through slots (*.calls) of the second.
# usage: CheckScenes.sh NM ABI_FOLDER CALLS_FOLDER OBJECT...
set -euo pipefail

nm=$1 abi=$2 calls=$3
shift 3

called_functions() { "$nm" -uC "$@" | sed -nE 's/^ +U //p' | LC_ALL=C sort -u; }
exported_functions() {
  grep -E '\(' "$abi/exports-linux.txt" | grep -vE '^(#|(virtual|non-virtual) thunk)' |
    # Interfaces without data, whose own constructors, copies and destructors only those call who derive from them.
    grep -vE '^VelNet::(Socket|SocketXt|SocketAddressCache|SocketCollection|OctetsCollection)::(~|operator=|[A-Za-z]+\(VelNet::|[A-Za-z]+\(\))' |
    grep -vE '^(VelBase::ReferenceCounted|VelLog::LogSink)::~' |
    # A sink is written to by the library, when there are records.
    grep -vE '^VelLog::(FileSink|StandardErrorSink)::Write' |
    # These are called through slots.
    grep -vE '^(VelNet::Exception::GetMessage|VelSynch::ReferenceCountedImpl<int>::(AddRef|Release|ReferenceCountIsAboutToReachZero))' |
    LC_ALL=C sort -u
}

called_slots() {
  cat "$calls"/*.calls | grep -oP 'OBJ_TYPE_REF\(.*?;\((const )?struct \w+\).*?->\d+B\)' |
    sed -E 's/.*;\((const )?struct ([A-Za-z]+)\).*->([0-9]+)B\)$/\2 \3/' | LC_ALL=C sort -u
}
public_slots() {
  awk '
    function value(name, at) {
      at = index($0, name "=") + length(name) + 2
      return at == length(name) + 2 ? "" : substr($0, at, index(substr($0, at), "\x27") - 1)
    }
    /<class-decl / { class = value("name") }
    /vtable-offset=/ { slot = value("vtable-offset"); if (/destructor/) slot = "" }
    /<function-decl / && slot != "" { print class, slot; slot = "" }
  ' "$abi/layouts-linux.abi" |
    # The library calls these; and what counts references is called by the name of the one who declares it.
    grep -vE '^((Log|File|StandardError)Sink 2|ReferenceCountedImpl&lt;int&gt; [0-9]+)$' |
    LC_ALL=C sort -u
}

[ "$(called_slots | wc -l)" -gt 20 ] || { echo "The compiler's accounts of calls were not found"; exit 1; }
left_out=$(
  LC_ALL=C comm -23 <(exported_functions) <(called_functions "$@")
  LC_ALL=C comm -23 <(public_slots) <(called_slots) | sed 's/ / slot /'
)
if [ -n "$left_out" ]; then
  echo "No scene calls:"
  echo "$left_out"
  exit 1
fi
echo "The scenes call $(exported_functions | wc -l) functions and $(public_slots | wc -l) slots"
