#!/usr/bin/env bash
# What bash completes for the tools, and their manual pages, held against what they explain themselves.
#
#   CompletionTests.sh VELSOCK_CAT VELSOCK_RESOLVE VELSOCK_TRACE TEST
set -euo pipefail

program=$(realpath "$1")
velsock_cat=$program
velsock_resolve=$(realpath "$2")
velsock_trace=$(realpath "$3")
test=$4
completions=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../../tools/completion")
# shellcheck source=Tool.sh
source "$(dirname "${BASH_SOURCE[0]}")/Tool.sh"
# shellcheck source=../../tools/completion/velsock-cat
source "$completions/velsock-cat"
# shellcheck source=../../tools/completion/velsock-resolve
source "$completions/velsock-resolve"
# shellcheck source=../../tools/completion/velsock-trace
source "$completions/velsock-trace"

# complete_with FUNCTION WORD...: what stands for the last word.
complete_with() {
  local complete=$1
  COMP_WORDS=("${@:2}")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  "$complete"
  echo "${COMPREPLY[*]}"
}

expect_completion() {
  expect_equal "$(complete_with "${@:2}")" "$1"
}

# expect_explained FUNCTION TOOL: what is completed is what the help names, long options and commands.
expect_explained() {
  local word
  for word in $(complete_with "$1" tool -) $(complete_with "$1" tool ''); do
    "$2" --help | grep -q -e "$word" || [[ $word =~ ^--(ipv[46]|xt|listen|udp|hex)$ ]] || fail "$word is not explained"
  done
  for word in $("$2" --help | grep -oE -e '--[a-z-]+' | sort -u); do
    [[ " $(complete_with "$1" tool --) " == *" $word "* ]] || fail "$word is not completed"
  done
}

TestCommandsAreCompleted() {
  expect_completion connect _velsock_cat velsock-cat con
  expect_completion 'udp-send udp-listen' _velsock_cat velsock-cat --json udp-
  expect_completion 'forward' _velsock_resolve velsock-resolve f
  expect_completion doctor _velsock_resolve velsock-resolve --json doc
  expect_completion 'list' _velsock_trace velsock-trace l
}

TestOptionsAreCompleted() {
  expect_completion '--send-only --send-timeout' _velsock_cat velsock-cat --send
  expect_completion '--connect-timeout' _velsock_cat velsock-cat connect host 80 --con
  expect_completion --json _velsock_resolve velsock-resolve forward --j
  expect_completion --pcapng _velsock_trace velsock-trace show 1 log --pc
}

TestValuesAreCompleted() {
  expect_completion 'packet' _velsock_cat velsock-cat --trace p
  : >log.txt
  expect_completion log.txt _velsock_cat velsock-cat --log-file lo
  expect_completion '' _velsock_cat velsock-cat -w ''
  expect_completion 'stream' _velsock_trace velsock-trace list --kind s
  expect_completion log.txt _velsock_trace velsock-trace show 1 lo
}

TestCompletionKnowsWhatTheToolsExplain() {
  expect_explained _velsock_cat "$velsock_cat"
  expect_explained _velsock_resolve "$velsock_resolve"
  expect_explained _velsock_trace "$velsock_trace"
}

# expect_in_manual TOOL: every long option of the help.
expect_in_manual() {
  local option page
  page=$completions/../../docs/man/$(basename "$1").1
  for option in $("$1" --help | grep -oE -e '--[a-z-]+' | sort -u); do
    grep -qE -e "Fl Fl ${option#--}( |\$)" "$page" || fail "$page does not explain $option"
  done
}

TestManualsKnowWhatTheToolsExplain() {
  expect_in_manual "$velsock_cat"
  expect_in_manual "$velsock_resolve"
  expect_in_manual "$velsock_trace"
}

"$test"
