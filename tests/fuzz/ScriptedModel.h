// What four classic sockets over the scripted platform remember, ask the system and record, as far
// as it does not depend on the operation.
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

    struct Slot {
        VelBase::ReturnPtrI<VelNet::Socket> socket;
        State state = State::Closed;
        std::string handle = NoHandle;
        Endpoint local;
        Endpoint remote;

        // A system that connects a closed socket, as a script may tell, gives it no handle.
        bool IsValid() const { return state != State::Closed && handle != NoHandle; }
    };

    static constexpr std::array Categories = {"Error", "Connection Trace", "Packet Trace",
                                              "Verbose Packet Trace"};

    explicit ScriptedModel(Input input) : input_(input) {}

protected:
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

    void ExpectCall(const std::string& call, int failure = 0) {
        calls_.push_back(call);
        if (failure != 0) calls_.emplace_back("WSAGetLastError()");
    }
    void ExpectLine(const LogLine& line) {
        if (!off_.contains(line.first)) log_.push_back(line);
    }
    Thrown Failing(std::string_view labelAndDescription, int error) {
        const Thrown failure = FailureOf(labelAndDescription, error);
        ExpectLine(ErrorLine(failure));
        return failure;
    }
    std::string NextHandle() { return std::to_string(1001 + handles_++); }

    // Asks no system.
    static VelNet::Octets OctetsOf(const Endpoint& endpoint) {
        const std::string bytes = Scripted::AddressBytes(endpoint.host);
        return {static_cast<unsigned char>(bytes[0]), static_cast<unsigned char>(bytes[1]),
                static_cast<unsigned char>(bytes[2]), static_cast<unsigned char>(bytes[3])};
    }

    // Scripts one of the two queries of addresses and stores what it is to tell.
    Thrown ExpectQuery(const Slot& slot, bool ofPeer, Endpoint& stored) {
        const std::string name = ofPeer ? "getpeername" : "getsockname";
        const Endpoint endpoint = TakeEndpoint();
        const int failure = TakeFailure();
        Scripted::AddressAnswers answers =
            ofPeer ? Scripted::On::Getpeername() : Scripted::On::Getsockname();
        if (failure != 0) answers.Fails(failure);
        if (failure == 0) answers.Returns(endpoint.host, PortOf(endpoint));
        ExpectCall(name + "(" + slot.handle + ", 16)", failure);
        if (failure != 0)
            return Failing("VelNet::SocketImpl::Send() - FAIL. The ::" + name + " failed", failure);
        stored = endpoint;
        return {};
    }

    static void ExpectAddress(const char* what, const Endpoint& expected,
                              const VelNet::SocketAddress& address) {
        Expect<std::string>(what, expected.host, address.GetOctets().GetAddressString().c_str());
        Expect(what, expected.port, static_cast<int>(address.GetPort()));
    }

    void ExpectTransfer(const char* event, const Slot& slot, std::string_view bytes) {
        for (const LogLine& line : TransferLines(event, bytes, slot.local, slot.remote))
            ExpectLine(line);
    }

    // What closing leaves behind, whatever it is closed by.
    void ExpectClosed(Slot& slot) {
        const int scripted = slot.handle == NoHandle ? 0 : TakeFailure();
        if (scripted != 0) Scripted::On::Closesocket().Fails(scripted);
        const int failure = slot.handle == NoHandle ? 10038 : scripted;
        ExpectCall("closesocket(" + slot.handle + ")", failure);
        if (failure != 0)
            Failing("VelNet::SocketImpl::Close() - FAIL. Cannot close a socket", failure);
        ExpectLine(ConnectionLine("Disconnected", slot.local, slot.remote));
        slot.state = State::Closed;
        slot.handle = NoHandle;
        slot.local = slot.remote = Endpoint();
    }

    void Compare() {
        for (const Slot& slot : slots_)
            if (slot.socket) Expect("IsValid", slot.IsValid(), slot.socket->IsValid());
        Expect("the system calls", calls_, Scripted::TranscriptWithout({"LogMessage"}));
        calls_.clear();
        Scripted::ClearTranscript();
    }

    void CompareRecords() const {
        Log log;
        for (const Scripted::LoggedMessage& message : Scripted::LoggedMessages())
            log.emplace_back(message.category, message.text);
        Expect("the records", log_, log);
    }

    Input input_;
    std::array<Slot, 4> slots_;
    Scripted::Lines calls_;
    Log log_;
    std::set<std::string> off_;
    int handles_ = 0;
};

}  // namespace Fuzz
