# shellcheck shell=bash disable=SC2154  # Network.sh and Peers.sh have the hosts
# A web server behind the relay, under load.
# shellcheck source=Peers.sh
source "$(dirname "${BASH_SOURCE[0]}")/Peers.sh"

serve_pages() {
  needs nginx wrk
  with_three_hosts
  mkdir -p "$world/pages" "$world/spool"
  random_file pages/small 1000
  random_file pages/large 1000000
  cat >"$world/nginx.conf" <<CONF
    daemon off;
    user root root;
    master_process off;
    pid $world/nginx.pid;
    error_log $world/nginx.log;
    events { worker_connections 1024; }
    http {
      access_log off;
      keepalive_requests 1000000;
      client_body_temp_path $world/spool/body;
      proxy_temp_path $world/spool/proxy;
      fastcgi_temp_path $world/spool/fastcgi;
      uwsgi_temp_path $world/spool/uwsgi;
      scgi_temp_path $world/spool/scgi;
      server {
        listen 8080 backlog=1024;
        listen [::]:8080 backlog=1024;
        root $world/pages;
      }
    }
CONF
  start beta nginx -c "$world/nginx.conf" 2>"$world/nginx.says"
  await_port beta tcp 8080
}

# Requests are answered until there are as many: load FAMILY CONNECTIONS REQUESTS
load() {
  local runs=0 requests=0
  while [ "$requests" -lt "$3" ]; do
    [ $((++runs)) -le 100 ] || fail "only $requests requests"
    on alpha wrk --threads 1 --connections "$2" --duration "$(size 1s 5s)" --timeout 30s \
      "http://$(url_host_of gamma "$1"):7000/small"
    [[ $said != *"Socket errors"* && $said != *"Non-2xx"* ]] || fail "$said"
    [[ $said =~ ([0-9]+)\ requests\ in ]] || fail "$said"
    requests=$((requests + BASH_REMATCH[1]))
  done
  counted "$requests" requests
}

# fetch FAMILY PAGE TIMES: each body is compared with the page.
fetch() {
  on alpha "$programs/peer_http_fetch" "$1" "$(address_of gamma "$1")" 7000 "/$2" "$world/pages/$2" "$3"
  [ "$said" = "$3 bodies of $(stat -c %s "$world/pages/$2") bytes" ] || fail "$said"
  counted "$3" requests
}

# A body that was fetched by nobody of ours: fetch_apart FAMILY
fetch_apart() {
  local body
  body=$(printf 'GET /large HTTP/1.0\r\n\r\n' |
    in_host alpha socat -t 30 - "TCP:$(url_host_of gamma "$1"):7000" | tail -c 1000000 | sha256sum)
  [ "$body" = "$(sha256sum <"$world/pages/large")" ] || fail "the body differs"
  counted 1 requests
}

pass_pages() {
  start_relay stream "$1" 8080
  load "$1" "$(size 8 50)" "$(size 500 100000)"
  fetch "$1" small "$(size 200 10000)"
  fetch "$1" large "$(size 10 200)"
  fetch_apart "$1"
  end_relay
  counted "$(relayed_number connections)" connections
  counted "$(relayed_number 'bytes of answers')" bytes
}

TestPagesArriveWhole() {
  serve_pages
  for_each_family pass_pages
}
