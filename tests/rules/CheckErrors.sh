#!/usr/bin/env bash
# The catalogue of errors has each code once, with its number, its symbol and the text that the library has for it, and
# says what causes it.
# usage: CheckErrors.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
table=companion/include/VelCompanion/ErrorCatalogue.h
numbers=Common/Socket/include/VelNet/SocketError.h
document=docs/errors.md

# "NUMBER|SYMBOL|TEXT|" by number: from the sources, and from the document.
from_sources() {
  sed -nE 's/^ *(SOCKET_ERR_[A-Z0-9_]+) = (-?[0-9]+),.*/\1 \2/p' "$numbers" |
    while read -r symbol number; do
      sed -nE "s/.*\"$symbol\", *\"([^\"]*)\".*/$number|\`$symbol\`|\1|/p" "$table"
    done
}
from_document() {
  # shellcheck disable=SC2016  # the quotes are Markdown's
  sed -nE 's/^\| (-?[0-9]+) \| (`SOCKET_ERR_[A-Z0-9_]+`) \| ([^|]*) \| [^| ][^|]* \|( [^|]*)? \|$/\1|\2|\3|/p' "$document"
}

[[ -n $(from_sources) ]] || {
  echo "no errors were found"
  exit 1
}
diff <(from_sources) <(from_document) || {
  echo "$document does not have the errors of $table"
  exit 1
}
echo "$(from_document | wc -l) errors are catalogued"
