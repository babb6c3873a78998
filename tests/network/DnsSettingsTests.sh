# shellcheck shell=bash disable=SC2154  # Network.sh and Agents.sh have the hosts
# What a host answers when it is asked for its DNS domain and its name servers.

# expect_settings DOMAIN NAME-SERVERS-ANSWER: of alpha.
expect_settings() {
  expect alpha domain "ok $1"
  expect alpha name-servers "$2"
}

TestAHostWithoutDnsHasItsNameAndNoServers() {
  add_host alpha
  expect_settings alpha "$no_name_servers"
  expect_records alpha "Error: ${no_name_servers#failed -1 }"
  in_host alpha hostname alpha.example.test
  expect alpha local-name "ok alpha.example.test"
  expect_settings alpha.example.test "$no_name_servers"
}

TestAHostWithEmptyResolverSettingsHasItsNameAndNoServers() {
  add_host alpha
  use_names alpha "# nothing is set" "options timeout:1"
  expect_settings alpha "$no_name_servers"
}

TestTheFirstSearchedDomainIsTheHosts() {
  add_host alpha
  use_names alpha "search first.test second.test" "nameserver 192.0.2.9"
  expect_settings first.test "ok 192.0.2.9"
}

TestTheLastOfSeveralDomainsCounts() {
  add_host alpha
  use_names alpha "search first.test" "nameserver 192.0.2.9" "domain last.test"
  expect_settings last.test "ok 192.0.2.9"
}

TestThreeNameServersAreToldInTheirOrder() {
  add_host alpha
  use_names alpha "nameserver 192.0.2.9" "nameserver 192.0.2.8" "nameserver 192.0.2.9"
  expect_settings alpha "ok 192.0.2.9 192.0.2.8 192.0.2.9"
}

TestANameServerOfIpv6IsLeftOut() {
  add_host alpha
  use_names alpha "nameserver 192.0.2.9" "nameserver 2001:db8::9" "nameserver 192.0.2.8"
  expect_settings alpha "ok 192.0.2.9 192.0.2.8"
}

TestAHostWithNameServersOfIpv6OnlyHasNone() {
  add_host alpha
  use_names alpha "search only.test" "nameserver 2001:db8::9" "nameserver fe80::9%eth0"
  expect_settings only.test "$no_name_servers"
}

# A fourth one would never be asked.
TestOnlyTheServersThatAreAskedAreTold() {
  add_host alpha
  use_names alpha "nameserver 192.0.2.9" "nameserver 2001:db8::9" "nameserver 192.0.2.8" \
    "nameserver 192.0.2.7"
  expect_settings alpha "ok 192.0.2.9 192.0.2.8"
}

TestAChangeBetweenTwoCallsIsSeen() {
  add_host alpha
  use_names alpha "search first.test" "nameserver 192.0.2.9"
  expect_settings first.test "ok 192.0.2.9"
  use_names alpha "search other.test" "nameserver 192.0.2.8" "nameserver 192.0.2.7"
  expect_settings other.test "ok 192.0.2.8 192.0.2.7"
  rm "$world/alpha/resolv.conf"
  expect_settings alpha "$no_name_servers"
}

TestTheServersBehindTheHostsOwnAreTold() {
  add_host alpha
  use_names alpha "nameserver 127.0.0.53" "search own.test"
  expect_settings own.test "ok 127.0.0.53"
  mkdir -p /run/systemd/resolve
  printf '%s\n' "nameserver 192.0.2.9" "nameserver 192.0.2.8" "search behind.test" \
    >/run/systemd/resolve/resolv.conf
  expect_settings behind.test "ok 192.0.2.9 192.0.2.8"
}

TestTheEnvironmentChangesNothing() {
  add_host alpha
  use_names alpha "search first.test" "nameserver 192.0.2.9"
  LOCALDOMAIN=elsewhere.test RES_OPTIONS=ndots:9 expect_settings first.test "ok 192.0.2.9"
  grep -q LOCALDOMAIN=elsewhere.test "/proc/${agent_process[alpha]}/environ" ||
    fail "the environment was not set"
}

# What is told is what is asked.
TestTheNameServerThatIsToldKnowsTheNames() {
  add_host alpha
  add_host beta
  with_names alpha "--host-record=known.test,${ipv4[beta]}"
  expect_settings alpha "ok ${ipv4[names]}"
  expect alpha "resolve known.test" "ok ${ipv4[beta]}"
}
