#include <Platform/Winsock.h>

#include "StandIns.h"
#include "scripted/Transcript.h"

namespace Module {

namespace {

template <class Function>
StandIn Socket(const char* name, Function* function) {
    return {"ws2_32.dll", name, reinterpret_cast<void*>(function)};
}

}  // namespace

// The seam's structures have the system's layout, and there is but one calling convention.
std::vector<StandIn> SocketStandIns() {
    return {
        Socket("WSAStartup", Winsock::WSAStartup),
        Socket("WSACleanup", Winsock::WSACleanup),
        Socket("WSAGetLastError", Winsock::WSAGetLastError),
        Socket("WSASetLastError", Scripted::SetLastError),
        Socket("socket", Winsock::socket),
        Socket("closesocket", Winsock::closesocket),
        Socket("bind", Winsock::bind),
        Socket("listen", Winsock::listen),
        Socket("connect", Winsock::connect),
        Socket("accept", Winsock::accept),
        Socket("getsockname", Winsock::getsockname),
        Socket("getpeername", Winsock::getpeername),
        Socket("send", Winsock::send),
        Socket("recv", Winsock::recv),
        Socket("sendto", Winsock::sendto),
        Socket("recvfrom", Winsock::recvfrom),
        Socket("select", Winsock::select),
        Socket("setsockopt", Winsock::setsockopt),
        Socket("ioctlsocket", Winsock::ioctlsocket),
        Socket("gethostbyname", Winsock::gethostbyname),
        Socket("gethostbyaddr", Winsock::gethostbyaddr),
        Socket("gethostname", Winsock::gethostname),
        Socket("getaddrinfo", Winsock::getaddrinfo),
        Socket("freeaddrinfo", Winsock::freeaddrinfo),
        Socket("getnameinfo", Winsock::getnameinfo),
        Socket("inet_addr", Winsock::inet_addr),
    };
}

}  // namespace Module
