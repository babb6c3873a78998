#!/usr/bin/env bash
# How fast velsock-trace reads: lists logs that it generates, from memory, and prints the megabytes of each second.
#
#   trace.sh BIN FOLDER [CONNECTIONS]      BIN holds the programs; the logs lie in FOLDER
set -euo pipefail

program=$(realpath "$1/velsock-trace")
mkdir -p "$2"
cd "$2"
connections=${3:-200000}

# make_log KIND: connections with ten transfers each, with their bytes or without.
make_log() {
  awk -v connections="$connections" -v kind="$1" '
    function moment() {
      return sprintf("2026-11-22T%02d:%02d:%02d.%06dZ Network/", t / 3600000000, t / 60000000 % 60, t / 1000000 % 60, t % 1000000)
    }
    BEGIN {
      srand(1)
      data = sprintf("%2800s", "")
      gsub(/ /, "4", data)
      if (kind == "verbose") connections /= 5
      for (i = 0; i < connections; i++) {
        ends = "Local address: 10.0." i % 7 "." i % 250 " (" 32768 + i % 28000 "), Remote address: 192.168.1." i % 100 " (443)"
        print moment() "Connection Trace: Connected, " ends
        for (k = 0; k < 10; k++) {
          t += 57
          bytes = 1 + int(1400 * rand())
          text = (k % 2 ? "Sent " : "Received ") bytes " bytes, " ends
          print moment() "Packet Trace: " text
          if (kind == "verbose") print moment() "Verbose Packet Trace: " text ", data: " substr(data, 1, 2 * bytes)
        }
        t += 100
        print moment() "Connection Trace: Disconnected, " ends
      }
    }' >"$1.log"
}

# The processor's time counts, so that others on the machine do not.
measure() {
  local seconds
  cat "$1.log" >/dev/null
  seconds=$({
    TIMEFORMAT='%U %S'
    time "$program" list "$1.log" >"$1.list"
  } 2>&1)
  awk -v kind="$1" -v bytes="$(stat -c %s "$1.log")" -v lines="$(wc -l <"$1.log")" -v found="$(wc -l <"$1.list")" \
    -v seconds="$seconds" 'BEGIN {
      split(seconds, part, " ")
      total = part[1] + part[2]
      printf "%-8s %5.0f MB, %.1f million lines, %d conversations: %.0f MB/s on one core\n",
        kind, bytes / 1e6, lines / 1e6, found - 1, bytes / 1e6 / (total > 0 ? total : 0.01)
    }'
}

for kind in plain verbose; do
  make_log "$kind"
  measure "$kind"
done
rm -f plain.log verbose.log plain.list verbose.list
