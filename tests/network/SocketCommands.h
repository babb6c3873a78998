// Commands that make, set up, connect and watch sockets. A socket's name is the first argument.
//
// A host is a text, "-" for the empty one, or one of the special addresses "[any]", "[loopback]",
// "[this-machine]" and "[broadcast]".
#pragma once

#include "Commands.h"

namespace Network {

// create NAME stream|datagram|classic-stream|classic-datagram; answers the IP version.
Words Create(Host& host, const Words& words);
// bind NAME HOST PORT
Words Bind(Host& host, const Words& words);
// listen NAME
Words Listen(Host& host, const Words& words);
// accept NAME NEW-NAME; answers the peer's address and port.
Words Accept(Host& host, const Words& words);
// connect NAME HOST PORT
Words Connect(Host& host, const Words& words);
// close NAME
Words Close(Host& host, const Words& words);
// timeouts NAME MILLISECONDS, for sending and receiving
Words SetTimeouts(Host& host, const Words& words);
// non-blocking NAME
Words SetNonBlocking(Host& host, const Words& words);
// broadcast NAME
Words SetBroadcast(Host& host, const Words& words);
// multicast NAME GROUP MODE
Words SetMulticast(Host& host, const Words& words);
// select NAME EVENT SECONDS; answers the event when it has come, else nothing.
Words Select(Host& host, const Words& words);

}  // namespace Network
