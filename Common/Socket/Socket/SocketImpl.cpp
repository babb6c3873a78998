#include "Socket/SocketImpl.h"

#include "Socket/AddressWriter.h"
#include "Socket/FailureText.h"
#include "Socket/Ipv4Address.h"
#include "Socket/SocketLayerState.h"
#include "Socket/SystemSocket.h"
#include "VelBase/InterfaceHolder.h"
#include "VelBase/LibraryConversions.h"
#include "VelBase/TextConversions.h"
#include "VelBase/WideLiteral.h"

#include <typeinfo>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

// Required (Listen.AsksForTwoPendingConnectionsAndNothingElse): not the system's maximum.
constexpr int Backlog = 2;

// Required (Accept.NothingPendingIsAnEmptyResultWithoutALog): the number of "would block" on other
// systems, accepted in addition to Winsock's own, by Accept alone.
constexpr int ErrorTryAgain = 11;

// Throws the failure of an operation with an endpoint, which the text shows.
[[noreturn]] void ThrowEndpointFailure(const unsigned short* label,
                                       const unsigned short* description, const Octets& address,
                                       const unsigned short* separator, unsigned short port,
                                       int error, const OwnSocket* socket) {
    VelBase::WideText text = BeginFailureText(label, description);
    text.Append(VelBase::UTF8ToWideChar(address.GetAddressString().c_str(), false))
        .Append(separator)
        .Append(VelBase::ToDecimalWString(port));
    AppendError(text, ", errno = "_wide, error);
    ThrowFailure(text, Exception::GetSocketError(error), socket);
}

using AddressQuery = int (*)(Winsock::Handle handle, void* address, int* length);

Winsock::AddressIpv4 QueryAddress(const OwnSocket& socket, AddressQuery query,
                                  const unsigned short* description) {
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    if (query(socket.Handle(), &address, &length) == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        // Required (SocketAddresses.FailureIsLoggedAndThrownWithTheLabelOfSend): the label is that
        // of Send for both addresses.
        ThrowSystemFailure("VelNet::SocketImpl::Send() - FAIL."_wide, description, error, &socket);
    }
    return address;
}

SocketAddress SocketAddressFrom(const Winsock::AddressIpv4& address) {
    SocketAddress made;
    AddressWriter::Write(address, made);
    return made;
}

// Whether no derived class can have overridden an operation.
bool IsExactlyThisClass(const SocketImpl& socket) noexcept {
    return typeid(socket) == typeid(SocketImpl);
}

}  // namespace

VelBase::ReturnPtrI<Socket> CreateSocket(Socket::SOCKET_TYPE type,
                                         Socket::SOCKET_PROTOCOL protocol) {
    HandleOwner handle(
        Winsock::socket(Winsock::FamilyIpv4, SystemTypeFrom(type), SystemProtocolFrom(protocol)));
    if (handle.IsEmpty()) {
        const int error = Winsock::WSAGetLastError();
        ThrowSystemFailure("VelNet::CreateSocket() - FAIL."_wide, "The ::socket failed"_wide,
                           error);
    }
    auto* const socket = new SocketImpl(handle.Get(), STATE_CREATED);
    handle.HandOver();
    return {socket};
}

SocketImpl::SocketImpl() : SocketImpl(Winsock::InvalidSocket, STATE_CLOSED) {}

SocketImpl::SocketImpl(Winsock::Handle handle, SocketState state)
    : OwnSocket(handle), state_(state) {}

SocketImpl::~SocketImpl() {
    if (SocketImpl::IsValid()) SocketImpl::Close();
}

bool SocketImpl::IsSameSocket(const Socket& other) const {
    return handle_ == HandleOfLikely<SocketImpl>(other);
}

bool SocketImpl::SetNonBlocking() {
    return SwitchToNonBlocking(handle_);
}

bool SocketImpl::IsValid() const {
    return state_ != STATE_CLOSED && handle_ != Winsock::InvalidSocket;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
void SocketImpl::Bind(Octets address, unsigned short port) {
    const Winsock::AddressIpv4 systemAddress = SystemAddressFrom(address, port);
    if (Winsock::bind(handle_, &systemAddress, sizeof systemAddress) == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        ThrowEndpointFailure("VelNet::SocketImpl::Bind() - FAIL."_wide,
                             "Cannot bind to a socket: "_wide, address, ": "_wide, port, error,
                             this);
    }
    state_ = STATE_BOUND;
}

int SocketImpl::Listen() {
    const int result = Winsock::listen(handle_, Backlog);
    if (result == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        ThrowSystemFailure("VelNet::SocketImpl::Listen() - FAIL."_wide,
                           "Cannot listen to a socket"_wide, error, this);
    }
    state_ = STATE_LISTENING;
    return result;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the value.
void SocketImpl::Connect(Octets address, unsigned short port) {
    const Winsock::AddressIpv4 systemAddress = SystemAddressFrom(address, port);
    if (Winsock::connect(handle_, &systemAddress, sizeof systemAddress) == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        // Required (Connect.RefusedPeerIsToldWithColonAlone): no space after the colon, unlike in
        // the text of Bind.
        ThrowEndpointFailure("VelNet::SocketImpl::Connect() - FAIL."_wide,
                             "Cannot connect to a socket: "_wide, address, ":"_wide, port, error,
                             this);
    }
    state_ = STATE_CONNECTED;
    // Required (Connect.AsksForTheAddressesThroughTheInterface): both go through the interface, and
    // the socket stays connected if one throws.
    StoreLocalAddress(local_);
    StoreRemoteAddress(remote_);
    if (IsConnectionTraceEnabled()) TraceConnection(ConnectedFormat);
}

VelBase::ReturnPtrI<Socket> SocketImpl::Accept(SocketAddress& remote) {
    // Created before the system is asked: a connection must not be lost because memory runs out.
    const VelBase::InterfaceHolder<SocketImpl> accepted(new SocketImpl);
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    const Winsock::Handle handle = Winsock::accept(handle_, &address, &length);
    if (handle == Winsock::InvalidSocket) {
        const int error = Winsock::WSAGetLastError();
        if (error == Winsock::ErrorWouldBlock || error == ErrorTryAgain) return {};
        // Required (Accept.FailureIsToldUnderTheNameOfTheSocketLayer): the label names SocketAPI.
        ThrowSystemFailure("VelNet::SocketAPI::Accept() - FAIL."_wide,
                           "Cannot accept a connection"_wide, error, this);
    }

    accepted->handle_ = handle;
    accepted->state_ = STATE_CONNECTED;
    AddressWriter::Write(address, remote);
    // Required (Accept.AsksTheListenerForItsOwnAddressAndWritesTheRecord): the address that the
    // listener is bound to, not the one that the connection reached.
    StoreLocalAddress(accepted->local_);
    accepted->remote_ = remote;
    if (IsConnectionTraceEnabled()) accepted->TraceConnection(ConnectedFormat);
    return {accepted.Get()};
}

void SocketImpl::SetReceiveTimeout(unsigned int milliseconds) {
    SetOption(Winsock::OptionReceiveTimeout, milliseconds,
              "VelNet::SocketImpl::SetReceiveTimeout() - FAIL."_wide,
              "Cannot set Receive Timeout"_wide);
}

void SocketImpl::SetSendTimeout(unsigned int milliseconds) {
    // Required (SocketOptions.FailedSendTimeoutNamesTheReceiveTimeoutsFunction): the label names
    // the receive timeout.
    SetOption(Winsock::OptionSendTimeout, milliseconds,
              "VelNet::SocketImpl::SetReceiveTimeout() - FAIL."_wide,
              "Cannot set Send Timeout"_wide);
}

void SocketImpl::SetReuseAddress() {
    SetOption(Winsock::OptionReuseAddress, 1, "VelNet::SocketImpl::SetReuseAddress() - FAIL."_wide,
              "Cannot set Reuse Address"_wide);
}

// Required (SocketClose.FailureIsLoggedAndTheSocketIsClosedAllTheSame): a failure is logged and not
// thrown, and the handle is dropped even then.
void SocketImpl::Close() noexcept {
    if (Winsock::closesocket(handle_) == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        TryLogFailure("VelNet::SocketImpl::Close() - FAIL."_wide, "Cannot close a socket"_wide,
                      error, this);
    }
    handle_ = Winsock::InvalidSocket;
    state_ = STATE_CLOSED;
    if (IsConnectionTraceEnabled()) TraceConnection(DisconnectedFormat);
    AddressWriter::Clear(local_);
    AddressWriter::Clear(remote_);
}

bool SocketImpl::IsDataAvailable() const {
    return HasBytesAvailable(handle_);
}

SocketAddress SocketImpl::GetLocalAddress() const {
    return SocketAddressFrom(QueryLocalAddress());
}

SocketAddress SocketImpl::GetRemoteAddress() const {
    return SocketAddressFrom(QueryRemoteAddress());
}

int SocketImpl::GetStatus() const {
    return StatusOf(*this, state_);
}

Winsock::AddressIpv4 SocketImpl::QueryLocalAddress() const {
    return QueryAddress(*this, Winsock::getsockname, "The ::getsockname failed"_wide);
}

Winsock::AddressIpv4 SocketImpl::QueryRemoteAddress() const {
    return QueryAddress(*this, Winsock::getpeername, "The ::getpeername failed"_wide);
}

// What the system tells goes straight to where it is stored, unless an override may tell otherwise.
void SocketImpl::StoreLocalAddress(SocketAddress& target) const {
    if (IsExactlyThisClass(*this)) return AddressWriter::Write(QueryLocalAddress(), target);
    target = GetLocalAddress();
}

void SocketImpl::StoreRemoteAddress(SocketAddress& target) const {
    if (IsExactlyThisClass(*this)) return AddressWriter::Write(QueryRemoteAddress(), target);
    target = GetRemoteAddress();
}

void SocketImpl::SetOption(int option, unsigned int value, const unsigned short* label,
                           const unsigned short* description) const {
    // Required (SocketOptions.FailureIsLoggedAndNotThrown): unlike other failures of the class.
    if (SetSocketOption(handle_, option, value)) return;
    const int error = Winsock::WSAGetLastError();
    TryLogFailure(label, description, error, this);
}

void SocketImpl::TraceConnection(LogFormat format) const noexcept {
    TryWriteConnectionRecord(format, [this] { return Endpoints(); });
}

ClassicEndpoints SocketImpl::Endpoints() const {
    return {ConnectionNumber(), local_, remote_};
}

}  // namespace VelNet
