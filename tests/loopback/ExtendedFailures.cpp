#include <loopback/ExtendedFailures.h>

namespace Loopback {

Failure XtFailure(const std::string& operation, const std::string& description,
                  const std::string& call, const std::string& addresses, int number,
                  std::u16string_view numberText) {
    const std::string head = "VelNet::SocketXtImpl::" + operation + " , " + description + " , " +
                             call + " , " + addresses + " ";
    return SystemFailure(Widen(head), number, numberText);
}

Failure BindFailed(const std::string& addresses, const std::string& call, int number,
                   std::u16string_view numberText) {
    return XtFailure("Bind", "cannot bind socket to local address", call, addresses, number,
                     numberText);
}

Failure ConnectFailed(const std::string& addresses, const std::string& call, int number,
                      std::u16string_view numberText) {
    return XtFailure("Connect", "cannot connect local socket to a remote address", call, addresses,
                     number, numberText);
}

Failure ListenFailed(const std::string& addresses, int number, std::u16string_view numberText) {
    return XtFailure("Listen", "cannot listen on socket", "::listen", addresses, number,
                     numberText);
}

Failure AcceptFailed(const std::string& addresses, int number, std::u16string_view numberText) {
    return XtFailure("Accept", "cannot accept on local socket from remote address", "::accept",
                     addresses, number, numberText);
}

Failure CloseFailed(const std::string& addresses, int number, std::u16string_view numberText) {
    return XtFailure("Close", "cannot close a socket", "::getaddrinfo", addresses, number,
                     numberText);
}

Failure BroadcastFailed(int number, std::u16string_view numberText) {
    return XtFailure("SetSocketForBroadcast", "cannot set socket option for broadcast",
                     "::setsockopt(SO_BROADCAST)", "", number, numberText);
}

Failure XtSendFailed(int number, std::u16string_view numberText, const std::string& addresses) {
    return XtFailure("Send", "send on socket failed", "::send", addresses, number, numberText);
}

Failure XtReceiveFailed(int number, std::u16string_view numberText, const std::string& addresses) {
    return XtFailure("Receive", "recieve on socket failed", "::recv", addresses, number,
                     numberText);
}

Failure XtConnectionClosed(const std::string& localHost, const std::string& localPort) {
    const Failure failure =
        XtFailure("Receive", "::recv could not be completed because the connection has been closed",
                  "::recv", localHost + ": : " + localPort, 0xFFFF, u"Unknown error");
    return {failure.text, -1};
}

Failure SendToFailed(const std::string& addresses, const std::string& call, int number,
                     std::u16string_view numberText) {
    return XtFailure("SendTo", "cannot sendto using connectionless socket", call, addresses, number,
                     numberText);
}

Failure RecvFromFailed(int number, std::u16string_view numberText) {
    return XtFailure("RecvFrom", "cannot recvfrom using connectionless socket", "::recvfrom",
                     "no-ip : no-port", number, numberText);
}

std::string UnresolvableHost() {
    return std::string(64, 'x') + ".invalid";
}

bool IsResolversNumber(int number) {
    return number >= 11001 && number <= 11004;
}

std::u16string_view ResolversText(int number) {
    switch (number) {
        case 11001:
            return u"host not found";
        case 11002:
            return u"Nonauthoritative host not found";
        case 11003:
            return u"This is a nonrecoverable error";
        default:
            return u"Valid name, no data record of requested type";
    }
}

}  // namespace Loopback
