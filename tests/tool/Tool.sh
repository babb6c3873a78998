# What the scripts that test a tool have in common; they source it. Each runs one test, in a folder of its own.
# shellcheck shell=bash
# program, velsock_cat, script and its arguments are the sourcing script's, which reads what is set here.
# shellcheck disable=SC2034,SC2154

# CTest counts a test that ends so as not run.
not_run=77

# Not empty if the programs are those for Windows, under Wine.
on_windows=${VELSOCK_TEST_ON_WINDOWS-}

folder=$(mktemp -d)
cd "$folder" || exit

peer=""
tidy_up() {
  [ -z "$peer" ] || kill "$peer" 2>/dev/null || true
  [ ! -d "$folder/wine" ] || timeout --kill-after=5 20 wineserver -k || true
  rm -rf "$folder"
}
trap tidy_up EXIT

fail() {
  echo "$1" >&2
  exit 1
}

expect_equal() {
  [ "$1" = "$2" ] || fail "expected '$2' but saw '$1'"
}

expect_match() {
  [[ $1 =~ $2 ]] || fail "expected a match of '$2' but saw '$1'"
}

# read_messages FILE: what a program has said on standard error. Windows ends the lines of text streams with a carriage
# return too, but not the log's; here they are as everywhere.
read_messages() {
  [ -n "$on_windows" ] || return 0
  local record='^[-0-9]+T[0-9:.]+Z Network/'
  ! grep -vE "$record" "$1" | grep -v $'\r$' || fail "a line ends without a carriage return"
  ! grep -E "$record" "$1" | grep $'\r$' || fail "a record ends with a carriage return"
  sed -i 's/\r$//' "$1"
}

# Runs the program in the foreground; its code, outputs and failure line are left in status, out and err.
run() {
  status=0
  "$program" "$@" >out 2>err || status=$?
  read_messages err
}

expect_usage_error() {
  run "$@" </dev/null
  expect_equal "$status" 1
  expect_equal "$(wc -l <err)" 1
  expect_equal "$(stat -c %s out)" 0
  expect_match "$(cat err)" "^$(basename "$program"): .*; see $(basename "$program") --help\$"
}

# read_said SECONDS: the next line that the peer says, into line.
read_said() {
  read -r -t "$1" line <&"$says" || return 1
  [ -z "$on_windows" ] || line=${line%$'\r'}
}

# expect_reason SAID WHAT REASON: the program says what it could not do, and the system's reason, which is Windows' own
# there.
expect_reason() {
  if [ -n "$on_windows" ]; then
    expect_match "$1" "^$2: [A-Z][a-z ]+$"
  else
    expect_equal "$1" "$2: $3"
  fi
}

# launch COMMAND...: the program in the background, its standard output in peer.out. Sets peer, and host and
# port to what it announces. Fails when it ends without.
launch() {
  rm -f says.pipe
  mkfifo says.pipe
  "$@" <&0 >peer.out 2>says.pipe &
  peer=$!
  exec {says}<says.pipe
  local line
  read_said 55 || return 1
  expect_match "$line" '^listening on .* port [1-9][0-9]*$'
  port=${line##* }
  host=${line#listening on }
  host=${host% port *}
}

# Sets peer_status; what the program has said since its announcement is in peer.err.
await_peer() {
  peer_status=0
  cat <&"$says" >peer.err
  read_messages peer.err
  wait "$peer" || peer_status=$?
  peer=""
}

# take_closed_port COMMAND: a port on which velsock-cat's command listened a moment ago.
take_closed_port() {
  launch "$velsock_cat" --classic "$1" 0 </dev/null
  kill "$peer"
  await_peer
}

ip_command() {
  if command -v ip >/dev/null; then ip "$@"; else busybox ip "$@"; fi
}

set_host_name() {
  if command -v hostname >/dev/null; then hostname "$1"; else busybox hostname "$1"; fi
}

# enter_own_network LINE...: starts the script again, as root in a network that has the loopback interface alone. The lines
# are its hosts; the name in the first one is this computer's. Without the permission, or the means, the test is
# not run.
enter_own_network() {
  if [ -z "${VELSOCK_TEST_HAS_OWN_NETWORK-}" ]; then
    local unshare=(unshare --net --mount --uts)
    [ "$(id -u)" = 0 ] || unshare+=(--map-root-user)
    "${unshare[@]}" true 2>/dev/null || exit "$not_run"
    command -v ip >/dev/null || command -v busybox >/dev/null || exit "$not_run"
    tidy_up
    trap - EXIT
    cd /
    VELSOCK_TEST_HAS_OWN_NETWORK=1 exec "${unshare[@]}" "$script" "${script_arguments[@]}"
  fi
  printf '%s\n' "$@" >hosts
  echo 'hosts: files' >nsswitch.conf
  mount --bind hosts /etc/hosts
  mount --bind nsswitch.conf /etc/nsswitch.conf
  set_host_name "${1##* }"
  ip_command link set lo up
  [ -z "$on_windows" ] || start_wine_here
}

# Wine creates sockets in its server, which so must be one of this network. It has the settings of the other, and its
# programs.
start_wine_here() {
  mkdir wine
  cp -a "$WINEPREFIX"/*.reg "$WINEPREFIX/.update-timestamp" "$WINEPREFIX/dosdevices" wine
  ln -s "$WINEPREFIX/drive_c" wine/drive_c
  export WINEPREFIX=$folder/wine
  timeout --kill-after=5 20 wineserver -p
  # Wine's services keep the standard streams of the first program, and live on.
  "$program" --version </dev/null >/dev/null 2>&1
}

# A network that is not the loopback interface, for what needs one.
lay_wire() {
  ip_command link add name wire type veth peer name end 2>/dev/null || exit "$not_run"
  ip_command link set end up
  # Without the wait for duplicates an address can be used at once.
  echo 0 >/proc/sys/net/ipv6/conf/wire/accept_dad
  ip_command link set wire up
}
