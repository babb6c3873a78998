// What four classic sockets over the scripted platform remember, ask the system and record, as far
// as it does not depend on the operation.
#pragma once

#include "ScriptedModel.h"

namespace Fuzz {

class ClassicModel : public ScriptedModel {
public:
    struct Slot {
        VelBase::ReturnPtrI<VelNet::Socket> socket;
        State state = State::Closed;
        std::string handle = NoHandle;
        Endpoint local;
        Endpoint remote;

        // A system that connects a closed socket, as a script may tell, gives it no handle.
        bool IsValid() const { return state != State::Closed && handle != NoHandle; }
    };

    using ScriptedModel::ScriptedModel;

    void Compare() {
        ScriptedModel::Compare();
        for (const Slot& slot : slots_)
            if (slot.socket) CompareSocket(slot);
    }

protected:
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
        ExpectLines(TransferLines(event, bytes, slot.local, slot.remote));
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

    std::array<Slot, 4> slots_;

private:
    static void CompareSocket(const Slot& slot) {
        Expect("IsValid", slot.IsValid(), slot.socket->IsValid());
        CompareState(*slot.socket, slot.state);
    }
};

}  // namespace Fuzz
