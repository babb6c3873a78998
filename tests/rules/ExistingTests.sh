# shellcheck shell=bash
# What several rules ask of the tests.

# The tests that exist, as Suite.Test. A macro may go on in the next line.
existing_tests() {
  find tests -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
    grep -oE '\bTEST(_F|_P)?\( *[A-Za-z0-9]+, *[A-Za-z0-9]+ *\)' |
    sed -E 's/^[^(]*\( *([A-Za-z0-9]+), *([A-Za-z0-9]+) *\)$/\1.\2/' | sort -u
}
