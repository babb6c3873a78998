// Commands that a program carries out past the library, on the handle of an extended socket.
#pragma once

#include "Commands.h"

namespace Network {

// reports NAME: what the network reports is told at once.
Words AskForReports(Host& host, const Words& words);

}  // namespace Network
