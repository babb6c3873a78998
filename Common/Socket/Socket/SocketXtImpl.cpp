#include "Socket/SocketXtImpl.h"

#include "Socket/SocketXtAddresses.h"
#include "Socket/SocketXtTexts.h"
#include "Socket/SystemSocket.h"
#include "Socket/WinsockScope.h"

#include <utility>

namespace VelNet {

namespace {

// Required (XtBindAndListen.BacklogIsTwo): not the system's maximum.
constexpr int Backlog = 2;
constexpr char AnyPort[] = "0";

}  // namespace

SocketXtImpl::SocketXtImpl(Winsock::Handle handle, SocketState state, int socketType, int protocol,
                           ADDR_FAMILY family)
    : OwnSocket(handle),
      state_(state),
      socketType_(socketType),
      protocol_(protocol),
      family_(family) {}

SocketXtImpl::~SocketXtImpl() {
    if (!SocketXtImpl::IsValid()) return;
    try {
        SocketXtImpl::Close();
    } catch (...) {
        return;  // logged already, and there is no caller
    }
}

bool SocketXtImpl::IsSameSocket(const Socket& other) const {
    return handle_ == HandleOfLikely<SocketXtImpl>(other);
}

bool SocketXtImpl::SetNonBlocking() {
    return SwitchToNonBlocking(handle_);
}

bool SocketXtImpl::IsValid() const {
    return state_ != STATE_CLOSED && handle_ != Winsock::InvalidSocket;
}

// Required (XtBasics.OperationsByOctetsDoNothing): operations by Octets are not available for this
// socket, and that is not a failure.
void SocketXtImpl::Bind(Octets, unsigned short) {}

void SocketXtImpl::Connect(Octets, unsigned short) {}

VelBase::ReturnPtrI<Socket> SocketXtImpl::Accept(SocketAddress&) {
    return {};
}

SocketAddress SocketXtImpl::GetLocalAddress() const {
    return {};
}

SocketAddress SocketXtImpl::GetRemoteAddress() const {
    return {};
}

bool SocketXtImpl::IsDataAvailable() const {
    return HasBytesAvailable(handle_);
}

int SocketXtImpl::GetStatus() const {
    return StatusOf(*this, state_);
}

SocketXt::ADDR_FAMILY SocketXtImpl::GetAddressFamily() const {
    return family_;
}

SOCKET_HANDLE SocketXtImpl::GetHandle() const {
    return handle_;
}

VelBase::ReturnString SocketXtImpl::GetSpecialAddress(SpecialAddressKind kind,
                                                      ADDR_FAMILY family) const {
    if (kind == SPECIAL_THIS_MACHINE) return NarrowComputerName();
    if (family != FAMILY_IPV4 && family != FAMILY_IPV6) return {};

    const bool ipv4 = family == FAMILY_IPV4;
    switch (kind) {
        case SPECIAL_ANY:
            return {ipv4 ? "0.0.0.0" : "::0"};
        case SPECIAL_LOOPBACK:
            return {ipv4 ? "127.0.0.1" : "::1"};
        case SPECIAL_BROADCAST:
            return {ipv4 ? "255.255.255.255" : "ff02::1"};
        default:
            return {};
    }
}

void SocketXtImpl::Bind(SpecialAddressKind address, const char* port) {
    SocketXtImpl::Bind(GetSpecialAddress(address, family_).c_str(), port);
}

void SocketXtImpl::Bind(const char* host, const char* port) {
    const SocketXtOperation operation = {"VelNet::SocketXtImpl::Bind",
                                         "cannot bind socket to local address", this};
    const WinsockScope scope(operation.function);
    std::string newHost(OrEmpty(host));
    std::string newPort(OrEmpty(port));

    const AddressWalk walk =
        TryResolved(operation, host, port, Hints(), [this](const Winsock::AddressInfo& entry) {
            return Winsock::bind(handle_, entry.address, AddressLength(entry)) !=
                   Winsock::SocketError;
        });
    // Required (XtBind.HostWithoutAddressesIsNoFailureAndChangesNothing): if there is no address,
    // nothing is bound, and that is not a failure.
    if (walk.outcome == AddressWalk::NoAddress) return;
    if (walk.outcome != AddressWalk::Accepted) {
        ThrowSocketXtError({operation.function, operation.description, "::bind", walk.error,
                            newHost.c_str(), newPort.c_str()},
                           this);
    }
    // Required (XtBind.StreamSocketIsBoundAndDatagramSocketConnected): a bound datagram socket
    // counts as connected, so that its status reports waiting data.
    if (socketType_ == Winsock::TypeDatagram) state_ = STATE_CONNECTED;
    if (socketType_ == Winsock::TypeStream) state_ = STATE_BOUND;
    localHost_ = std::move(newHost);
    localPort_ = std::move(newPort);
}

int SocketXtImpl::Listen() {
    const int result = Winsock::listen(handle_, Backlog);
    if (result == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        ThrowSocketXtError({"VelNet::SocketXtImpl::Listen", "cannot listen on socket", "::listen",
                            error, localHost_.c_str(), localPort_.c_str()},
                           this);
    }
    state_ = STATE_LISTENING;
    return result;
}

void SocketXtImpl::Connect(SpecialAddressKind address, const char* port) {
    SocketXtImpl::Connect(GetSpecialAddress(address, family_).c_str(), port);
}

void SocketXtImpl::Connect(const char* host, const char* port) {
    const SocketXtOperation operation = {"VelNet::SocketXtImpl::Connect",
                                         "cannot connect local socket to a remote address", this};
    const WinsockScope scope(operation.function);
    std::string newHost(OrEmpty(host));
    std::string newPort(OrEmpty(port));
    // Required (XtConnect.FailureLeavesThisMachinesNameAndAllElseAsItWas): these are kept even if
    // the call fails.
    localHost_ = std::string(NarrowComputerName().c_str());
    localPort_ = std::string(AnyPort);

    const AddressWalk walk =
        TryResolved(operation, host, port, Hints(), [this](const Winsock::AddressInfo& entry) {
            return Winsock::connect(handle_, entry.address, AddressLength(entry)) !=
                   Winsock::SocketError;
        });
    if (walk.outcome == AddressWalk::Refused) {
        ThrowSocketXtError(
            {operation.function, operation.description, "::connect", walk.error,
             JoinEndpoint(localHost_, localPort_).c_str(), JoinEndpoint(newHost, newPort).c_str()},
            this);
    }
    if (walk.outcome == AddressWalk::Accepted) {
        state_ = STATE_CONNECTED;
        remoteHost_ = std::move(newHost);
        remotePort_ = std::move(newPort);
    }
    // Required (XtConnect.HostWithoutAddressesIsRecordedAsConnectedAllTheSame): written even if
    // there was no address, which is not a failure.
    if (IsConnectionTraceEnabled()) TraceConnection(ConnectedFormat, *this);
}

void SocketXtImpl::Close() {
    if (Winsock::closesocket(handle_) == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        // Required (XtClose.EachFailureIsReportedAndKeepsTheHandle): the text names another call,
        // and the handle and the state are kept, unlike in the classic socket.
        ThrowSocketXtError({"VelNet::SocketXtImpl::Close", "cannot close a socket", "::getaddrinfo",
                            error, localHost_.c_str(), localPort_.c_str()},
                           this);
    }
    handle_ = Winsock::InvalidSocket;
    state_ = STATE_CLOSED;
    if (IsConnectionTraceEnabled()) TraceConnection(DisconnectedFormat, *this);
}

void SocketXtImpl::SetReceiveTimeout(unsigned int milliseconds) {
    SetOption(Winsock::OptionReceiveTimeout, milliseconds,
              "VelNet::SocketXtImpl::SetReceiveTimeout", "cannot set recv timeout");
}

void SocketXtImpl::SetSendTimeout(unsigned int milliseconds) {
    SetOption(Winsock::OptionSendTimeout, milliseconds, "VelNet::SocketXtImpl::SetSendTimeout",
              "cannot set send timeout");
}

void SocketXtImpl::SetReuseAddress() {
    SetOption(Winsock::OptionReuseAddress, 1, "VelNet::SocketXtImpl::SetReuseAddress",
              "cannot set reuse address");
}

void SocketXtImpl::SetOption(int option, unsigned int value, const char* function,
                             const char* description) const {
    if (SetSocketOption(handle_, option, value)) return;
    const int error = Winsock::WSAGetLastError();
    ThrowSocketXtError(
        {function, description, "::setsockopt", error, localHost_.c_str(), localPort_.c_str()},
        this);
}

Winsock::AddressInfo SocketXtImpl::Hints() const noexcept {
    return AddressHints(socketType_, protocol_);
}

void SocketXtImpl::TraceConnection(LogFormat format, const OwnSocket& connection) const noexcept {
    TryWriteConnectionRecord(format, [&] { return Endpoints(connection); });
}

TextEndpoints SocketXtImpl::Endpoints(const OwnSocket& connection) const {
    return {connection.ConnectionNumber(), localHost_, localPort_, remoteHost_, remotePort_};
}

}  // namespace VelNet
