// The commands that connect the standard streams to datagrams.
#include <vector>

#include "Commands.h"
#include "Countdown.h"
#include "DatagramSocket.h"
#include "Events.h"
#include "Failure.h"
#include "Pace.h"
#include "ProgressLine.h"
#include "StandardStreams.h"
#include "Traffic.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;

std::unique_ptr<DatagramSocket> OpenDatagrams(const Arguments& arguments) {
    return arguments.Family() == SocketFamily::Classic ? OpenClassicDatagrams(arguments)
                                                       : OpenExtendedDatagrams(arguments);
}

// No input is read for empty datagrams.
std::optional<std::string_view> NextInput(std::vector<char>& buffer) {
    if (buffer.empty()) return std::string_view();
    const std::size_t count = VelSockTools::ReadInput(buffer.data(), buffer.size());
    if (count == 0) return {};
    return std::string_view(buffer.data(), count);
}

void ShowSender(const Datagram& datagram) {
    const std::string size = std::to_string(datagram.bytes.size());
    VelSockTools::JsonObject members;
    members.Add("bytes", size);
    members.AddText("host", datagram.senderHost);
    members.AddText("port", datagram.senderPort);
    VelSockTools::Tell(
        {"datagram", size + " bytes from " + datagram.senderHost + " port " + datagram.senderPort,
         members});
}

// A datagram that is slower than its pace leaves whole.
void SendInput(DatagramSocket& socket, const Arguments& arguments, Traffic& traffic) {
    std::vector<char> buffer(arguments.datagramSize);
    Pace pace(arguments.rate);
    for (Countdown countdown(arguments.datagramCount); countdown.Next();) {
        const auto bytes = NextInput(buffer);
        if (!bytes) return;
        pace.Await(bytes->size());
        socket.Send(*bytes);
        traffic.Sent(*bytes);
    }
}

void ReceiveToOutput(DatagramSocket& socket, const std::optional<unsigned int>& number,
                     bool showSenders, Traffic& traffic) {
    std::vector<char> buffer(DatagramSocket::Room);
    for (Countdown countdown(number); countdown.Next();) {
        const Datagram datagram = socket.Receive(buffer.data());
        if (showSenders) ShowSender(datagram);
        traffic.Received(datagram.bytes);
        if (!traffic.ShowsBytes()) VelSockTools::WriteOutput(datagram.bytes);
    }
}

// Without a number, silence is the end of the answers.
void ShowAnswers(DatagramSocket& socket, const Arguments& arguments, Traffic& traffic) {
    const unsigned int number = *arguments.answers;
    if (number > 0) return ReceiveToOutput(socket, number, arguments.showSenders, traffic);
    try {
        ReceiveToOutput(socket, {}, arguments.showSenders, traffic);
    } catch (const VelSockTools::Failure& failure) {
        if (failure.Code() != VelSockTools::ExitCode::TimedOut) throw;
    }
}

// A peer need not answer.
Arguments WithPatience(Arguments arguments) {
    constexpr unsigned int patience = 5000;
    if (arguments.answers && !arguments.receiveTimeout) arguments.receiveTimeout = patience;
    return arguments;
}

}  // namespace

// Sends each read of standard input as a datagram until the input or the count ends.
ExitCode SendDatagrams(const Arguments& arguments) {
    const Arguments patient = WithPatience(arguments);
    const auto socket = OpenDatagrams(patient);
    Traffic traffic(patient);
    const ProgressLine progress(traffic, patient);
    SendInput(*socket, patient, traffic);
    if (patient.answers) ShowAnswers(*socket, patient, traffic);
    return ExitCode::InOrder;
}

// Writes each datagram to standard output until the count ends.
ExitCode ReceiveDatagrams(const Arguments& arguments) {
    const auto socket = OpenDatagrams(arguments);
    Traffic traffic(arguments);
    ReceiveToOutput(*socket, arguments.datagramCount, arguments.showSenders, traffic);
    return ExitCode::InOrder;
}

}  // namespace VelSockCat
