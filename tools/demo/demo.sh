#!/usr/bin/env bash
# Shows the library at work through velsock-cat and checks all that it shows.
#
#   demo.sh VELSOCK_CAT FOLDER      FOLDER holds what the demo makes; its contents are replaced
#
# Ends with 0 only when everything held.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cat_program=$(realpath "$1")
mkdir -p "$2"
cd "$2"
rm -rf ./*

server=""
web_server=""
end_processes() {
  local process
  for process in $server $web_server; do
    kill "$process" 2>/dev/null || true
  done
}
trap end_processes EXIT

title() {
  printf '\n--- %s\n' "$1"
}

fail() {
  echo "demo: $1" >&2
  exit 1
}

# start_server OPTION... <INPUT >OUTPUT: sets server and port. What it says goes to server.log.
start_server() {
  rm -f server.log
  mkfifo server.log.pipe
  "$cat_program" "$@" listen 0 2>server.log.pipe <&0 &
  server=$!
  exec {says}<server.log.pipe
  rm server.log.pipe
  local line
  read -r line <&"$says" || fail "the server did not start"
  port=${line##* }
}

# Waits for the server's end, keeps the rest of what it said, and ends with its exit code.
await_server() {
  local status=0
  cat <&"$says" >server.log
  exec {says}<&-
  wait "$server" || status=$?
  server=""
  return "$status"
}

# A port that was open a moment ago and is not any more.
take_closed_port() {
  start_server --receive-only </dev/null >/dev/null
  kill "$server"
  await_server 2>/dev/null || true
}

# Files of this machine, in full, and then random bytes.
make_file() {
  local size=$((80 * 1024 * 1024))
  {
    find "$(dirname "$cat_program")/.." -name '*.so*' -type f -exec cat {} +
    find /usr/bin -type f -size +64k -exec cat {} +
    cat /dev/urandom
  } 2>/dev/null | head -c "$size" >sent || true
  [ "$(stat -c %s sent)" = "$size" ] || fail "cannot make the file"
}

checksum() {
  sha256sum <"$1" | cut -d ' ' -f 1
}

show_transfer() {
  title "A file of 80 MiB between two processes"
  make_file
  start_server --receive-only </dev/null >received
  local begin=${EPOCHREALTIME/[.,]/} end
  "$cat_program" --send-only connect 127.0.0.1 "$port" <sent || fail "the client failed"
  await_server || fail "the server failed"
  end=${EPOCHREALTIME/[.,]/}
  awk -v bytes="$(stat -c %s received)" -v microseconds="$((end - begin))" \
    'BEGIN { printf "%.0f MiB/s\n", bytes / 1048576 / (microseconds / 1000000) }'
  echo "sent      SHA-256 $(checksum sent)"
  echo "received  SHA-256 $(checksum received)"
  [ "$(checksum sent)" = "$(checksum received)" ] || fail "the file has changed on its way"
}

# True as soon as our web server, and no one else's, answers on the port.
web_server_answers() {
  while kill -0 "$web_server" 2>/dev/null; do
    if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      kill -0 "$web_server" 2>/dev/null
      return
    fi
    sleep 0.01
  done
  return 1
}

# It takes no port from the system's choice, so it gets one that is free, as long as that remains so.
start_web_server() {
  local attempt
  for attempt in {1..20}; do
    take_closed_port
    busybox httpd -f -p "127.0.0.1:$port" -h site &
    web_server=$!
    if web_server_answers; then return; fi
    echo "port $port was taken in the meantime (attempt $attempt)"
  done
  fail "the web server does not start"
}

stop_web_server() {
  kill "$web_server"
  wait "$web_server" 2>/dev/null || true
  web_server=""
}

show_page() {
  title "A page from a web server"
  mkdir site
  cp "$here/page.html" site/
  start_web_server
  printf 'GET /page.html HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n' |
    "$cat_program" connect 127.0.0.1 "$port" >response || fail "the client failed"
  stop_web_server
  sed '/^\r$/q' response | tr -d '\r'
  # The head ends with the first empty line.
  sed '1,/^\r$/d' response >body
  cmp body site/page.html || fail "the page is not what was served"
  echo "The body is the served file, byte for byte ($(stat -c %s body) bytes)."
}

show_records() {
  title "The records of a short exchange"
  start_server --trace connection,packet --receive-only </dev/null >greeting
  echo 'Good morning!' |
    "$cat_program" --trace connection,packet --send-only connect 127.0.0.1 "$port" 2>client.log ||
    fail "the client failed"
  await_server || fail "the server failed"
  sed 's/^/client: /' client.log
  sed 's/^/server: /' server.log
  local record
  for record in 'Connected, ' 'Sent 14 bytes, ' 'Received 14 bytes, ' 'Disconnected, '; do
    grep -q "$record" client.log server.log || fail "there is no record '$record'"
  done
  [ "$(cat greeting)" = 'Good morning!' ] || fail "the greeting has changed on its way"
}

show_refusal() {
  title "A refused connection"
  take_closed_port
  local status=0 text
  "$cat_program" --trace error connect 127.0.0.1 "$port" </dev/null 2>refusal.log || status=$?
  [ "$status" = 3 ] || fail "the exit code is $status"
  text=$(head -n 1 refusal.log | sed 's|^[^ ]* Network/Error: ||')
  echo "$text"
  [[ $text == "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:$port"* ]] ||
    fail "the text begins otherwise"
  [[ $text == *"Connection refused" ]] || fail "the text ends otherwise"
}

show_transfer
show_page
show_records
show_refusal
printf '\nAll of this held.\n'
