// Types, sizes and signatures that clients compile against. Most of this is checked by the
// compiler; the tests state what was checked.

#include <VelBase/ExceptionImpl.h>
#include <VelBase/Message.h>
#include <VelBase/ReferenceCounted.h>
#include <VelBase/ReturnPtrI.h>
#include <VelBase/ReturnString.h>
#include <VelBase/ReturnWString.h>
#include <VelNet/Address.h>
#include <VelNet/Exception.h>
#include <VelNet/Octets.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>
#include <VelSynch/ReferenceCountedImpl.h>
#include <gtest/gtest.h>

#include <concepts>
#include <type_traits>
#include <utility>

using VelBase::ReturnPtrI;
using VelBase::ReturnString;
using VelNet::Address;
using VelNet::Exception;
using VelNet::Octets;
using VelNet::OctetsCollection;
using VelNet::Socket;
using VelNet::SocketAddress;
using VelNet::SocketAddressCache;
using VelNet::SocketCollection;
using VelNet::SocketInitialization;
using VelNet::SocketXt;

namespace {

template <class Derived, class Base>
concept DerivesVirtually = std::is_base_of_v<Base, Derived> && !requires(Base * base) {
    static_cast<Derived*>(base);
};

template <auto Member, class Signature>
constexpr bool Is = std::is_same_v<decltype(Member), Signature>;

}  // namespace

TEST(Signatures, ValuesAreOnePointerWideWithoutVirtualOperations) {
    static_assert(sizeof(Octets) == sizeof(void*) && !std::is_polymorphic_v<Octets>);
    static_assert(sizeof(SocketAddress) == sizeof(void*) && !std::is_polymorphic_v<SocketAddress>);
    static_assert(sizeof(Address) == sizeof(void*) && !std::is_polymorphic_v<Address>);
    static_assert(std::is_empty_v<SocketInitialization>);
    static_assert(!std::is_copy_constructible_v<SocketInitialization>);
    static_assert(std::is_same_v<decltype(std::declval<SocketInitialization&>() =
                                              std::declval<const SocketInitialization&>()),
                                 SocketInitialization&>);
    SUCCEED();
}

TEST(Signatures, InterfacesHaveNoDataAndDeriveVirtuallyFromReferenceCounted) {
    static_assert(sizeof(VelBase::ReferenceCounted) == sizeof(void*));
    static_assert(sizeof(Socket) == sizeof(void*));
    static_assert(sizeof(OctetsCollection) == sizeof(void*));
    static_assert(sizeof(SocketAddressCache) == sizeof(void*));
    static_assert(sizeof(SocketXt) == sizeof(void*));
    static_assert(DerivesVirtually<Socket, VelBase::ReferenceCounted>);
    static_assert(DerivesVirtually<OctetsCollection, VelBase::ReferenceCounted>);
    static_assert(DerivesVirtually<SocketAddressCache, VelBase::ReferenceCounted>);
    static_assert(std::is_convertible_v<SocketXt*, Socket*> && !DerivesVirtually<SocketXt, Socket>);
    static_assert(DerivesVirtually<VelSynch::ReferenceCountedImpl<int>, VelBase::ReferenceCounted>);
    static_assert(std::is_abstract_v<Socket> && std::is_abstract_v<OctetsCollection>);
    static_assert(std::is_abstract_v<SocketAddressCache> && std::is_abstract_v<SocketXt>);
    static_assert(std::has_virtual_destructor_v<Socket> &&
                  std::has_virtual_destructor_v<OctetsCollection>);
    static_assert(std::has_virtual_destructor_v<SocketAddressCache> &&
                  std::has_virtual_destructor_v<SocketXt>);
    SUCCEED();
}

TEST(Signatures, ExceptionIsItsBaseAndItsInlineText) {
    static_assert(std::is_convertible_v<Exception*, VelBase::Message*>);
    static_assert(!std::is_polymorphic_v<VelBase::Message> && std::is_polymorphic_v<Exception>);
    static_assert(!DerivesVirtually<Exception, VelBase::Message>);
    static_assert(sizeof(Exception) == sizeof(void*) + sizeof(VelBase::Message) + 3000 * 2 + 4 + 4);
    static_assert(
        std::is_same_v<decltype(std::declval<Exception&>() = std::declval<const Exception&>()),
                       Exception&>);
    static_assert(Is<&Exception::GetSocketError, VelNet::SOCKET_ERR (*)(int) noexcept>);
    static_assert(Is<&Exception::GetErrorString, const unsigned short* (*)(int) noexcept>);
    static_assert(std::is_same_v<std::underlying_type_t<VelNet::SOCKET_ERR>, int>);
    static_assert(std::is_base_of_v<VelBase::Message, VelBase::ExceptionImpl<VelBase::Message>>);
    static_assert(std::is_same_v<decltype(VelBase::MESSAGE_DOMAIN_UNKNOWN), const unsigned short>);
    SUCCEED();
}

TEST(Signatures, SocketOperationsAreAsClientsCallThem) {
    static_assert(Is<&Socket::IsSameSocket, bool (Socket::*)(const Socket&) const>);
    static_assert(Is<&Socket::SetNonBlocking, bool (Socket::*)()>);
    static_assert(Is<&Socket::IsValid, bool (Socket::*)() const>);
    static_assert(Is<&Socket::Bind, void (Socket::*)(Octets, unsigned short)>);
    static_assert(Is<&Socket::Listen, int (Socket::*)()>);
    static_assert(Is<&Socket::Connect, void (Socket::*)(Octets, unsigned short)>);
    static_assert(Is<&Socket::Accept, ReturnPtrI<Socket> (Socket::*)(SocketAddress&)>);
    static_assert(Is<&Socket::SetReceiveTimeout, void (Socket::*)(unsigned int)>);
    static_assert(Is<&Socket::SetSendTimeout, void (Socket::*)(unsigned int)>);
    static_assert(Is<&Socket::SetReuseAddress, void (Socket::*)()>);
    static_assert(Is<&Socket::Close, void (Socket::*)()>);
    static_assert(Is<&Socket::Receive, int (Socket::*)(char*, int)>);
    static_assert(Is<&Socket::Send, int (Socket::*)(const char*, int)>);
    static_assert(Is<&Socket::IsDataAvailable, bool (Socket::*)() const>);
    static_assert(Is<&Socket::GetLocalAddress, SocketAddress (Socket::*)() const>);
    static_assert(Is<&Socket::GetRemoteAddress, SocketAddress (Socket::*)() const>);
    static_assert(Is<&Socket::GetStatus, int (Socket::*)() const>);
    static_assert(Is<&VelNet::CreateSocket,
                     ReturnPtrI<Socket> (*)(Socket::SOCKET_TYPE, Socket::SOCKET_PROTOCOL)>);
    SUCCEED();
}

TEST(Signatures, SocketEnumerationsHaveTheirValuesAndTakeAnyOther) {
    static_assert(Socket::SOCKET_STREAM == 0 && Socket::SOCKET_DATAGRAM == 1);
    static_assert(Socket::PROTOCOL_TCP == 0 && Socket::PROTOCOL_UDP == 1);
    static_assert(std::is_same_v<std::underlying_type_t<Socket::SOCKET_TYPE>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<Socket::SOCKET_PROTOCOL>, int>);
    static_assert(static_cast<int>(static_cast<Socket::SOCKET_TYPE>(-7)) == -7);
    static_assert(VelNet::STATUS_NONE == 0 && VelNet::STATUS_LISTENING == 1 &&
                  VelNet::STATUS_DATA_PENDING == 2 && VelNet::STATUS_IDLE == 3);
    SUCCEED();
}

TEST(Signatures, AddressOperationsAreAsClientsCallThem) {
    static_assert(Is<&SocketAddress::GetOctetsFromMachineName,
                     ReturnPtrI<OctetsCollection> (*)(const char*)>);
    static_assert(Is<&SocketAddress::GetMachineNameFromOctets, ReturnString (*)(Octets)>);
    static_assert(Is<&SocketAddress::ConvertDottedStringToOctets, Octets (*)(const char*)>);
    static_assert(Is<&SocketAddress::GetLocalMachineName, ReturnString (*)()>);
    static_assert(Is<&SocketAddress::GetLocalMachineDomain, ReturnString (*)()>);
    static_assert(
        Is<&SocketAddress::GetLocalMachineDomainNameServer, ReturnPtrI<OctetsCollection> (*)()>);
    static_assert(
        std::is_same_v<decltype(std::declval<const SocketAddress&>().GetPort()), unsigned short>);
    static_assert(
        std::is_same_v<decltype(std::declval<const SocketAddress&>().GetOctets()), Octets>);
    static_assert(std::is_constructible_v<SocketAddress, Octets, unsigned int>);
    static_assert(
        Is<&OctetsCollection::AddCollection, void (OctetsCollection::*)(const OctetsCollection&)>);
    static_assert(Is<&OctetsCollection::Add, void (OctetsCollection::*)(Octets)>);
    static_assert(Is<&OctetsCollection::GetCount, unsigned int (OctetsCollection::*)() const>);
    static_assert(
        Is<&OctetsCollection::GetOctets, Octets (OctetsCollection::*)(unsigned int) const>);
    static_assert(Is<&VelNet::CreateOctetsCollection, OctetsCollection* (*)()>);
    SUCCEED();
}

TEST(Signatures, NamedAddressOperationsAreAsClientsCallThem) {
    static_assert(std::is_default_constructible_v<Address>);
    static_assert(std::is_constructible_v<Address, Octets, unsigned short>);
    static_assert(std::is_constructible_v<Address, const char*, unsigned short>);
    static_assert(std::is_constructible_v<Address, Address::SpecialAddress, unsigned short>);
    static_assert(std::is_copy_constructible_v<Address>);
    static_assert(Is<&Address::operator=, const Address& (Address::*)(const Address&)>);
    static_assert(Is<&Address::operator==, bool (Address::*)(const Address&) const>);
    static_assert(Is<&Address::operator!=, bool (Address::*)(const Address&) const>);
    static_assert(Is<&Address::GetMachineName, ReturnString (Address::*)() const>);
    static_assert(Is<&Address::GetIpAddress, ReturnString (Address::*)() const>);
    static_assert(Is<&Address::GetOctets, Octets (Address::*)() const>);
    static_assert(
        std::is_same_v<decltype(std::declval<const Address&>().GetPort()), unsigned short>);
    static_assert(std::is_same_v<decltype(std::declval<const Address&>().IsInitialized()), bool>);
    SUCCEED();
}

TEST(Signatures, SpecialAddressesHaveTheirValuesAndTakeAnyOther) {
    static_assert(Address::LOOPBACK == 0 && Address::ANY == 1 && Address::THIS_MACHINE == 2);
    static_assert(std::is_same_v<std::underlying_type_t<Address::SpecialAddress>, int>);
    static_assert(static_cast<int>(static_cast<Address::SpecialAddress>(-7)) == -7);
    static_assert(VelNet::SPECIAL_ANY == 1 && VelNet::SPECIAL_LOOPBACK == 2 &&
                  VelNet::SPECIAL_THIS_MACHINE == 3 && VelNet::SPECIAL_BROADCAST == 4);
    static_assert(std::is_same_v<std::underlying_type_t<VelNet::SpecialAddressKind>, int>);
    SUCCEED();
}

namespace {

// What the interface itself offers to whoever implements it.
class Implemented : public SocketCollection {
public:
    void Add(Socket*, int) override {}
    void Remove(Socket*, int) override {}
    unsigned int GetCount() const override { return 0; }
    ReturnPtrI<Socket> GetSocket(unsigned int) const override { return {}; }
    int GetEvent(unsigned int) const override { return 0; }
    unsigned int Find(Socket*, int) const override { return 0; }
    SocketCollection* Select(unsigned int) override { return nullptr; }
    void Destroy() override {}
};

}  // namespace

TEST(Signatures, SocketCollectionHasNeitherDataNorCountNorDestructor) {
    static_assert(sizeof(SocketCollection) == sizeof(void*));
    static_assert(std::is_abstract_v<SocketCollection>);
    static_assert(!std::is_base_of_v<VelBase::ReferenceCounted, SocketCollection>);
    static_assert(!std::has_virtual_destructor_v<SocketCollection>);
    static_assert(std::is_trivially_destructible_v<SocketCollection>);
    static_assert(std::is_default_constructible_v<Implemented>);
    static_assert(std::is_copy_constructible_v<Implemented>);
    static_assert(std::is_nothrow_move_constructible_v<Implemented>);
    static_assert(std::is_same_v<decltype(std::declval<SocketCollection&>() =
                                              std::declval<const SocketCollection&>()),
                                 SocketCollection&>);
    static_assert(std::is_same_v<decltype(std::declval<SocketCollection&>() =
                                              std::declval<SocketCollection>()),
                                 SocketCollection&>);
    SUCCEED();
}

TEST(Signatures, CollectionsCanBeCopiedAndMovedByWhoImplementsThem) {
    Implemented one;
    const Implemented copy(one);
    Implemented moved(std::move(one));
    SocketCollection& interface = moved;
    EXPECT_EQ(&(interface = copy), &interface);
    EXPECT_EQ(&(interface = Implemented()), &interface);
}

TEST(Signatures, SocketCollectionOperationsAreAsClientsCallThem) {
    static_assert(Is<&SocketCollection::Add, void (SocketCollection::*)(Socket*, int)>);
    static_assert(Is<&SocketCollection::Remove, void (SocketCollection::*)(Socket*, int)>);
    static_assert(Is<&SocketCollection::GetCount, unsigned int (SocketCollection::*)() const>);
    static_assert(Is<&SocketCollection::GetSocket,
                     ReturnPtrI<Socket> (SocketCollection::*)(unsigned int) const>);
    static_assert(Is<&SocketCollection::GetEvent, int (SocketCollection::*)(unsigned int) const>);
    static_assert(
        Is<&SocketCollection::Find, unsigned int (SocketCollection::*)(Socket*, int) const>);
    static_assert(
        Is<&SocketCollection::Select, SocketCollection* (SocketCollection::*)(unsigned int)>);
    static_assert(Is<&SocketCollection::Destroy, void (SocketCollection::*)()>);
    static_assert(Is<&VelNet::CreateSocketCollection, SocketCollection* (*)()>);
    static_assert(VelNet::EVENT_ACCEPT == 0 && VelNet::EVENT_READ == 1 &&
                  VelNet::EVENT_WRITE == 2 && VelNet::EVENT_CLOSE == 3);
    static_assert(std::is_same_v<std::underlying_type_t<VelNet::SOCKET_EVENT>, int>);
    SUCCEED();
}

TEST(Signatures, SocketAddressCacheOperationsAreAsClientsCallThem) {
    static_assert(Is<&SocketAddressCache::GetOctetsFromMachineName,
                     Octets (SocketAddressCache::*)(const char*)>);
    static_assert(Is<&SocketAddressCache::GetMachineNameFromOctets,
                     ReturnString (SocketAddressCache::*)(Octets)>);
    static_assert(Is<&VelNet::CreateSocketAddressCache, SocketAddressCache* (*)()>);
    static_assert(std::is_same_v<decltype(std::declval<SocketAddressCache&>() =
                                              std::declval<const SocketAddressCache&>()),
                                 SocketAddressCache&>);
    SUCCEED();
}

TEST(Signatures, ExtendedSocketOperationsAreAsClientsCallThem) {
    using Special = VelNet::SpecialAddressKind;
    using BySpecial = void (SocketXt::*)(Special, const char*);
    using ByTexts = void (SocketXt::*)(const char*, const char*);
    static_assert(requires {
        static_cast<BySpecial>(&SocketXt::Bind);
        static_cast<ByTexts>(&SocketXt::Bind);
        static_cast<BySpecial>(&SocketXt::Connect);
        static_cast<ByTexts>(&SocketXt::Connect);
        static_cast<void (SocketXt::*)(Special, int)>(&SocketXt::SetSocketForMulticast);
        static_cast<void (SocketXt::*)(const char*, int)>(&SocketXt::SetSocketForMulticast);
        static_cast<int (SocketXt::*)(const char*, int, Special, const char*)>(&SocketXt::SendTo);
        static_cast<int (SocketXt::*)(const char*, int, const char*, const char*)>(
            &SocketXt::SendTo);
        static_cast<ReturnPtrI<SocketXt>& (SocketXt::*)(ReturnPtrI<SocketXt>&, ReturnString&,
                                                        ReturnString&)>(&SocketXt::Accept);
    });
    static_assert(Is<&SocketXt::GetAddressFamily, SocketXt::ADDR_FAMILY (SocketXt::*)() const>);
    static_assert(Is<&SocketXt::SetSocketForBroadcast, void (SocketXt::*)()>);
    static_assert(
        Is<&SocketXt::RecvFrom, int (SocketXt::*)(char*, int, ReturnString&, ReturnString&)>);
    static_assert(Is<&SocketXt::GetHandle, unsigned long long (SocketXt::*)() const>);
    static_assert(Is<&SocketXt::GetSpecialAddress,
                     ReturnString (SocketXt::*)(Special, SocketXt::ADDR_FAMILY) const>);
    static_assert(Is<&SocketXt::GetIpVersion, SocketXt::ADDR_FAMILY (*)()>);
    static_assert(requires {
        static_cast<ReturnPtrI<SocketXt> (*)(Socket::SOCKET_TYPE, Socket::SOCKET_PROTOCOL)>(
            &VelNet::CreateSocketXt);
        static_cast<ReturnPtrI<SocketXt> (*)(Socket::SOCKET_TYPE, Socket::SOCKET_PROTOCOL,
                                             SocketXt::ADDR_FAMILY)>(&VelNet::CreateSocketXt);
    });
    SUCCEED();
}

// What the overloads of the extended socket would hide.
TEST(Signatures, ExtendedSocketShowsTheSocketsOwnOperationsToo) {
    static_assert(requires(SocketXt & socket, SocketAddress & remote) {
        socket.Bind(Octets(), 0);
        socket.Connect(Octets(), 0);
        { socket.Accept(remote) } -> std::same_as<ReturnPtrI<Socket>>;
    });
    SUCCEED();
}

TEST(Signatures, ExtendedSocketsEnumerationsAndRoomsHaveTheirValues) {
    static_assert(SocketXt::FAMILY_UNKNOWN == 0 && SocketXt::FAMILY_IPV4 == 1 &&
                  SocketXt::FAMILY_IPV6 == 2);
    static_assert(std::is_same_v<std::underlying_type_t<SocketXt::ADDR_FAMILY>, int>);
    static_assert(SocketXt::MAXHOST == 1025 && SocketXt::MAXPORT == 32);
    static_assert(std::is_same_v<decltype(SocketXt::MAXHOST), const unsigned int>);
    static_assert(std::is_same_v<decltype(SocketXt::MAXPORT), const unsigned int>);
    static_assert(
        std::is_same_v<decltype(std::declval<SocketXt&>() = std::declval<SocketXt>()), SocketXt&>);
    static_assert(
        std::is_same_v<decltype(std::declval<SocketXt&>() = std::declval<const SocketXt&>()),
                       SocketXt&>);
    SUCCEED();
}

TEST(Signatures, CountIsAPlainIntReadWithoutAVirtualCall) {
    using Counted = VelSynch::ReferenceCountedImpl<int>;
    static_assert(
        std::is_same_v<decltype(std::declval<const Counted&>().GetReferenceCount()), const int&>);
    static_assert(std::is_convertible_v<Counted*, VelBase::ReferenceCounted*>);
    SUCCEED();
}

TEST(Signatures, ReturnedPointersMoveAndDoNotCopy) {
    static_assert(!std::is_copy_constructible_v<ReturnPtrI<Socket>>);
    static_assert(std::is_nothrow_move_constructible_v<ReturnPtrI<Socket>>);
    static_assert(std::is_copy_constructible_v<ReturnString>);
    static_assert(std::is_same_v<decltype(std::declval<const VelBase::ReturnWString&>().c_str()),
                                 const unsigned short*>);
    SUCCEED();
}
