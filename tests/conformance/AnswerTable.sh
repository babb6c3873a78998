#!/usr/bin/env bash
# Generates the table of answers in the documentation from the notes of the conformance tests on both systems, or
# compares one column of it with new notes.
# usage: AnswerTable.sh make NOTES_OF_LINUX NOTES_OF_WINE
#        AnswerTable.sh compare Linux|Wine NOTES TABLE
set -euo pipefail

# situations NOTES: a line for each test that runs on every system: situation, Windows' answers, those that came.
# A test's name is the situation; its words are those that begin with a capital letter.
situations() {
  awk -F '\t' -v OFS='\t' '
    function words(name) {
      while (match(name, /[a-z0-9][A-Z]|[A-Z][A-Z][a-z]/))
        name = substr(name, 1, RSTART) " " substr(name, RSTART + 1)
      name = tolower(name)
      gsub(/ipv4/, "IPv4", name)
      gsub(/ipv6/, "IPv6", name)
      gsub(/winsock/, "Winsock", name)
      gsub(/port0/, "port 0", name)
      return with_apostrophes(name)
    }
    # A test\047s name has no apostrophes: these are the owners that it may speak of.
    function with_apostrophes(name, owners, plain, i, count) {
      count = split("a client\047s|the client\047s|the listener\047s|the peer\047s|the system\047s|" \
                    "each thread\047s|the other side\047s|the socket\047s|other sockets\047|in Winsock\047s|" \
                    "has Winsock\047s", owners, "|")
      name = " " name " "
      for (i = 1; i <= count; i++) {
        plain = owners[i]
        sub(/\047/, "", plain)
        gsub(" " plain " ", " " owners[i] " ", name)
      }
      return substr(name, 2, length(name) - 2)
    }
    function situation(suite, test, parameter) {
      sub(/.*\//, "", suite)
      sub(/\/.*/, "", test)
      suite = words(suite)
      if (parameter != "") parameter = " (`" parameter "`)"
      gsub(/\|/, "\\|", parameter)
      return toupper(substr(suite, 1, 1)) substr(suite, 2) ": " words(test) parameter
    }
    # Without a number the answer is that the statement holds.
    function answers(outcome, noted) {
      if (noted != "") return noted
      return outcome == "skipped" ? "not run" : "holds"
    }
    $5 == "failed" { print "failed: " $2 "." $3 > "/dev/stderr"; failed = 1; next }
    $1 != "" { next }
    { print situation($2, $3, $4), answers("passed", $6), answers($5, $7) }
    END { exit failed || NR == 0 }' "$1"
}

make() {
  local linux wine
  linux=$(situations "$1")
  wine=$(situations "$2")
  cat <<'TEXT'
# What calls answer

Generated from the conformance tests by `./run answers`; do not edit. Each row is one test, described by its name. The
column Windows is what the test expects and what the library is written for; Linux and Wine are the results of the calls
when the tests ran there. No column was measured on Windows itself.

A number from 10000 is a Winsock error number, a smaller one the result of a call that succeeded. The calls for lists
and strings of addresses return their error numbers; theirs are the system's if they are small. A negative number is the
code of a crash, or one that only Wine has. If a test makes several calls, their results are listed in order; calls in a
row with the same result on Windows are listed once, with all their results. A situation whose result is not a number
*holds*. *No answer* means that Wine hangs or crashes there, or that the situation cannot be set up; the tests skip it.
`tests/conformance/WineAnswers.cpp` lists how Wine differs. Tests that use one system's own means
(`tests/conformance/posix`, `tests/conformance/windows`) have no row.

What the Linux side does not imitate is listed in [linux.md](linux.md#what-is-not-imitated), with the reasons.

| Situation | Windows | Linux | Wine |
|---|---|---|---|
TEXT
  awk -F '\t' 'NR == FNR { wine[$1] = $3; next }
    { printf "| %s | %s | %s | %s |\n", $1, $2, $3, $1 in wine ? wine[$1] : "not run" }' \
    <(echo "$wine") <(echo "$linux")
}

# rows TABLE: situation, Windows' answers, those of Linux, those of Wine.
rows() {
  sed -n '/^|---|/,$p' "$1" | sed '1d; s/\\|/\x01/g; s/^| //; s/ |$//; s/ | /\t/g; s/\x01/\\|/g'
}

# The expectations are compared with what Linux was expected to answer: Wine's run lacks what it leaves out. Situations
# that could not be brought about this time are not compared.
compare() {
  local came
  came=$(situations "$2")
  awk -F '\t' -v system_name="$1" '
    function complain(text) { print text; different = 1 }
    function differs(what, table, now) {
      if (table != now) complain($1 ": the table says " table " of " what ", now it is " now)
    }
    NR == FNR { windows[$1] = $2; answers[$1] = $3; next }
    { known[$1] = 1 }
    !($1 in answers) { complain($1 ": is in the table but not among the tests"); next }
    answers[$1] == "not run" { print $1 ": not run now"; next }
    system_name == "Linux" { differs("Windows", $2, windows[$1]) }
    { differs(system_name, system_name == "Linux" ? $3 : $4, answers[$1]); compared++ }
    END {
      for (situation in answers) if (!(situation in known)) complain(situation ": is not in the table")
      if (different) print "If the new answers are right, ./run answers generates the table again."
      else print "The table tells what " system_name " answers in " compared " situations."
      exit different || compared == 0
    }' <(echo "$came") <(rows "$3")
}

case ${1-} in
  make | compare) "$@" ;;
  *)
    sed -n 's/^# usage: //p; s/^#        //p' "$0" >&2
    exit 2
    ;;
esac
