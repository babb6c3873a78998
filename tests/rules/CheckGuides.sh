#!/usr/bin/env bash
# What README and guides show of C++ is compiled: each block stands in one of the examples, or of the guides' tests,
# paragraph by paragraph and wherever the lines are broken.
# usage: CheckGuides.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
mapfile -t sources < <(find examples tests/guides -name '*.cpp' | LC_ALL=C sort)
mapfile -t documents < <(find README.md docs -name '*.md' | LC_ALL=C sort)
awk '
  function plain(text) { gsub(/[ \t\n]+/, "", text); return text }

  # Every paragraph of the block in one and the same source.
  function is_compiled(block, source, paragraphs, count, i, all) {
    count = split(block, paragraphs, "\n\n+")
    for (source in text) {
      all = 1
      for (i = 1; i <= count && all; i++) all = index(text[source], plain(paragraphs[i])) > 0
      if (all) return 1
    }
    return 0
  }
  function check(block) {
    gsub(/^\n+|\n+$/, "", block)
    blocks++
    if (is_compiled(block)) return
    print FILENAME ":" first ": no source that is compiled has this block as it stands"
    failed = 1
  }

  FILENAME ~ /\.cpp$/ { text[FILENAME] = text[FILENAME] plain($0); next }
  /^ *```cpp/ { in_block = 1; block = ""; first = FNR; next }
  /^ *```/ { if (in_block) check(block); in_block = 0; next }
  in_block { block = block $0 "\n" }
  END {
    if (blocks == 0) print "no blocks were found"
    else if (!failed) print blocks " blocks of C++ are compiled as they stand"
    exit failed || blocks == 0
  }' "${sources[@]}" "${documents[@]}"
