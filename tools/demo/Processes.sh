# shellcheck shell=bash
# What the parts of the demo have in common; they source it.
#
# Expects bin, the folder of the programs; the sourcing script reads what is set here.
# shellcheck disable=SC2034,SC2154

cat_program=$bin/velsock-cat

server=""
others=()
end_processes() {
  local process
  for process in $server "${others[@]}"; do
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

# launch COMMAND... <INPUT >OUTPUT: sets server, and host and port to what it announces on standard error.
# Fails when it ends without. What else it says goes to server.log.
launch() {
  rm -f server.log server.log.pipe
  mkfifo server.log.pipe
  "$@" 2>server.log.pipe <&0 &
  server=$!
  exec {says}<server.log.pipe
  rm server.log.pipe
  local line
  read -r line <&"$says" || return 1
  port=${line##* }
  host=${line#listening on }
  host=${host% port *}
}

# start_server OPTION... <INPUT >OUTPUT: a server on a port that the system chooses.
start_server() {
  launch "$cat_program" --classic "$@" listen 0 || fail "the server did not start"
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

# take_closed_port COMMAND: a port that was open a moment ago and is not any more.
take_closed_port() {
  launch "$cat_program" --classic "$1" 0 </dev/null >/dev/null || fail "no port is free"
  kill "$server"
  await_server 2>/dev/null || true
}
