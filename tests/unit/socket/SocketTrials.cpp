#include "SocketTrials.h"

#include <algorithm>

namespace SocketTests {

namespace {

// In units.
constexpr std::size_t FailureTextRoom = 1020;

constexpr char Endpoints[] = "Local address: %1 (%2), Remote address: %3 (%4)";
constexpr char TransferEndpoints[] = "Local address: %2 (%3), Remote address: %4 (%5)";

// Returns the text.
std::u16string ExpectFailure(const FailingOperation& failing, int number, bool isLogged) {
    SCOPED_TRACE(number);
    failing.failWith(number);
    const std::string before = failing.memory();
    ClearTranscript();

    const Caught caught = Catch(failing.operation);

    std::vector<std::string> calls = failing.calls;
    if (isLogged) calls.emplace_back("LogMessage");
    calls.insert(calls.end(), failing.callsAfterwards.begin(), failing.callsAfterwards.end());
    EXPECT_EQ(caught, FailureOf(failing.text, number));
    EXPECT_EQ(TranscriptWithRecordsShortened(), calls);
    EXPECT_EQ(failing.memory(), before);
    return caught.text;
}

}  // namespace

void ExpectEachFailure(const FailingOperation& failing, const std::vector<int>& numbers) {
    std::vector<Record> records;
    for (const int number : numbers) {
        const std::u16string text = ExpectFailure(failing, number, failing.isLogged);
        if (failing.isLogged) records.push_back(FailureRecord(text));
    }
    ExpectRecords(records);

    SetRouterFlag(ErrorCategory, 0);
    const int formatterRequests = FormatterRequests();
    for (const int number : numbers)
        ExpectFailure(failing, number, false);
    ExpectRecords(records);
    EXPECT_EQ(FormatterRequests(), formatterRequests);
    SetRouterFlag(ErrorCategory, 1);
}

std::function<std::string()> MemoryOf(const SocketImpl& socket) {
    return [&socket] { return testing::PrintToString(FieldsOf(socket)); };
}

std::vector<int> ErrorNumbersWithout(const std::vector<int>& excluded) {
    std::vector<int> numbers = ErrorNumbers();
    std::erase_if(numbers, [&](int number) {
        return std::find(excluded.begin(), excluded.end(), number) != excluded.end();
    });
    return numbers;
}

std::vector<std::string> TranscriptWithRecordsShortened() {
    std::vector<std::string> lines;
    for (const Event& event : Events())
        lines.push_back(event.call == "LogMessage" ? event.call : event.text);
    return lines;
}

Record ConnectionRecord(const std::string& event, const std::string& localHost,
                        unsigned short localPort, const std::string& remoteHost,
                        unsigned short remotePort) {
    return {ConnectionCategory, event + ", " + Endpoints,
            EndpointArguments(localHost, localPort, remoteHost, remotePort)};
}

Record TransferRecord(const std::string& event, int count) {
    Record record{PacketCategory, event + " %1 bytes, " + TransferEndpoints,
                  EndpointArguments(LocalHost, LocalPort, RemoteHost, RemotePort)};
    record.arguments.insert(record.arguments.begin(), IntegerArgument(count));
    return record;
}

Record TransferRecordWithData(const std::string& event, int count, const std::string& data) {
    Record record = TransferRecord(event, count);
    record.category = VerboseCategory;
    record.format += ", data: %6";
    record.arguments.push_back(NarrowArgument(data));
    return record;
}

void SwitchPacketTracing(bool plain, bool withData) {
    SetRouterFlag(PacketCategory, plain ? 1 : 0);
    SetRouterFlag(VerboseCategory, withData ? 1 : 0);
}

int FailureTextBlocksSince(const Allocations::Mark& mark) {
    const std::vector<std::size_t> sizes = mark.Sizes();
    const auto isLarge = [](std::size_t size) {
        return size >= FailureTextRoom * sizeof(unsigned short);
    };
    return static_cast<int>(std::count_if(sizes.begin(), sizes.end(), isLarge));
}

}  // namespace SocketTests
