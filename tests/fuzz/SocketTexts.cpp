#include "SocketTexts.h"

#include <VelNet/Exception.h>

#include <array>
#include <cstdio>

#include "support/Text.h"
#include "unit/socket/ErrorTableExpectations.h"

namespace Fuzz {

namespace {

std::string EndpointsText(const Endpoint& local, const Endpoint& remote) {
    return "Local address: " + local.host + " (" + std::to_string(local.port) +
           "), Remote address: " + remote.host + " (" + std::to_string(remote.port) + ")";
}

}  // namespace

int TakeErrorNumber(Input& input) {
    const unsigned int row = input.Byte();
    const int number = row < FoundationTests::ErrorRowCount
                           ? FoundationTests::ExpectedErrorTable[row].key +
                                 std::array{0, 1, -1, 10000, -10000, 65536, -65536}[input.Below(7)]
                           : static_cast<int>(1 + row - FoundationTests::ErrorRowCount);
    return number != 0 ? number : 1;
}

Thrown FailureOf(std::string_view labelAndDescription, int error) {
    return {FoundationTests::ExpectedFailureText(labelAndDescription, error),
            FoundationTests::ExpectedRow(error).code};
}

Thrown EndOfStream() {
    return {
        u"VelNet::SocketImpl::Receive() - FAIL. The ::recv could not be completed because the "
        u"connection has been closed.",
        -1};
}

LogLine ErrorLine(const Thrown& failure) {
    return {"Error", failure.text};
}

LogLine ConnectionLine(const std::string& event, const Endpoint& local, const Endpoint& remote) {
    return {"Connection Trace", Support::Widen(event + ", " + EndpointsText(local, remote))};
}

Log TransferLines(const std::string& event, std::string_view bytes, const Endpoint& local,
                  const Endpoint& remote) {
    const std::string plain =
        event + " " + std::to_string(bytes.size()) + " bytes, " + EndpointsText(local, remote);
    return {{"Packet Trace", Support::Widen(plain)},
            {"Verbose Packet Trace", Support::Widen(plain + ", data: " + Hexadecimal(bytes))}};
}

void ExpectOutcome(std::string_view what, const Thrown& expected,
                   const std::function<void()>& operation) {
    Thrown thrown;
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        thrown = {Support::Text(failure.GetMessage()), failure.GetErrorCode()};
    }
    Expect(what, expected.text, thrown.text);
    Expect(what, expected.code, thrown.code);
}

}  // namespace Fuzz
