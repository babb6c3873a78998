// The options and the queries of extended sockets over the scripted platform.
#pragma once

#include "ExtendedModel.h"

namespace Fuzz {

class ExtendedOptions : public ExtendedModel {
public:
    using ExtendedModel::ExtendedModel;

protected:
    // One of the socket's own options.
    template <class Call>
    void SetOption(const Slot& slot, const char* option, const std::string& value,
                   const Label& label, const std::string& call, const TextEnd& texts,
                   const Call& operation) {
        const int failure = TakeFailure();
        if (failure != 0) Scripted::On::Setsockopt().Fails(failure);
        ExpectCall("setsockopt(" + slot.handle + ", 0xFFFF, " + option + ", " + value + ", 4)",
                   failure);
        ExpectOutcome("an option", FailingIf(failure, label, call, texts), operation);
    }

    void SetReceiveTimeout(Slot& slot) {
        const int value = input_.Number();
        SetOption(slot, "0x1006", std::to_string(value),
                  {"SocketXtImpl::SetReceiveTimeout", "cannot set recv timeout"}, "::setsockopt",
                  slot.local,
                  [&] { slot.socket->SetReceiveTimeout(static_cast<unsigned int>(value)); });
    }
    void SetSendTimeout(Slot& slot) {
        const int value = input_.Number();
        SetOption(slot, "0x1005", std::to_string(value),
                  {"SocketXtImpl::SetSendTimeout", "cannot set send timeout"}, "::setsockopt",
                  slot.local,
                  [&] { slot.socket->SetSendTimeout(static_cast<unsigned int>(value)); });
    }
    void SetReuse(Slot& slot) {
        SetOption(slot, "0x4", "1", {"SocketXtImpl::SetReuseAddress", "cannot set reuse address"},
                  "::setsockopt", slot.local, [&] { slot.socket->SetReuseAddress(); });
    }
    void SetForBroadcast(Slot& slot) {
        SetOption(slot, "0x20", "1",
                  {"SocketXtImpl::SetSocketForBroadcast", "cannot set socket option for broadcast"},
                  "::setsockopt(SO_BROADCAST)", {}, [&] { slot.socket->SetSocketForBroadcast(); });
    }

    void SetForMulticast(Slot& slot) {
        const auto kind = static_cast<VelNet::SpecialAddressKind>(input_.Below(6));
        if (kind == VelNet::SPECIAL_THIS_MACHINE) ExpectCall("ComputerName()");
        const std::string group = kind != 0 ? SpecialHost(kind, slot.family) : TakeText();
        const int mode = static_cast<int>(input_.Below(3));
        const Thrown expected = ExpectMembership(slot, group, mode);
        ExpectOutcome("SetSocketForMulticast", expected, [&] {
            if (kind != 0)
                slot.socket->SetSocketForMulticast(kind, mode);
            else
                slot.socket->SetSocketForMulticast(group.c_str(), mode);
        });
    }

    // Every list stays open. Addresses of other families are passed over.
    Thrown ExpectMembership(const Slot& slot, const std::string& group, int mode) {
        const Label label = {"SocketXtImpl::SetSocketForMulticast",
                             "cannot set option for multicast"};
        const auto addresses = TakeAddresses();
        const int unresolved = ScriptList(addresses);
        ExpectCall("getaddrinfo(" + Quoted(group) + ", null, {0, 0, 2, 0})", unresolved);
        if (unresolved != 0) return Failing(label, "::getaddrinfo", {}, unresolved);
        if (!addresses.empty()) LoseList();
        int error = 0;
        for (const auto& [entry, text] : addresses) {
            if (entry.family == 99) continue;
            error = ExpectRequest(slot, entry, mode);
            if (error == 0) return {};
        }
        if (error == 0) return {};
        ExpectCall("WSAGetLastError()");
        const char* const call =
            mode == 0 ? "::setsockopt(IP_ADD_MEMBERSHIP)" : "::setsockopt(IP_DROP_MEMBERSHIP)";
        return Failing(label, call, {}, error);
    }

    // The address, which stands behind family and port, or flow information too, and no interface.
    int ExpectRequest(const Slot& slot, const Scripted::ListedAddress& entry, int mode) {
        const bool isIpv6 = entry.family == Winsock::FamilyIpv6;
        const std::string request = isIpv6 ? entry.bytes.substr(8, 16) + std::string(4, '\0')
                                           : entry.bytes.substr(4, 4) + std::string(4, '\0');
        const int size = isIpv6 ? 20 : 8;
        const int failure = TakeFailure();
        if (failure != 0) Scripted::On::Setsockopt().Fails(failure);
        if (failure == 0) Scripted::On::Setsockopt().Passes();
        ExpectCall("setsockopt(" + slot.handle + (isIpv6 ? ", 0x29, " : ", 0x0, ") +
                   std::array{"0xC", "0xD", "0x0"}.at(static_cast<std::size_t>(mode)) + ", " +
                   Scripted::HexBytes(request.data(), size) + ", " + std::to_string(size) + ")");
        return failure;
    }

    void SetNonBlocking(Slot& slot) { CheckNonBlocking(*slot.socket, slot.handle); }
    void IsDataAvailable(Slot& slot) { CheckAvailable(*slot.socket, slot.handle); }
    void GetStatus(Slot& slot) { CheckStatus(*slot.socket, slot.handle, slot.state); }

    void GetSpecialAddress(Slot& slot) {
        const auto kind = static_cast<VelNet::SpecialAddressKind>(input_.Below(6));
        const auto family = static_cast<VelNet::SocketXt::ADDR_FAMILY>(input_.Below(3));
        if (kind == VelNet::SPECIAL_THIS_MACHINE) ExpectCall("ComputerName()");
        Expect<std::string>("GetSpecialAddress", SpecialHost(kind, family),
                            slot.socket->GetSpecialAddress(kind, family).c_str());
    }

    // Which asks the system for nothing.
    void UseOctets(Slot& slot) {
        VelNet::Socket& socket = *slot.socket;
        const VelNet::Octets octets(10, 0, 0, 1);
        socket.Bind(octets, 80);
        socket.Connect(octets, 80);
        VelNet::SocketAddress remote(octets, 80);
        Expect("a socket by octets", false, static_cast<bool>(socket.Accept(remote)));
        Expect<int>("the peer's port", 80, remote.GetPort());
        Expect<int>("the local port", 0, socket.GetLocalAddress().GetPort());
        Expect<int>("the remote port", 0, socket.GetRemoteAddress().GetPort());
    }

    void CompareHandles(Slot& slot) {
        for (const Slot& other : slots_)
            if (other.socket)
                Expect("IsSameSocket", slot.handle == other.handle,
                       slot.socket->IsSameSocket(*other.socket.Get()));
    }
};

}  // namespace Fuzz
