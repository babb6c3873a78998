#include "Socket/SocketLayerState.h"

namespace VelNet {

constinit SocketLayerState* g_socketLayer = nullptr;
constinit std::atomic<unsigned int> g_enabledPacketTraces = 0;

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

void Publish(SocketLayerState& layer) noexcept {
    g_socketLayer = &layer;
    layer.packetTraceRouter->MirrorIn(g_enabledPacketTraces, 1U << 0);
    layer.verbosePacketTraceRouter->MirrorIn(g_enabledPacketTraces, 1U << 1);
}

void Unpublish() noexcept {
    g_socketLayer = nullptr;
    g_enabledPacketTraces = 0;
}

}  // namespace VelNet
