// The network's reports that datagrams did not arrive.
//
// The kernel gives such a report to the next call, whatever it is. Winsock lets every send succeed
// and gives each report to one receive call. So reports are taken from the kernel's queue and
// counted in the socket table.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Whether the system's error number is one that a report may have caused.
bool MayBeReport(int error) noexcept;

// Takes all reports from the kernel; returns whether there was any. Keeps errno.
bool CollectReports(const Socket& socket);

// The same when a call failed with one. That counts even if it is not in the queue, which may have
// had no room for it.
void CollectTold(const Socket& socket);

// The same when a wait was told of some error.
void CollectAnnounced(const Socket& socket);

}  // namespace Posix
