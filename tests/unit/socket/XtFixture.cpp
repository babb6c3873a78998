#include "XtFixture.h"

#include <algorithm>

#include "PrivateFields.h"

namespace SocketTests {

auto PrivateFieldsOf(const SocketXtImpl& socket);
auto PrivateFieldsOf(SocketXtImpl& socket);
template struct Exposed<
    SocketXtImpl, &SocketXtImpl::handle_, &SocketXtImpl::state_, &SocketXtImpl::localHost_,
    &SocketXtImpl::localPort_, &SocketXtImpl::remoteHost_, &SocketXtImpl::remotePort_,
    &SocketXtImpl::socketType_, &SocketXtImpl::protocol_, &SocketXtImpl::family_>;

namespace {

const Lines Conversions = {"WideFromCodePage", "CodePageFromWide"};

Lines Joined(Lines lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

Routers OnlyErrors(bool on) {
    return {.error = on};
}

void ExpectOneFailure(const FailingXt& failing, int number, bool isLogged) {
    SCOPED_TRACE(number);
    failing.failWith(number);
    const std::string before = failing.memory();
    ClearTranscript();

    const Caught caught = Catch(failing.operation);

    const Lines logged = isLogged ? Lines{"LogMessage"} : Lines{};
    EXPECT_EQ(caught, failing.isThrown ? failing.failure.With(number) : Caught());
    EXPECT_EQ(SystemCalls(), Joined(Joined(failing.calls, logged), failing.callsAfterwards));
    EXPECT_EQ(failing.memory(), before);
}

// One of both families in turn, as the bits say.
AddressSequence SequenceOf(std::size_t length, unsigned int families, std::size_t refusals) {
    AddressSequence sequence{{}, {}, refusals};
    for (std::size_t index = 0; index < length; ++index) {
        const std::string number = std::to_string(index + 1);
        if ((families >> index & 1) != 0) {
            sequence.addresses.emplace_back(Winsock::FamilyIpv6, "2001:DB8::" + number,
                                            static_cast<unsigned short>(80));
            sequence.texts.push_back("[2001:DB8:0:0:0:0:0:" + number + "]:80, 28");
        } else {
            sequence.addresses.emplace_back(Winsock::FamilyIpv4, "10.0.0." + number,
                                            static_cast<unsigned short>(80));
            sequence.texts.push_back("10.0.0." + number + ":80, 16");
        }
    }
    return sequence;
}

std::vector<LoggedArgument> TextArguments(const Lines& texts) {
    std::vector<LoggedArgument> arguments;
    for (const std::string& text : texts)
        arguments.push_back(NarrowArgument(text));
    return arguments;
}

}  // namespace

XtFields FieldsOf(const SocketXtImpl& socket) {
    return std::apply([](const auto&... field) { return XtFields{field...}; },
                      PrivateFieldsOf(socket));
}

XtFields FieldsOf(const SocketXt& socket) {
    return FieldsOf(ImplementationOf(socket));
}

XtFields FieldsOf(const VelBase::ReturnPtrI<SocketXt>& socket) {
    return FieldsOf(*socket);
}

void PrintTo(const XtFields& fields, std::ostream* stream) {
    *stream << "handle " << static_cast<long long>(fields.handle) << ", state " << fields.state
            << ", local " << fields.localHost << ' ' << fields.localPort << ", remote "
            << fields.remoteHost << ' ' << fields.remotePort << ", type " << fields.socketType
            << ", protocol " << fields.protocol << ", family " << fields.family;
}

std::vector<const void*> FieldAddressesOf(const SocketXtImpl& socket) {
    return AddressesOf(PrivateFieldsOf(socket));
}

void StoreTexts(SocketXtImpl& socket) {
    const auto [handle, state, localHost, localPort, remoteHost, remotePort, type, protocol,
                family] = PrivateFieldsOf(socket);
    localHost = LocalText;
    localPort = LocalService;
    remoteHost = RemoteText;
    remotePort = RemoteService;
}

const SocketXtImpl& ImplementationOf(const SocketXt& socket) {
    return dynamic_cast<const SocketXtImpl&>(socket);
}

std::string XtFailure::Head() const {
    const std::string addresses = first.empty() ? "" : first + " : " + second;
    return function + " , " + description + " , " + call + " , " + addresses + ' ';
}

Lines SystemCalls() {
    Lines lines;
    for (const Event& event : Events()) {
        if (std::find(Conversions.begin(), Conversions.end(), event.call) != Conversions.end())
            continue;
        lines.push_back(event.call == "LogMessage" ? event.call : event.text);
    }
    return lines;
}

void ExpectEachXtFailure(const FailingXt& failing, const std::vector<int>& numbers) {
    const std::size_t earlier = LoggedMessages().size();
    std::vector<std::u16string> texts = LoggedTexts(ErrorCategory);
    Switch(OnlyErrors(true));
    for (const int number : numbers) {
        ExpectOneFailure(failing, number, true);
        texts.push_back(failing.failure.With(number).text);
    }
    EXPECT_EQ(LoggedMessages().size(), earlier + numbers.size());
    EXPECT_EQ(LoggedTexts(ErrorCategory), texts);
    if (earlier == 0) {
        std::vector<Record> records;
        for (const std::u16string& text : texts)
            records.push_back(FailureRecord(text));
        ExpectRecords(records);
    }

    Switch(OnlyErrors(false));
    const int formatterRequests = FormatterRequests();
    for (const int number : numbers)
        ExpectOneFailure(failing, number, false);
    EXPECT_EQ(LoggedMessages().size(), earlier + numbers.size());
    EXPECT_EQ(FormatterRequests(), formatterRequests);
    EnableAllRouters();
}

std::function<std::string()> MemoryOf(const SocketXtImpl& socket) {
    return [&socket] { return testing::PrintToString(FieldsOf(socket)); };
}

std::function<std::string()> MemoryOf(const SocketXtImpl& socket, const VelBase::ReturnString& host,
                                      const VelBase::ReturnString& port) {
    return [&] {
        return testing::PrintToString(FieldsOf(socket)) + ", host " + host.c_str() + ", port " +
               port.c_str();
    };
}

Record XtConnectionRecord(const std::string& event, const std::string& localHost,
                          const std::string& localPort, const std::string& remoteHost,
                          const std::string& remotePort) {
    return {ConnectionCategory, event + ", Local address: %1 (%2), Remote address: %3 (%4)",
            TextArguments({localHost, localPort, remoteHost, remotePort})};
}

Record XtTransferRecord(const std::string& event, int count, const std::string& localHost,
                        const std::string& localPort, const std::string& remoteHost,
                        const std::string& remotePort) {
    Record record{PacketCategory,
                  event + " %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)",
                  TextArguments({localHost, localPort, remoteHost, remotePort})};
    record.arguments.insert(record.arguments.begin(), IntegerArgument(count));
    return record;
}

Record XtTransferRecordWithData(const std::string& event, int count, const std::string& localHost,
                                const std::string& localPort, const std::string& remoteHost,
                                const std::string& remotePort, const std::string& data) {
    Record record = XtTransferRecord(event, count, localHost, localPort, remoteHost, remotePort);
    record.category = VerboseCategory;
    record.format += ", data: %6";
    record.arguments.push_back(NarrowArgument(data));
    return record;
}

Lines AddressSequence::Calls(const std::string& beginning, const std::string& end) const {
    Lines calls;
    for (std::size_t attempt = 0; attempt < Attempts(); ++attempt)
        calls.push_back(beginning + texts[attempt] + end);
    return calls;
}

void AddressSequence::Script(NumberAnswers attempts) const {
    On::Getaddrinfo().Returns(addresses);
    for (std::size_t attempt = 0; attempt < refusals; ++attempt)
        attempts.Fails(ErrorOf(attempt));
    if (Succeeds()) attempts.Passes();
}

std::vector<AddressSequence> AllAddressSequences() {
    std::vector<AddressSequence> sequences;
    for (std::size_t length = 1; length <= 3; ++length)
        for (unsigned int families = 0; families < 1U << length; ++families)
            for (std::size_t refusals = 0; refusals <= length; ++refusals)
                sequences.push_back(SequenceOf(length, families, refusals));
    return sequences;
}

std::size_t ExhaustMemory(const std::function<void()>& script,
                          const std::function<void()>& operation,
                          const std::function<void(const Starved&)>& check) {
    return FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        script();
        ClearTranscript();
        const Lines open = Ledger();
        const Starved starved = Starve(n, operation);
        if (starved.outOfMemory) {
            EXPECT_EQ(Ledger(), open);
        }
        check(starved);
        ForgetAnswers();
        return starved.happened;
    });
}

void ForgetOpenAddressLists() {
    for (const std::string& entry : Ledger())
        if (entry.starts_with("address list ")) ForgetInLedger(entry);
}

void XtTest::SetUp() {
    SocketTest::SetUp();
    DisturbLastErrorWith(Disturbance);
}

}  // namespace SocketTests
