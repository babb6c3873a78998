#include "sockets/ErrorQueue.h"

#include "sockets/DatagramLosses.h"
#include "system/Descriptors.h"

#include <linux/errqueue.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>

namespace Posix {

namespace {

// A buffer for the extended error, for the address of the router that reported it, and for a time
// stamp if the socket has these switched on.
struct ReportRoom {
    alignas(cmsghdr) char bytes[CMSG_SPACE(sizeof(timespec)) +
                                CMSG_SPACE(sizeof(sock_extended_err) + sizeof(sockaddr_in6))];
};

bool IsErrorReport(const cmsghdr& part) noexcept {
    return (part.cmsg_level == IPPROTO_IP && part.cmsg_type == IP_RECVERR) ||
           (part.cmsg_level == IPPROTO_IPV6 && part.cmsg_type == IPV6_RECVERR);
}

bool IsEndOfHops(const sock_extended_err& report) noexcept {
    if (report.ee_origin == SO_EE_ORIGIN_ICMP) {
        return report.ee_type == ICMP_TIME_EXCEEDED && report.ee_code == ICMP_EXC_TTL;
    }
    return report.ee_type == ICMP6_TIME_EXCEEDED && report.ee_code == ICMP6_TIME_EXCEED_TRANSIT;
}

// The queue also holds local errors, which the failing call has already returned, and reports of
// packet sizes, which the kernel handles itself.
std::optional<Loss> LossFrom(const sock_extended_err& report) noexcept {
    const bool network =
        report.ee_origin == SO_EE_ORIGIN_ICMP || report.ee_origin == SO_EE_ORIGIN_ICMP6;
    if (!network || report.ee_errno == EMSGSIZE) return {};
    return IsEndOfHops(report) ? Loss::TooManyHops : Loss::Unreachable;
}

std::optional<Loss> LossFrom(msghdr& message) noexcept {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr;
         part = CMSG_NXTHDR(&message, part)) {
        if (!IsErrorReport(*part)) continue;
        sock_extended_err report = {};
        std::memcpy(&report, CMSG_DATA(part), sizeof report);
        return LossFrom(report);
    }
    return {};
}

bool CollectReport(const Socket& socket) {
    ReportRoom room;
    msghdr message = {};
    message.msg_control = room.bytes;
    message.msg_controllen = sizeof room.bytes;
    if (::recvmsg(socket.descriptor, &message, MSG_ERRQUEUE) < 0) return false;  // never waits
    if (const auto loss = LossFrom(message)) AddLoss(socket, *loss);
    return true;
}

}  // namespace

bool MayBeReport(int error) noexcept {
    switch (error) {
        case ECONNREFUSED:
        case EHOSTUNREACH:
        case ENETUNREACH:
        case EHOSTDOWN:
        case ENONET:
        case ENOPROTOOPT:
        case EOPNOTSUPP:
        case EPROTO:
        case EACCES:
        case EMSGSIZE:
            return true;
        default:
            return false;
    }
}

bool CollectReports(const Socket& socket) {
    const int error = errno;
    bool any = false;
    while (CollectReport(socket))
        any = true;
    errno = error;
    return any;
}

void CollectTold(const Socket& socket) {
    if (!CollectReports(socket)) AddLoss(socket, Loss::Unreachable);
}

void CollectAnnounced(const Socket& socket) {
    if (CollectReports(socket)) return;
    if (MayBeReport(TakePendingError(socket.descriptor))) AddLoss(socket, Loss::Unreachable);
}

}  // namespace Posix
