#include "System.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace VelLogging::System {

namespace {

// Returns false for a path that no socket can have.
bool AddressOf(const std::string& path, sockaddr_un& address) noexcept {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.data(), path.size());
    return true;
}

bool Send(int socket, const msghdr& message) noexcept {
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

bool SendBytes(int socket, sockaddr_un& address, std::string_view bytes) noexcept {
    iovec part = {const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message = {};
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    return Send(socket, message);
}

bool SendDescriptor(int socket, sockaddr_un& address, int descriptor) noexcept {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    return Send(socket, message);
}

// The journal takes only a file that nobody can change any more.
bool SendAsFile(int socket, sockaddr_un& address, std::string_view bytes) noexcept {
    constexpr int AllSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    const int file = ::memfd_create("velsock-record", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) return false;
    const bool isSent = Write(file, bytes) == bytes.size() &&
                        ::fcntl(file, F_ADD_SEALS, AllSeals) == 0 &&
                        SendDescriptor(socket, address, file);
    ::close(file);
    return isSent;
}

}  // namespace

bool HasDaemons() noexcept {
    return true;
}

const char* UsualSyslogPath() noexcept {
    return "/dev/log";
}

const char* UsualJournalPath() noexcept {
    return "/run/systemd/journal/socket";
}

// In English whatever the locale is.
std::string SyslogTime(long long secondsSince1970) {
    constexpr const char* Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto time = static_cast<time_t>(secondsSince1970);
    tm local = {};
    ::localtime_r(&time, &local);
    char rest[32];
    std::strftime(rest, sizeof rest, " %e %H:%M:%S", &local);
    return std::string(Months[local.tm_mon]) + rest;
}

File OpenDatagramSocket() noexcept {
    const int descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    return descriptor >= 0 ? descriptor : NoFile;
}

bool SendDatagram(File socket, const std::string& path, std::string_view bytes) noexcept {
    sockaddr_un address;
    return AddressOf(path, address) && SendBytes(static_cast<int>(socket), address, bytes);
}

bool SendToJournal(File socket, const std::string& path, std::string_view bytes) noexcept {
    sockaddr_un address;
    if (!AddressOf(path, address)) return false;
    const int descriptor = static_cast<int>(socket);
    if (SendBytes(descriptor, address, bytes)) return true;
    return (errno == EMSGSIZE || errno == ENOBUFS) && SendAsFile(descriptor, address, bytes);
}

}  // namespace VelLogging::System
