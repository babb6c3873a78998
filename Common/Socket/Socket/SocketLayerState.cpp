#include "Socket/SocketLayerState.h"

namespace VelNet {

constinit SocketLayerState* g_socketLayer = nullptr;

namespace {

VelBase::ReturnPtrI<VelLog::Router> CreateNetworkRouter(const char* category) {
    return VelLog::CreateRouter("Network", category, VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

}  // namespace

SocketLayerState::SocketLayerState()
    : errorRouter(CreateNetworkRouter("Error")),
      connectionTraceRouter(CreateNetworkRouter("Connection Trace")),
      packetTraceRouter(CreateNetworkRouter("Packet Trace")),
      verbosePacketTraceRouter(CreateNetworkRouter("Verbose Packet Trace")) {}

}  // namespace VelNet
