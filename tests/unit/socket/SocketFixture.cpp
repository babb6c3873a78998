#include "SocketFixture.h"

#include <Socket/StartUpLock.h>

#include "PrivateFields.h"
#include "scripted/platform/Call.h"

namespace SocketTests {

auto PrivateFieldsOf(const SocketImpl& socket);
auto PrivateFieldsOf(SocketImpl& socket);
template struct Exposed<SocketImpl, &SocketImpl::handle_, &SocketImpl::state_, &SocketImpl::local_,
                        &SocketImpl::remote_>;

namespace {

std::string Ascii(const std::u16string& text) {
    std::string ascii;
    for (const char16_t unit : text)
        ascii += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?';
    return ascii;
}

Record RecordOf(const LoggedMessage& message) {
    return {message.category, message.format, message.arguments};
}

void ExpectUsualBookkeeping(const LoggedMessage& message) {
    EXPECT_EQ(message.router, "Network");
    EXPECT_EQ(message.quotedFormat, '"' + message.format + '"');
    EXPECT_EQ(message.source, nullptr);
    EXPECT_EQ(message.function, nullptr);
    EXPECT_EQ(message.line, 0);
}

std::string ArgumentText(const LoggedArgument& argument) {
    using Kind = VelResource::MessageArgument::Kind;
    switch (argument.kind) {
        case Kind::WideText:
            return "wide \"" + Ascii(argument.wide) + '"';
        case Kind::NarrowText:
            return "narrow \"" + argument.narrow + '"';
        case Kind::Integer:
            return std::to_string(argument.integer);
    }
    return "an argument of no kind";
}

}  // namespace

SocketFields FieldsOf(const SocketImpl& socket) {
    const auto [handle, state, local, remote] = PrivateFieldsOf(socket);
    return {handle, state, EndpointText(local), EndpointText(remote)};
}

void StoreEndpoints(SocketImpl& socket) {
    const auto [handle, state, local, remote] = PrivateFieldsOf(socket);
    local = SocketAddress(OctetsOf(LocalHost), LocalPort);
    remote = SocketAddress(OctetsOf(RemoteHost), RemotePort);
}

std::vector<const void*> FieldAddressesOf(const SocketImpl& socket) {
    return AddressesOf(PrivateFieldsOf(socket));
}

void PrintTo(const SocketFields& fields, std::ostream* stream) {
    *stream << "handle " << static_cast<long long>(fields.handle) << ", state " << fields.state
            << ", local " << fields.local << ", remote " << fields.remote;
}

SocketFields ClosedFields() {
    return {Winsock::InvalidSocket, STATE_CLOSED, "0.0.0.0:0", "0.0.0.0:0"};
}

std::string EndpointText(const SocketAddress& endpoint) {
    return std::string(endpoint.GetOctets().GetAddressString().c_str()) + ':' +
           std::to_string(endpoint.GetPort());
}

Octets OctetsOf(const std::string& dotted) {
    const std::string bytes = AddressBytes(dotted);
    const auto octet = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    return {octet(0), octet(1), octet(2), octet(3)};
}

void PrintTo(const Caught& caught, std::ostream* stream) {
    if (caught.thrown)
        *stream << '"' << Ascii(caught.text) << "\" with code " << caught.code;
    else
        *stream << "nothing";
}

void ExpectEmptyBase(const VelBase::Message& base) {
    EXPECT_EQ(base.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    EXPECT_EQ(base.GetID(), 0);
    EXPECT_EQ(Text(base.GetMessage()), u"");
}

std::u16string FailureText(std::string_view labelAndDescription, int error) {
    const std::u16string head = Widen(labelAndDescription) + u", errno = ";
    const auto unit = static_cast<char16_t>(error);
    if (unit == 0) return head;
    return head + unit + u' ' + Text(Exception::GetErrorString(error));
}

Caught FailureOf(std::string_view labelAndDescription, int error) {
    return {true, FailureText(labelAndDescription, error), Exception::GetSocketError(error)};
}

LoggedArgument WideArgument(std::u16string text) {
    return {VelResource::MessageArgument::Kind::WideText, std::move(text), "", 0};
}

LoggedArgument NarrowArgument(std::string text) {
    return {VelResource::MessageArgument::Kind::NarrowText, u"", std::move(text), 0};
}

LoggedArgument IntegerArgument(int number) {
    return {VelResource::MessageArgument::Kind::Integer, u"", "", number};
}

void PrintTo(const Record& record, std::ostream* stream) {
    *stream << record.category << ": \"" << record.format << '"';
    for (const LoggedArgument& argument : record.arguments)
        *stream << ", " << ArgumentText(argument);
}

Record FailureRecord(std::u16string text) {
    return {ErrorCategory, "%1", {WideArgument(std::move(text))}};
}

void ExpectRecords(const std::vector<Record>& expected) {
    std::vector<Record> records;
    for (const LoggedMessage& message : LoggedMessages()) {
        ExpectUsualBookkeeping(message);
        records.push_back(RecordOf(message));
    }
    EXPECT_EQ(records, expected);
}

std::vector<LoggedArgument> EndpointArguments(const std::string& local, int localPort,
                                              const std::string& remote, int remotePort) {
    return {NarrowArgument(local), IntegerArgument(localPort), NarrowArgument(remote),
            IntegerArgument(remotePort)};
}

std::string LogLine(const std::string& category, const std::u16string& text) {
    return "LogMessage(" + category + ", " + QuotedUnits(text) + ')';
}

void Switch(const Routers& routers) {
    SetRouterFlag(ErrorCategory, routers.error);
    SetRouterFlag(ConnectionCategory, routers.connection);
    SetRouterFlag(PacketCategory, routers.packet);
    SetRouterFlag(VerboseCategory, routers.verbose);
}

std::vector<Routers> AllCombinationsOfRouters() {
    std::vector<Routers> combinations;
    for (unsigned int bits = 0; bits < 16; ++bits)
        combinations.push_back(
            {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0});
    return combinations;
}

std::vector<std::string> OpenSockets() {
    std::vector<std::string> open = Ledger();
    std::erase_if(open, [](const std::string& entry) { return !entry.starts_with("socket "); });
    return open;
}

void SocketTest::SetUp() {
    PlatformTest::SetUp();
    initialization_.emplace();
    EnableAllRouters();
    ClearTranscript();
}

void SocketTest::TearDown() {
    EXPECT_EQ(g_startUpLock, 0U);
    EXPECT_EQ(g_socketInitializationCount, initialization_ ? 1 : 0);
    EXPECT_EQ(g_socketLayer != nullptr, initialization_.has_value());
    if (g_socketLayer != nullptr) {
        EXPECT_EQ(g_socketLayer->cachedIpVersion, 0);
    }
    BringLayerDown();
    PlatformTest::TearDown();
}

void SocketTest::BringLayerDown() {
    initialization_.reset();
    EXPECT_EQ(g_socketLayer, nullptr);
}

Winsock::Handle SocketTest::OpenHandle() {
    const Winsock::Handle handle =
        Winsock::socket(Winsock::FamilyIpv4, Winsock::TypeStream, Winsock::ProtocolTcp);
    ClearTranscript();
    return handle;
}

void SocketTest::StoreAddresses(SocketImpl& socket) {
    On::Getsockname().Returns(LocalHost, LocalPort);
    On::Getpeername().Returns(RemoteHost, RemotePort);
    SetRouterFlag(ConnectionCategory, 0);
    socket.Connect(OctetsOf(RemoteHost), RemotePort);
    SetRouterFlag(ConnectionCategory, 1);
    ClearTranscript();
}

}  // namespace SocketTests
