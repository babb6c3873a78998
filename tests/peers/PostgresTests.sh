# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# A PostgreSQL server behind the relay: its start-up, queries, and copies in both directions.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"

# It refuses to run as root.
unprivileged=(setpriv --reuid 65534 --regid 65534 --clear-groups)

serve_database() {
  local server
  server=$(find /usr/lib/postgresql -name postgres -path '*/bin/*' 2>/dev/null | sort -V | tail -n 1)
  [ -n "$server" ] || skip "PostgreSQL is not installed"
  postgres=$(dirname "$server")
  "${unprivileged[@]}" true 2>/dev/null || skip "only one user here"
  with_three_hosts
  echo 'nobody:x:65534:65534::/:/bin/sh' >>"$world/beta/passwd"
  echo 'nogroup:x:65534:' >>"$world/beta/group"
  mkdir "$world/database"
  chown 65534:65534 "$world/database"
  make_database
  become_host beta "${unprivileged[@]}" "$server" -D "$world/database" -h '*' -p 5432 -k '' >"$world/database.log" 2>&1 &
  database=$!
  await_port beta tcp 5432
}

make_database() {
  on beta "${unprivileged[@]}" env LC_ALL=C "$postgres/initdb" --pgdata "$world/database" --username alpha --auth trust \
    --no-sync --no-locale --encoding UTF8
  cat >>"$world/database/pg_hba.conf" <<'RULES'
host all all 192.0.2.0/24 trust
host all all 2001:db8::/64 trust
RULES
  printf 'fsync = off\nunix_socket_directories = %s\n' "''" >>"$world/database/postgresql.conf"
}

# query FAMILY OPTION...
query() {
  on alpha env PGCONNECT_TIMEOUT=30 "$postgres/psql" --no-psqlrc --quiet --tuples-only --no-align --set ON_ERROR_STOP=1 \
    --host "$(address_of gamma "$1")" --port 7000 --username alpha --dbname postgres "${@:2}"
  counted 1 requests
}

# expect_query FAMILY ANSWER QUERY
expect_query() {
  query "$1" --command "$3"
  [ "$said" = "$2" ] || fail "$3: expected '$2' but saw '${said:0:200}'"
}

copy_both_ways() {
  local rows table=copied_$1
  rows=$(size 10000 200000)
  seq 1 "$rows" | sed 's/$/\tå row of the table/' >"$world/rows"
  expect_query "$1" "" "create table $table (number int, words text)"
  query "$1" --command "\\copy $table from '$world/rows'"
  expect_query "$1" "$rows|$((rows * (rows + 1) / 2))" "select count(*), sum(number) from $table"
  query "$1" --command "\\copy (select * from $table order by number) to '$world/copied'"
  cmp "$world/rows" "$world/copied" || fail "the rows differ"
}

query_each() {
  local count
  start_relay stream "$1" 5432
  expect_query "$1" 1 'select 1'
  expect_query "$1" UTF8 'show client_encoding'
  expect_query "$1" "$(printf 'x%.0s' {1..100000})" "select repeat('x', 100000)"
  copy_both_ways "$1"
  for ((count = 0; count < $(size 5 100); count++)); do
    expect_query "$1" $((count * count)) "select $count * $count"
  done
  end_relay
  counted "$(relayed_number connections)" connections
  counted $(($(relayed_number 'bytes of questions') + $(relayed_number 'bytes of answers'))) bytes
}

TestQueriesAndCopiesArriveWhole() {
  serve_database
  for_each_family query_each
  kill -INT "$database"
  wait "$database" || fail "the server ended with $?"
}
