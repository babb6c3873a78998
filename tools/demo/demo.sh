#!/usr/bin/env bash
# Shows the library at work through its tools and checks all that it shows.
#
#   demo.sh BIN FOLDER      BIN holds the programs, FOLDER what the demo makes; its contents are replaced
#
# Ends with 0 only when everything held.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bin=$(realpath "$1")
mkdir -p "$2"
cd "$2"
rm -rf ./*

# shellcheck source=Processes.sh
source "$here/Processes.sh"

# Files of this machine, in full, and then random bytes.
make_file() {
  local size=$((80 * 1024 * 1024))
  {
    find "$bin/.." -name '*.so*' -type f -exec cat {} +
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
  "$cat_program" --classic --send-only connect 127.0.0.1 "$port" <sent || fail "the client failed"
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
    take_closed_port listen
    busybox httpd -f -p "127.0.0.1:$port" -h site &
    web_server=$!
    others=("$web_server")
    if web_server_answers; then return; fi
    echo "port $port was taken in the meantime (attempt $attempt)"
  done
  fail "the web server does not start"
}

stop_web_server() {
  kill "$web_server"
  wait "$web_server" 2>/dev/null || true
  others=()
}

show_page() {
  title "A page from a web server"
  mkdir site
  cp "$here/page.html" site/
  start_web_server
  printf 'GET /page.html HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n' |
    "$cat_program" --classic connect 127.0.0.1 "$port" >response || fail "the client failed"
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
    "$cat_program" --classic --trace connection,packet --send-only connect 127.0.0.1 "$port" 2>client.log ||
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

# Of each kind of sockets an exchange; then what their logs tell.
show_trace() {
  title "What the logs of both ends tell together"
  local options trace=(--trace "connection,verbose,error")
  for options in -4 -6 --classic; do
    launch "$cat_program" "$options" "${trace[@]}" --log-file "server$options.trace" listen 0 <<<'Good evening!' \
      >answered || { echo "Not shown with $options: this system lacks it."; continue; }
    echo 'Good morning!' | "$cat_program" "$options" "${trace[@]}" --log-file "client$options.trace" -N \
      connect "$host" "$port" >answer || fail "the client failed"
    await_server || fail "the server failed"
  done
  local logs=(./*.trace)
  "$bin/velsock-trace" list "${logs[@]}" || fail "the logs cannot be listed"
  "$bin/velsock-trace" show 1 "${logs[@]}" >transcript || fail "the conversation cannot be shown"
  cat transcript
  grep -qF '    Good morning!\n' transcript || fail "the transcript lacks what was sent"
  "$bin/velsock-trace" --pcapng conversations.pcapng --html conversations.html list "${logs[@]}" ||
    fail "the page cannot be written"
  echo "To look at them, open $PWD/conversations.html in a browser,"
  echo "or $PWD/conversations.pcapng in a network analyser."
}

show_refusal() {
  title "A refused connection"
  take_closed_port listen
  local status=0 text
  "$cat_program" --classic --trace error connect 127.0.0.1 "$port" </dev/null 2>refusal.log || status=$?
  [ "$status" = 3 ] || fail "the exit code is $status"
  text=$(head -n 1 refusal.log | sed 's|^[^ ]* Network/Error: ||')
  echo "$text"
  [[ $text == "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:$port"* ]] ||
    fail "the text begins otherwise"
  [[ $text == *"Connection refused" ]] || fail "the text ends otherwise"
}

show_datagrams() {
  title "Datagrams between two processes"
  head -c 5000 /dev/urandom >datagrams
  launch "$cat_program" --count 5 --from udp-listen 0 </dev/null >received-datagrams ||
    fail "the datagram server does not start"
  "$cat_program" udp-send "$host" "$port" <datagrams || fail "the sender failed"
  "$cat_program" --size 0 --count 1 udp-send "$host" "$port" || fail "the sender failed"
  await_server || fail "the receiver failed"
  cat server.log
  [ "$(sed 's/ .*//' server.log | xargs)" = "1400 1400 1400 800 0" ] || fail "the datagrams have other lengths"
  cmp datagrams received-datagrams || fail "the datagrams have changed on their way"
  echo "Five datagrams, one of them empty, came as they were sent."
}

# in_own_network COMMAND...: in a network with the loopback interface alone, with own mounts and host name.
in_own_network() {
  local unshare=(unshare --net --mount --uts)
  [ "$(id -u)" = 0 ] || unshare+=(--map-root-user)
  "${unshare[@]}" "$@"
}

# There the demo can choose this computer's name and its addresses, and a multicast disturbs nobody.
show_own_network() {
  if in_own_network true 2>/dev/null; then
    in_own_network "$here/OwnNetwork.sh" "$bin" "$PWD"
  else
    title "IPv6 and multicast"
    echo "Not shown: this system does not let the demo make a network of its own ($(reason_of in_own_network true))."
  fi
}

reason_of() {
  "$@" 2>&1 | tail -n 1
}

show_collection_server() {
  title "A server on one thread with fifty clients at once"
  mkfifo collection-server.pipe
  "$bin/example-collection-server" 0 >collection-server.pipe &
  server=$!
  exec {says}<collection-server.pipe
  local line
  read -r line <&"$says" || fail "the collection server did not start"
  "$bin/demo-echo-clients" "${line##* }" || fail "the clients did not get back what they sent"
  # All fifty and the late one.
  for _ in {1..51}; do
    read -r -t 30 line <&"$says" || fail "the server has not seen every connection end"
    echo "$line"
  done >ends
  kill "$server"
  await_server 2>/dev/null || true
  echo "The server saw $(wc -l <ends) connections end: $(grep -c ' closed ' ends) closed, $(grep -c ' lost ' ends) lost."
}

# show_answer WORD...: what velsock-resolve answers; its code is left in status.
show_answer() {
  status=0
  answer=$("$bin/velsock-resolve" "$@" 2>resolve.log) || status=$?
  printf 'velsock-resolve %s\n' "$*"
  { [ -z "$answer" ] || echo "$answer"; } | sed 's/^/  /'
  sed 's/^/  /' resolve.log
}

without_time() {
  sed 's/,"seconds":[0-9.]*//'
}

show_names() {
  title "What the resolvers answer"
  show_answer --json --cache forward localhost localhost
  [ "$status" = 0 ] || fail "localhost does not resolve"
  [ "$(head -n 1 <<<"$answer" | without_time)" = "$(tail -n 1 <<<"$answer" | without_time)" ] || fail "the cache answers differently"
  show_answer dotted 127.1
  [ "$answer" = 127.0.0.1 ] || fail "127.1 is another address"
  show_answer local-name
  [ "$answer" = "$(uname -n)" ] || fail "this computer has another name"
  show_answer ip-version
  show_answer local-domain
  show_answer name-servers
  [ "$status" = 0 ] || [ "$status" = 7 ] || fail "the exit code is $status"
  show_answer forward no-such-host.invalid
  [ "$status" = 2 ] || fail "the exit code is $status"
}

show_transfer
show_page
show_records
show_trace
show_refusal
show_datagrams
show_own_network
show_collection_server
show_names
printf '\nAll of this held.\n'
