#include "FaultStorySockets.h"

namespace SocketTests {

namespace {

std::string StateName(SocketState state) {
    constexpr const char* Names[] = {"closed", "created", "bound", "listening", "connected"};
    return state <= STATE_CONNECTED ? Names[state] : std::to_string(state);
}

std::string HandleText(Winsock::Handle handle) {
    return handle == Winsock::InvalidSocket ? "none" : std::to_string(handle);
}

// What every socket has.
Properties Named(Winsock::Handle handle, SocketState state, const std::string& local,
                 const std::string& remote) {
    return {{"handle", HandleText(handle)},
            {"state", StateName(state)},
            {"local", local},
            {"remote", remote}};
}

}  // namespace

Winsock::Handle OpenedHandle(Winsock::Handle handle) {
    On::Socket().Returns(static_cast<long long>(handle));
    Winsock::socket(Winsock::FamilyIpv4, Winsock::TypeStream, Winsock::ProtocolTcp);
    return handle;
}

Properties PropertiesOf(const SocketImpl& socket) {
    const SocketFields fields = FieldsOf(socket);
    return Named(fields.handle, fields.state, fields.local, fields.remote);
}

Properties PropertiesOf(const SocketXtImpl& socket) {
    const XtFields fields = FieldsOf(socket);
    Properties properties =
        Named(fields.handle, fields.state, fields.localHost + ':' + fields.localPort,
              fields.remoteHost + ':' + fields.remotePort);
    properties["kind"] = std::to_string(fields.socketType) + '/' + std::to_string(fields.protocol) +
                         '/' + std::to_string(fields.family);
    return properties;
}

std::string SummaryOf(const Properties& properties) {
    std::string summary;
    for (const char* const name : {"handle", "state", "local", "remote", "kind"}) {
        const auto property = properties.find(name);
        if (property != properties.end()) summary += '/' + property->second;
    }
    return summary.substr(1);
}

std::string SummaryOf(const Socket& socket) {
    if (const auto* const extended = dynamic_cast<const SocketXtImpl*>(&socket))
        return SummaryOf(PropertiesOf(*extended));
    return SummaryOf(PropertiesOf(dynamic_cast<const SocketImpl&>(socket)));
}

VelBase::ReturnPtrI<SocketImpl> AddressedSocket(SocketState state) {
    VelBase::ReturnPtrI<SocketImpl> socket(new SocketImpl(OpenedHandle(), state));
    StoreEndpoints(*socket);
    return socket;
}

VelBase::ReturnPtrI<SocketXtImpl> AddressedXt(SocketState state, int type,
                                              SocketXt::ADDR_FAMILY family) {
    const int protocol =
        type == Winsock::TypeDatagram ? Winsock::ProtocolUdp : Winsock::ProtocolTcp;
    VelBase::ReturnPtrI<SocketXtImpl> socket(
        new SocketXtImpl(OpenedHandle(), state, type, protocol, family));
    StoreTexts(*socket);
    return socket;
}

}  // namespace SocketTests
