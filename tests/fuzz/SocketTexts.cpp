#include "SocketTexts.h"

#include <VelBase/ExceptionImpl.h>
#include <VelNet/Exception.h>

#include <array>
#include <cstdio>

#include "support/Text.h"
#include "unit/socket/ErrorTableExpectations.h"

namespace Fuzz {

namespace {

std::string EndpointsText(const TextEnd& local, const TextEnd& remote) {
    return "Local address: " + local.host + " (" + local.port +
           "), Remote address: " + remote.host + " (" + remote.port + ")";
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

// Without a first text the second is left out, too.
std::string ExtendedHead(const std::string& function, const std::string& description,
                         const std::string& call, const TextEnd& texts) {
    const std::string ends = texts.host.empty() ? "" : texts.host + " : " + texts.port;
    return "VelNet::" + function + " , " + description + " , " + call + " , " + ends + " ";
}

TextEnd Joined(const TextEnd& local, const TextEnd& remote) {
    return {local.host + ":" + local.port, remote.host + ":" + remote.port};
}

LogLine ErrorLine(const Thrown& failure) {
    return {"Error", failure.text};
}

LogLine ConnectionLine(const std::string& event, const TextEnd& local, const TextEnd& remote) {
    return {"Connection Trace", Support::Widen(event + ", " + EndpointsText(local, remote))};
}

LogLine ConnectionLine(const std::string& event, const Endpoint& local, const Endpoint& remote) {
    return ConnectionLine(event, local.Text(), remote.Text());
}

Log TransferLines(const std::string& event, std::string_view bytes, const TextEnd& local,
                  const TextEnd& remote) {
    const std::string plain =
        event + " " + std::to_string(bytes.size()) + " bytes, " + EndpointsText(local, remote);
    return {{"Packet Trace", Support::Widen(plain)},
            {"Verbose Packet Trace", Support::Widen(plain + ", data: " + Hexadecimal(bytes))}};
}

Log TransferLines(const std::string& event, std::string_view bytes, const Endpoint& local,
                  const Endpoint& remote) {
    return TransferLines(event, bytes, local.Text(), remote.Text());
}

void ExpectOutcome(std::string_view what, const Thrown& expected,
                   const std::function<void()>& operation) {
    Thrown thrown;
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        thrown = {Support::Text(failure.GetMessage()), failure.GetErrorCode()};
    } catch (const VelBase::ExceptionImpl<VelBase::Message>& failure) {
        thrown = {Support::Text(failure.GetMessage()), failure.GetID()};
    }
    Expect(what, expected.text, thrown.text);
    Expect(what, expected.code, thrown.code);
}

}  // namespace Fuzz
