#!/usr/bin/env bash
# Draws what was measured, as an SVG for light and dark pages.
#
#   chart.sh RESULTS
set -euo pipefail

awk '
  BEGIN {
    row_height = 30; top = 96; text_right = 168
    panels = "instructions ratio"
    begin_of["instructions"] = 190; lowest["instructions"] = 5; highest["instructions"] = 1000000
    begin_of["ratio"] = 580; lowest["ratio"] = 0.25; highest["ratio"] = 50
    title["instructions"] = "instructions beyond the first in the row"; title["ratio"] = "time, the first of the row being 1"
    width["instructions"] = 350; width["ratio"] = 330
    legend = "library library-extended Asio POCO ACE SFML libuv spdlog resolver"
  }
  $3 == "ratio" { value[$1, $2, "ratio"] = $5; next }
  $3 == "instructions" { value[$1, $2, "instructions"] = $4 }
  $3 == "operations" && !($1 in members) { rows[++count] = $1 }
  $3 == "operations" { members[$1] = members[$1] " " $2 }

  function place(panel, number) {
    if (number < lowest[panel]) number = lowest[panel]
    if (number > highest[panel]) number = highest[panel]
    return begin_of[panel] + width[panel] * log(number / lowest[panel]) / log(highest[panel] / lowest[panel])
  }
  function text(x, y, class, words) { printf "<text x=\"%.1f\" y=\"%.1f\" class=\"%s\">%s</text>\n", x, y, class, words }
  function tick(panel, number, label,   x) {
    x = place(panel, number)
    printf "<line x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\" class=\"grid\"/>\n", x, top - 14, x, bottom
    text(x, top - 20, "tick", label)
  }
  # Shapes differ as well as colours do.
  function mark(who, x, y, note,   shape) {
    if (who == "library") shape = "M-7 0L0 -7L7 0L0 7Z"
    else if (who == "library-extended") shape = "M-7 0L0 -7L7 0L0 7ZM-4 0L0 4L4 0L0 -4Z"
    else if (who == "Asio") shape = "M-4 -4H4V4H-4Z"
    else if (who == "POCO") shape = "M0 -5L5 4H-5Z"
    else if (who == "ACE") shape = "M0 5L5 -4H-5Z"
    else if (who == "SFML") shape = "M-5 -1.5H-1.5V-5H1.5V-1.5H5V1.5H1.5V5H-1.5V1.5H-5Z"
    else if (who == "libuv") shape = "M-2 -5H2V5H-2Z"
    else shape = "M-5 -2H5V2H-5Z"
    printf "<path transform=\"translate(%.1f %.1f)\" d=\"%s\" class=\"%s\"><title>%s</title></path>\n", x, y, shape, who, note
  }
  function draw(row, y, panel,   who, number, n, w) {
    n = split(members[row], who, " ")
    for (w = n; w >= 2; --w) {
      number = value[row, who[w], panel]
      if (number == "") continue
      if (panel == "instructions") number -= value[row, who[1], panel]
      mark(who[w], place(panel, number), y, row ", " who[w] ": " number)
    }
  }
  function draw_row(row, y,   panel, p) {
    printf "<line x1=\"%d\" y1=\"%.1f\" x2=\"%d\" y2=\"%.1f\" class=\"grid\"/>\n", begin_of["instructions"], y, 910, y
    text(text_right, y + 4, "row", row)
    split(panels, panel, " ")
    for (p = 1; p <= 2; ++p) draw(row, y, panel[p])
  }
  function draw_legend(   who, n, w, x) {
    n = split(legend, who, " ")
    x = 30
    for (w = 1; w <= n; ++w) {
      mark(who[w], x, 24, who[w])
      text(x + 12, 28, "name", who[w])
      x += 12 + 7.2 * length(who[w]) + 30
    }
  }
  function draw_head() {
    printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 940 %d\" font-family=\"sans-serif\" font-size=\"12\">\n", bottom + 16
    print "<title>What operations cost, by this library and others</title>"
    print "<style>"
    print "svg { background: #ffffff } text { fill: #24292f } .row { text-anchor: end } .tick { text-anchor: middle; fill: #57606a }"
    print ".head { font-weight: bold } .grid { stroke: #d0d7de; stroke-width: 1 }"
    print ".library, .library-extended { fill: #0969da; fill-rule: evenodd } .Asio { fill: #bc6c00 } .POCO { fill: #1a7f37 }"
    print ".ACE { fill: #a8327d } .SFML { fill: #cf4a22 } .libuv { fill: #6e7781 } .spdlog { fill: #8250df } .resolver { fill: #24292f }"
    print "@media (prefers-color-scheme: dark) {"
    print "svg { background: #0d1117 } text { fill: #e6edf3 } .tick { fill: #8b949e } .grid { stroke: #30363d }"
    print ".library, .library-extended { fill: #58a6ff } .Asio { fill: #e3b341 } .POCO { fill: #3fb950 } .ACE { fill: #f778ba }"
    print ".SFML { fill: #ff9b72 } .libuv { fill: #b1bac4 } .spdlog { fill: #bc8cff } .resolver { fill: #e6edf3 } }"
    print "</style>"
  }

  END {
    bottom = top + row_height * count
    draw_head()
    draw_legend()
    text(begin_of["instructions"], top - 40, "head", title["instructions"])
    text(begin_of["ratio"], top - 40, "head", title["ratio"])
    for (number = 10; number <= 1000000; number *= 10) tick("instructions", number, number == 1000000 ? "1M" : number >= 1000 ? number / 1000 "k" : number)
    split("0.25 0.5 1 2 4 8 16 32", ticks, " ")
    for (t = 1; t <= 8; ++t) tick("ratio", ticks[t], ticks[t])
    for (r = 1; r <= count; ++r) draw_row(rows[r], top + row_height * (r - 0.5))
    print "</svg>"
  }' "$1"
