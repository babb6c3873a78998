// The network's reports (ICMP errors) that datagrams did not arrive.
//
// The kernel fails the next call on the socket with such a report, whether it sends or receives. On
// Winsock every send succeeds and each report fails one receive call. So reports are read from the
// kernel's error queue (MSG_ERRQUEUE) and counted, see DatagramLosses.h.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Whether a report may be the cause of this system error number.
bool MayBeReport(int error) noexcept;

// Each attempt of a call may meet the report of yet another datagram. One that meets so many in a
// row gives up: it may meet a failure that lasts.
inline constexpr int MostReports = 16;

// Reads all reports from the kernel; returns whether there was any. Preserves errno.
bool CollectReports(const Socket& socket);

// The same after a call that a report made fail. That counts one report even if the queue has none,
// since it may have been full.
void CollectTold(const Socket& socket);

// The same after poll has returned POLLERR, for an ICMP or a local error.
void CollectAnnounced(const Socket& socket);

}  // namespace Posix
