// Types, sizes and signatures that clients compile against. Most of this is checked by the
// compiler; the tests state what was checked.

#include <VelBase/ExceptionImpl.h>
#include <VelBase/Message.h>
#include <VelBase/ReferenceCounted.h>
#include <VelBase/ReturnPtrI.h>
#include <VelBase/ReturnString.h>
#include <VelBase/ReturnWString.h>
#include <VelNet/Exception.h>
#include <VelNet/Octets.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketInitialization.h>
#include <VelSynch/ReferenceCountedImpl.h>
#include <gtest/gtest.h>

#include <type_traits>

using VelBase::ReturnPtrI;
using VelBase::ReturnString;
using VelNet::Exception;
using VelNet::Octets;
using VelNet::OctetsCollection;
using VelNet::Socket;
using VelNet::SocketAddress;
using VelNet::SocketInitialization;

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
    static_assert(DerivesVirtually<Socket, VelBase::ReferenceCounted>);
    static_assert(DerivesVirtually<OctetsCollection, VelBase::ReferenceCounted>);
    static_assert(DerivesVirtually<VelSynch::ReferenceCountedImpl<int>, VelBase::ReferenceCounted>);
    static_assert(std::is_abstract_v<Socket> && std::is_abstract_v<OctetsCollection>);
    static_assert(std::has_virtual_destructor_v<Socket> &&
                  std::has_virtual_destructor_v<OctetsCollection>);
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
