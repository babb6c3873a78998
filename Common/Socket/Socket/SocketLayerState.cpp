#include "Socket/SocketLayerState.h"

#include "VelLog/LogControl.h"

namespace VelNet {

constinit SocketLayerState* g_socketLayer = nullptr;
constinit std::atomic<unsigned int> g_enabledPacketTraces = 0;

namespace {

VelBase::ReturnPtrI<VelLog::Router> CreateNetworkRouter(const char* category) {
    return VelLog::CreateRouter(VelLog::ROUTER_NETWORK, category,
                                VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

}  // namespace

SocketLayerState::SocketLayerState()
    : errorRouter(CreateNetworkRouter(VelLog::CATEGORY_ERROR)),
      connectionTraceRouter(CreateNetworkRouter(VelLog::CATEGORY_CONNECTION_TRACE)),
      packetTraceRouter(CreateNetworkRouter(VelLog::CATEGORY_PACKET_TRACE)),
      verbosePacketTraceRouter(CreateNetworkRouter(VelLog::CATEGORY_VERBOSE_PACKET_TRACE)) {}

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
