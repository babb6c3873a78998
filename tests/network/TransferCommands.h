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
