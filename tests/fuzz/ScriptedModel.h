// What models of sockets over the scripted platform have in common: what the input injects, and the
// calls of the system and the records that are to come of it.
#pragma once

#include <VelNet/Socket.h>

#include <array>
#include <set>

#include "SocketTexts.h"
#include "scripted/RecordingServices.h"
#include "scripted/ScriptedPlatform.h"
#include "scripted/platform/Call.h"

namespace Fuzz {

class ScriptedModel {
public:
    enum class State { Closed, Created, Bound, Listening, Connected };

    static constexpr char NoHandle[] = "INVALID";

    explicit ScriptedModel(Input input) : input_(input) {}

    // The calls and the records since the last comparison.
    void Compare() {
        // How texts are converted on their way is nobody's affair, nor is giving back no list.
        Scripted::Lines calls =
            Scripted::TranscriptWithout({"LogMessage", "WideFromCodePage", "CodePageFromWide"});
        std::erase(calls, "freeaddrinfo(null)");
        Expect("the system calls", calls_, calls);
        calls_.clear();
        Scripted::ClearTranscript();
        CompareRecords();
    }

protected:
    static constexpr std::array Categories = {"Error", "Connection Trace", "Packet Trace",
                                              "Verbose Packet Trace"};

    // 0 for an answer that is no failure.
    int TakeFailure() { return input_.Flag() ? TakeErrorNumber(input_) : 0; }

    Endpoint TakeEndpoint() {
        Endpoint endpoint;
        endpoint.host = std::to_string(input_.Byte()) + "." + std::to_string(input_.Byte()) +
                        ".0." + std::to_string(input_.Byte());
        endpoint.port = static_cast<int>(input_.Byte() << 8 | input_.Byte());
        return endpoint;
    }

    static std::string TextOf(const Endpoint& endpoint) {
        return endpoint.host + ":" + std::to_string(endpoint.port);
    }
    static unsigned short PortOf(const Endpoint& endpoint) {
        return static_cast<unsigned short>(endpoint.port);
    }

    static std::string Quoted(const std::string& text) {
        return Scripted::QuotedBytes(text.data(), text.size());
    }

    void ExpectCall(const std::string& call, int failure = 0) {
        calls_.push_back(call);
        if (failure != 0) calls_.emplace_back("WSAGetLastError()");
    }

    bool IsOn(const std::string& category) const { return !off_.contains(category); }
    void ExpectLine(const LogLine& line) {
        if (IsOn(line.first)) log_.push_back(line);
    }
    void ExpectLines(const Log& lines) {
        for (const LogLine& line : lines)
            ExpectLine(line);
    }
    // What an operation throws, which it has logged.
    Thrown Failing(std::string_view labelAndDescription, int error) {
        const Thrown failure = FailureOf(labelAndDescription, error);
        ExpectLine(ErrorLine(failure));
        return failure;
    }

    std::string NextHandle() { return std::to_string(1001 + handles_++); }
    // Apart from those that the scripted system counts up itself.
    std::string NextAcceptedHandle() { return std::to_string(5001 + acceptedHandles_++); }

    // What the system makes of bytes that a socket sends or receives.
    struct Transfer {
        int failure = 0;
        std::string bytes;
    };

    // It may take a part of them.
    Transfer ExpectSend(const std::string& handle, const std::string& bytes) {
        const int failure = TakeFailure();
        const std::size_t sent = failure != 0 ? 0 : input_.Byte() % (bytes.size() + 1);
        if (failure != 0) Scripted::On::Send().Fails(failure);
        if (failure == 0) Scripted::On::Send().Returns(static_cast<int>(sent));
        ExpectCall(
            "send(" + handle + ", " + Quoted(bytes) + ", " + std::to_string(bytes.size()) + ", 0)",
            failure);
        return {failure, bytes.substr(0, sent)};
    }
    static void Send(VelNet::Socket& socket, const std::string& bytes, const Transfer& transfer,
                     const Thrown& expected) {
        ExpectOutcome("Send", expected, [&] {
            Expect("the bytes sent", static_cast<int>(transfer.bytes.size()),
                   socket.Send(bytes.data(), static_cast<int>(bytes.size())));
        });
    }

    Transfer ExpectRecv(const std::string& handle) {
        const std::string bytes(input_.Line());
        const int failure = TakeFailure();
        if (failure != 0) Scripted::On::Recv().Fails(failure);
        if (failure == 0) Scripted::On::Recv().Delivers(bytes);
        ExpectCall("recv(" + handle + ", 2000, 0)", failure);
        return {failure, bytes};
    }
    static void Receive(VelNet::Socket& socket, const Transfer& transfer, const Thrown& expected) {
        std::string buffer(2000, '?');
        ExpectOutcome("Receive", expected, [&] {
            const int count = socket.Receive(buffer.data(), 2000);
            Expect("the bytes received", transfer.bytes,
                   buffer.substr(0, static_cast<std::size_t>(count)));
        });
    }

    void CheckNonBlocking(VelNet::Socket& socket, const std::string& handle) {
        const int failure = TakeFailure();
        if (failure != 0) Scripted::On::Ioctlsocket().Fails(failure);
        ExpectCall("ioctlsocket(" + handle + ", 0x8004667E, 1)");
        Expect("SetNonBlocking", failure == 0, socket.SetNonBlocking());
    }

    void CheckAvailable(const VelNet::Socket& socket, const std::string& handle) {
        const bool expected = ExpectAvailable(handle);
        Expect("IsDataAvailable", expected, socket.IsDataAvailable());
    }

    void CheckStatus(const VelNet::Socket& socket, const std::string& handle, State state) {
        const bool hasBytes = state == State::Connected && ExpectAvailable(handle);
        Expect("GetStatus", StatusOf(state, hasBytes), socket.GetStatus());
    }

    static int StatusOf(State state, bool hasBytes) {
        if (state == State::Connected) return hasBytes ? 2 : 3;
        return state == State::Listening ? 1 : 0;
    }

    // The state shows in no edge of the code: it is asked for after each step. The usual answer of
    // the system is that there are no bytes.
    static void CompareState(const VelNet::Socket& socket, State state) {
        Expect("GetStatus, of no bytes", StatusOf(state, false), socket.GetStatus());
        Scripted::ClearTranscript();
    }

    // Whether a socket is to say that it has bytes.
    bool ExpectAvailable(const std::string& handle) {
        const int failure = TakeFailure();
        const unsigned int available = input_.Below(3);
        if (failure != 0) Scripted::On::Ioctlsocket().Fails(failure);
        if (failure == 0) Scripted::On::Ioctlsocket().Returns(available);
        ExpectCall("ioctlsocket(" + handle + ", 0x4004667F)");
        return failure == 0 && available != 0;
    }

    void SwitchACategory() {
        const char* const category = Categories[input_.Below(4)];
        if (off_.erase(category) == 0) off_.insert(category);
        Scripted::SetRouterFlag(category, IsOn(category) ? 1 : 0);
    }

    Input input_;

private:
    void CompareRecords() {
        Log log;
        for (const Scripted::LoggedMessage& message : Scripted::LoggedMessages())
            log.emplace_back(message.category, message.text);
        Expect("the records", log_, log);
        log_.clear();
        Scripted::ForgetLoggedMessages();
    }

    Scripted::Lines calls_;
    Log log_;
    std::set<std::string> off_;
    int handles_ = 0;
    int acceptedHandles_ = 0;
};

}  // namespace Fuzz
