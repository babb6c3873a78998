// Everything whose layout is part of what clients are compiled against, in one module of its own:
// the shipped one's description of its types depends on what the optimizer left of them.
#include <VelBase/ExceptionImpl.h>
#include <VelBase/Export.h>
#include <VelBase/Message.h>
#include <VelBase/ReturnPtrI.h>
#include <VelBase/ReturnString.h>
#include <VelBase/ReturnWString.h>
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/LogSink.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/Address.h>
#include <VelNet/Exception.h>
#include <VelNet/Octets.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketError.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>
#include <VelSynch/ReferenceCountedImpl.h>

namespace Surface {

extern "C" VELSOCK_EXPORT void UseAll(
    VelBase::ExceptionImpl<VelBase::Message>&, VelBase::Message&,
    VelBase::ReturnPtrI<VelNet::Socket>&, VelBase::ReturnString&, VelBase::ReturnWString&,
    VelLog::FileSink&, VelLog::LogRecord&, VelLog::LogSink&, VelLog::StandardErrorSink&,
    VelNet::Address&, VelNet::Exception&, VelNet::Octets&, VelNet::OctetsCollection&,
    VelNet::Socket&, VelNet::SocketAddress&, VelNet::SocketAddressCache&, VelNet::SocketCollection&,
    VelNet::SocketInitialization&, VelNet::SocketXt&, VelSynch::ReferenceCountedImpl<int>&,
    VelNet::SOCKET_STATUS, VelNet::SOCKET_EVENT, VelNet::SOCKET_ERR, VelNet::SpecialAddressKind) {}

}  // namespace Surface
