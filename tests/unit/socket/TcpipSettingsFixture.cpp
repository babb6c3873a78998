#include "TcpipSettingsFixture.h"

#include <Platform/System.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace SocketTests {

namespace {

constexpr std::array<const char*, 4> RegistryCalls = {"OpenKey", "SubKeyNames", "OpenSubKey",
                                                      "ReadValue"};

void Prepare(const SettingsReader& reader) {
    if (reader.isOlderLayout) ReadOlderLayout();
    ClearTranscript();
}

// The calls that read the registry, in their order, of an undisturbed run.
std::vector<std::string> RegistryCallsOf(const SettingsReader& reader) {
    Prepare(reader);
    reader.operation();
    std::vector<std::string> calls;
    for (const Event& event : Events())
        if (std::find(RegistryCalls.begin(), RegistryCalls.end(), event.call) !=
            RegistryCalls.end())
            calls.push_back(event.call);
    return calls;
}

// Scripts the call at the index to throw.
template <class Thrown>
void ThrowAt(const std::vector<std::string>& calls, std::size_t index, Thrown thrown) {
    const auto place = calls.begin() + static_cast<std::ptrdiff_t>(index);
    const auto earlier = static_cast<int>(std::count(calls.begin(), place, calls[index]));
    PlainAnswers(calls[index]).Passes(earlier).Throws(std::move(thrown));
}

// Runs the reader with each of its registry calls throwing in turn.
template <class Thrown, class Run>
std::size_t RunWithEachThrowing(const SettingsReader& reader, Thrown thrown, Run run) {
    const std::vector<std::string> calls = RegistryCallsOf(reader);
    for (std::size_t index = 0; index < calls.size(); ++index) {
        SCOPED_TRACE(calls[index] + " as call " + std::to_string(index));
        Prepare(reader);
        ThrowAt(calls, index, thrown(index));
        run(index);
        EXPECT_EQ(OpenKeys(), std::vector<std::string>());
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
    }
    return calls.size();
}

template <class Thrown>
std::size_t ExpectPasses(const SettingsReader& reader, const Thrown& thrown) {
    const std::size_t records = LoggedMessages().size();
    const std::size_t calls = RunWithEachThrowing(
        reader, [&](std::size_t) { return thrown; },
        [&](std::size_t) { EXPECT_THROW(reader.operation(), Thrown); });
    EXPECT_EQ(LoggedMessages().size(), records);
    return calls;
}

// For a run that ended before it asked for the version.
void TakeUnusedVersion() {
    if (UnusedAnswers().empty()) return;
    System::VersionRecord record = {};
    record.size = sizeof record;
    System::GetVersionExW(&record);
}

// A failure that is told already is not told again.
void ExpectEarlierFailurePasses(const SettingsReader& reader) {
    const std::size_t records = LoggedMessages().size();
    RunWithEachThrowing(
        reader, [](std::size_t) { return Exception(Wide("earlier").data(), SOCKET_ERR_ACCES); },
        [&](std::size_t) {
            EXPECT_EQ(Catch(reader.operation), (Caught{true, u"earlier", SOCKET_ERR_ACCES}));
        });
    EXPECT_EQ(LoggedMessages().size(), records);
}

std::u16string ReasonAt(std::size_t index) {
    return u"reason \u20AC " + std::u16string(index + 1, u'!');
}

std::size_t ExpectTold(const SettingsReader& reader, std::vector<Record>& records, bool isLogged) {
    return RunWithEachThrowing(
        reader, [](std::size_t index) { return KeyFailure(ReasonAt(index)); },
        [&](std::size_t index) {
            const std::u16string text = SettingsFailure(reader, ReasonAt(index));
            EXPECT_EQ(Catch(reader.operation), (Caught{true, text, -1}));
            if (isLogged) records.push_back(FailureRecord(text));
        });
}

}  // namespace

void AddInterface(const std::string& name, const Values& values) {
    std::string path = InterfacesPath;
    path.append("\\").append(name);
    RegistryTree().Key(path);
    for (const auto& [valueName, text] : values)
        RegistryTree().Value(path, valueName, text);
}

void AddParameters(const Values& values) {
    RegistryTree().Key(ParametersPath);
    for (const auto& [valueName, text] : values)
        RegistryTree().Value(ParametersPath, valueName, text);
}

void ReadOlderLayout(int calls) {
    for (int call = 0; call < calls; ++call)
        On::GetVersionExW().Returns(4);
}

VelRegistry::KeyException KeyFailure(const std::u16string& text) {
    VelBase::Message message;
    message.SetDomainAndID(VelBase::MESSAGE_DOMAIN_UNKNOWN, 5);
    message.SetMessage(Wide(text).data());
    return VelRegistry::KeyException(message);
}

std::u16string SettingsFailure(const SettingsReader& reader, const std::u16string& reason) {
    return reader.label + u" The TCP protocol is not configured on this machine. Registry error: " +
           reason;
}

std::size_t ExpectEachKeyExceptionIsTold(const SettingsReader& reader) {
    std::vector<Record> records;
    const std::size_t calls = ExpectTold(reader, records, true);
    ExpectRecords(records);

    SetRouterFlag(ErrorCategory, 0);
    const int formatterRequests = FormatterRequests();
    ExpectTold(reader, records, false);
    ExpectRecords(records);
    EXPECT_EQ(FormatterRequests(), formatterRequests);
    SetRouterFlag(ErrorCategory, 1);
    return calls;
}

std::size_t ExpectWhatElseIsThrownPasses(const SettingsReader& reader) {
    ExpectPasses(reader, std::runtime_error("gone"));
    ExpectPasses(reader, std::bad_alloc());
    ExpectPasses(reader, 42);
    ExpectEarlierFailurePasses(reader);
    return ExpectPasses(reader, VelBase::ExceptionImpl<VelBase::Message>(VelBase::Message()));
}

std::size_t ExpectExhaustedMemoryPasses(const SettingsReader& reader) {
    const Allocations::Mark mark;
    return FailEveryAllocation([&](std::size_t n) {
        Prepare(reader);
        const bool exhausted = RunsOutOfMemory(n, reader.operation);
        TakeUnusedVersion();
        EXPECT_EQ(OpenKeys(), std::vector<std::string>()) << n;
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
        return exhausted;
    });
}

std::vector<std::string> OpenKeys() {
    std::vector<std::string> open = Ledger();
    std::erase_if(open, [](const std::string& entry) {
        return entry.find("registry key") == std::string::npos;
    });
    return open;
}

void TcpipSettingsTest::TearDown() {
    EXPECT_EQ(OpenKeys(), std::vector<std::string>());
    if (!mayAskForSocketErrors_) {
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
    }
    SocketTest::TearDown();
}

std::vector<std::string> TcpipSettingsTest::OpenedInterfaces() {
    std::vector<std::string> names;
    for (const Event& event : EventsOf("OpenSubKey")) {
        const std::size_t start = event.text.find('"') + 1;
        names.push_back(event.text.substr(start, event.text.rfind('"') - start));
    }
    return names;
}

}  // namespace SocketTests
