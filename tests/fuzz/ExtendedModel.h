// What four extended sockets over the scripted platform remember, and how they come to addresses:
// the start-up around an operation, the lists of addresses and the attempts with each.
#pragma once

#include <VelNet/SocketXt.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ScriptedModel.h"
#include "ScriptedScene.h"

namespace Fuzz {

class ExtendedModel : public ScriptedModel {
public:
    struct Slot {
        VelBase::ReturnPtrI<VelNet::SocketXt> socket;
        State state = State::Closed;
        std::string handle = NoHandle;
        bool isGivenBack = false;  // to the system, by a closing that failed
        int type = 0;              // the system's numbers
        int protocol = 0;
        VelNet::SocketXt::ADDR_FAMILY family = VelNet::SocketXt::FAMILY_UNKNOWN;
        TextEnd local, remote;

        // A system that does something for a closed socket, as a script may tell, gives it no
        // handle.
        bool IsOpen() const { return state != State::Closed && handle != NoHandle; }
        VelNet::SOCKET_HANDLE Number() const {
            return handle == NoHandle ? ~0ULL : std::stoull(handle);
        }
        std::string Kind() const { return std::to_string(type) + ", " + std::to_string(protocol); }
    };

    using ScriptedModel::ScriptedModel;

    void Compare() {
        ScriptedModel::Compare();
        for (const Slot& slot : slots_)
            if (slot.socket) CompareSocket(slot);
    }

    // Their lists are nobody's any more.
    void ForgetLostLists() const {
        for (int list = 1; list <= lostLists_; ++list)
            Scripted::ForgetInLedger("address list " + std::to_string(list));
    }

protected:
    // Of an operation, as its failures tell it.
    struct Label {
        std::string function;  // "SocketXtImpl::Bind"
        std::string description;
    };

    // A host and a port as a caller gives them; the host perhaps by its kind.
    struct Place {
        VelNet::SpecialAddressKind kind{};  // 0: by its text
        TextEnd texts;
    };

    // What the system is asked with each address of a list: what stands before and behind the
    // address, and the queue of its answers.
    struct Attempt {
        std::string call, end;
        Scripted::NumberAnswers answers;
    };

    // What has become of a list of addresses.
    struct Walk {
        enum Outcome { Unresolved, Empty, Refused, Accepted } outcome = Empty;
        int error = 0;
        int family = 0;  // of the address accepted
    };

    static constexpr char ThisComputer[] = "SCRIPTED-HOST";

    static std::string SpecialHost(VelNet::SpecialAddressKind kind,
                                   VelNet::SocketXt::ADDR_FAMILY family) {
        static constexpr std::array Ipv4 = {"",           "0.0.0.0",         "127.0.0.1",
                                            ThisComputer, "255.255.255.255", ""};
        static constexpr std::array Ipv6 = {"", "::0", "::1", ThisComputer, "ff02::1", ""};
        const auto index = static_cast<std::size_t>(kind);
        if (family == VelNet::SocketXt::FAMILY_IPV4) return Ipv4.at(index);
        if (family == VelNet::SocketXt::FAMILY_IPV6) return Ipv6.at(index);
        return kind == VelNet::SPECIAL_THIS_MACHINE ? ThisComputer : "";
    }

    // Most are like no other, so that no two can be mistaken for each other; some are the input's.
    std::string TakeText() {
        const unsigned int kind = input_.Below(8);
        if (kind == 7) return {};
        return kind == 6 ? TakeAscii() : "text-" + std::to_string(++texts_);
    }

    // How others are converted is another target's affair. A port has room for so much.
    std::string TakeAscii() {
        std::string text;
        for (const char byte : input_.Line().substr(0, VelNet::SocketXt::MAXPORT - 1))
            if ((byte & 0x7F) != 0) text += static_cast<char>(byte & 0x7F);
        return text;
    }

    Place TakePlace(const Slot& slot) {
        Place place;
        place.kind = static_cast<VelNet::SpecialAddressKind>(input_.Below(6));
        if (place.kind == VelNet::SPECIAL_THIS_MACHINE) ExpectCall("ComputerName()");
        const bool byKind = place.kind != 0;
        place.texts.host = byKind ? SpecialHost(place.kind, slot.family) : TakeText();
        place.texts.port = TakeText();
        return place;
    }

    // Now and then Winsock does not start; that is thrown and not logged.
    Thrown ExpectStartUp(const Label& label) {
        const int failure = input_.Below(8) == 7 ? TakeErrorNumber(input_) : 0;
        ExpectCall("WSAStartup(0x0101)");
        if (failure == 0) return {};
        Scripted::On::WSAStartup().Fails(failure);
        const std::string number = std::to_string(static_cast<unsigned int>(failure));
        ExpectCall("ErrorDescription(" + number + ")");
        return {Support::Widen("VelNet::" + label.function +
                               " ::WSAStartup failed\nDescription of " + number + "."),
                failure};
    }

    Thrown Failing(const Label& label, const std::string& call, const TextEnd& texts, int error) {
        return ScriptedModel::Failing(ExtendedHead(label.function, label.description, call, texts),
                                      error);
    }

    // An address, and its text in the transcript.
    std::pair<Scripted::ListedAddress, std::string> TakeAddress() {
        const std::string digit = std::to_string(1 + input_.Below(9));
        const auto port = static_cast<unsigned short>(input_.Byte());
        switch (input_.Below(3)) {
            case 0:
                return {{Winsock::FamilyIpv4, "10.0.0." + digit, port},
                        "10.0.0." + digit + ":" + std::to_string(port) + ", 16"};
            case 1:
                return {{Winsock::FamilyIpv6, "2001:DB8::" + digit, port},
                        "[2001:DB8:0:0:0:0:0:" + digit + "]:" + std::to_string(port) + ", 28"};
            default:
                return {{99, "odd"}, "0x6F6464, 3"};
        }
    }

    std::vector<std::pair<Scripted::ListedAddress, std::string>> TakeAddresses() {
        std::vector<std::pair<Scripted::ListedAddress, std::string>> addresses;
        for (unsigned int count = input_.Below(4); count > 0; --count)
            addresses.push_back(TakeAddress());
        return addresses;
    }

    // Scripts a list, or the failure that it returns.
    int ScriptList(const std::vector<std::pair<Scripted::ListedAddress, std::string>>& addresses) {
        const int failure = input_.Below(4) == 3 ? TakeErrorNumber(input_) : 0;
        std::vector<Scripted::ListedAddress> entries;
        for (const auto& [entry, text] : addresses)
            entries.push_back(entry);
        if (failure != 0)
            Scripted::On::Getaddrinfo().FailsReturning(8, failure);
        else if (entries.empty())
            Scripted::On::Getaddrinfo().ReturnsEmpty();
        else
            Scripted::On::Getaddrinfo().Returns(entries);
        return failure;
    }

    // Resolves and tries one address after the other, until one is accepted.
    Walk ExpectWalk(const std::string& question, const Attempt& attempt) {
        const auto addresses = TakeAddresses();
        const int unresolved = ScriptList(addresses);
        ExpectCall("getaddrinfo(" + question + ")", unresolved);
        if (unresolved != 0) return {Walk::Unresolved, unresolved, 0};
        Walk walk;
        for (const auto& [entry, text] : addresses) {
            walk = {Walk::Accepted, TakeFailure(), entry.family};
            if (walk.error != 0) walk.outcome = Walk::Refused;
            ExpectAttempt(attempt, entry, text, walk.error);
            if (walk.error == 0) break;
        }
        if (walk.outcome == Walk::Refused) ExpectCall("WSAGetLastError()");
        if (walk.outcome != Walk::Empty) ExpectCall(FreeingNextList());
        return walk;
    }

    std::string FreeingNextList() const {
        return "freeaddrinfo(" + std::to_string(lostLists_ + 1) + ")";
    }

    static std::string Question(const TextEnd& place, const Slot& slot) {
        return Quoted(place.host) + ", " + Quoted(place.port) + ", {0, 0, " + slot.Kind() + "}";
    }

    // Whose texts getnameinfo is asked for.
    struct Peer {
        std::string address;  // its bytes
        std::string text;     // in the transcript
        TextEnd texts;        // as they are told
    };

    Peer TakePeer() {
        auto [entry, text] = TakeAddress();
        while (entry.family == 99)
            std::tie(entry, text) = TakeAddress();
        return {entry.bytes, text.substr(0, text.rfind(',')), {TakeText(), TakeText()}};
    }

    // Asks for the peer's texts, which replace the told ones. A failure is logged and not thrown.
    bool ExpectNames(const Label& label, const Peer& peer, int flags, TextEnd& told) {
        const int failure = TakeFailure();
        if (failure != 0) Scripted::On::Getnameinfo().FailsReturning(8, failure);
        if (failure == 0) Scripted::On::Getnameinfo().Returns(peer.texts.host, peer.texts.port);
        ExpectCall("getnameinfo(" + peer.text + ", 128, 1025, 32, " + std::to_string(flags) + ")",
                   failure);
        if (failure != 0) Failing(label, "::getnameinfo", {"no-ip", "no-port"}, failure);
        if (failure == 0) told = peer.texts;
        return failure == 0;
    }

    // Closing; one that fails keeps handle and state, though the system has taken the handle back.
    Thrown ExpectClosed(Slot& slot) {
        const bool isKnown = slot.handle != NoHandle && !slot.isGivenBack;
        const int scripted = isKnown ? TakeFailure() : 0;
        if (scripted != 0) Scripted::On::Closesocket().Fails(scripted);
        const int failure = isKnown ? scripted : 10038;
        ExpectCall("closesocket(" + slot.handle + ")", failure);
        slot.isGivenBack = true;
        if (failure != 0)
            return Failing({"SocketXtImpl::Close", "cannot close a socket"}, "::getaddrinfo",
                           slot.local, failure);
        slot.handle = NoHandle;
        slot.state = State::Closed;
        ExpectLine(ConnectionLine("Disconnected", slot.local, slot.remote));
        return {};
    }

    Thrown FailingIf(int error, const Label& label, const std::string& call, const TextEnd& texts) {
        return error != 0 ? Failing(label, call, texts, error) : Thrown();
    }

    void LoseList() { ++lostLists_; }

    std::array<Slot, 4> slots_;

private:
    static void CompareSocket(const Slot& slot) {
        Expect("IsValid", slot.IsOpen(), slot.socket->IsValid());
        Expect("GetHandle", slot.Number(), slot.socket->GetHandle());
        Expect("GetAddressFamily", slot.family, slot.socket->GetAddressFamily());
        CompareState(*slot.socket, slot.state);
    }

    void ExpectAttempt(const Attempt& attempt, const Scripted::ListedAddress& entry,
                       const std::string& text, int error) {
        Scripted::NumberAnswers answers = attempt.answers;
        if (error != 0) answers.Fails(error);
        if (error == 0) answers.Passes();
        const bool isSocket = attempt.call == "socket(";
        ExpectCall(attempt.call + (isSocket ? std::to_string(entry.family) : text) + attempt.end);
    }

    int lostLists_ = 0;
    int texts_ = 0;
};

}  // namespace Fuzz
