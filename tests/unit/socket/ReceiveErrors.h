// What a receive call can fail with.
#pragma once

namespace SocketTests {

// The numbers that Winsock documents for recv. A client takes a failure with another code for the
// peer's orderly end.
inline constexpr int ReceiveErrors[] = {10004, 10014, 10022, 10035, 10036, 10038, 10040, 10045,
                                        10050, 10052, 10053, 10054, 10057, 10058, 10060, 10093};

}  // namespace SocketTests
