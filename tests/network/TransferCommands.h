// Commands that move bytes.
#pragma once

#include "Commands.h"

namespace Network {

// send NAME TEXT: one call; answers its count.
Words Send(Host& host, const Words& words);
// receive NAME: one call; answers the text.
Words Receive(Host& host, const Words& words);
// send-to NAME HOST PORT TEXT: one call; answers its count. "-" is the empty text.
Words SendTo(Host& host, const Words& words);
// receive-from NAME: one call; answers text, address and port.
Words ReceiveFrom(Host& host, const Words& words);

// Each datagram is made of its number and bytes that follow from it.
//
// send-datagrams NAME HOST PORT COUNT
Words SendDatagrams(Host& host, const Words& words);
// receive-datagrams NAME: until nothing comes for the length of the socket's receive timeout;
// answers how many there were. One that came twice or changed is a failure.
Words ReceiveDatagrams(Host& host, const Words& words);

// The socket's stream is made of bytes that follow from their place in it. These make as many calls
// as it takes, from where the last one on the same socket has ended; receiving fails when a byte is
// not what belongs in its place.
//
// send-up-to NAME PLACE
Words SendUpTo(Host& host, const Words& words);
// receive-up-to NAME PLACE
Words ReceiveUpTo(Host& host, const Words& words);
// receive-until-failure NAME
Words ReceiveUntilFailure(Host& host, const Words& words);

}  // namespace Network
