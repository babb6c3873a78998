// The state of the socket layer while it is up.
#pragma once

#include "VelBase/InterfaceHolder.h"
#include "VelLog/Initializer.h"
#include "VelLog/Router.h"
#include "VelRegistry/Initializer.h"
#include "VelSynch/Initializer.h"

#include <atomic>

namespace VelNet {

// Members are constructed in this order and destroyed in reverse, so that the routers exist only
// while the logging library is up.
struct SocketLayerState {
    SocketLayerState();

    VelSynch::Initializer synchronization;
    VelRegistry::Initializer registry;
    VelLog::Initializer log;
    VelBase::InterfaceHolder<VelLog::Router> errorRouter;
    VelBase::InterfaceHolder<VelLog::Router> connectionTraceRouter;
    VelBase::InterfaceHolder<VelLog::Router> packetTraceRouter;
    VelBase::InterfaceHolder<VelLog::Router> verbosePacketTraceRouter;
    std::atomic<int> cachedIpVersion = 0;
};

// The state while the layer is up, otherwise null. Written under the start-up lock, but read
// without it: every user of the library keeps a SocketInitialization alive.
extern constinit SocketLayerState* g_socketLayer;

using RouterMember = VelBase::InterfaceHolder<VelLog::Router> SocketLayerState::*;

// Returns the router, or null if it is off or the layer is down. Every log site calls this before
// it formats anything.
inline VelLog::Router* EnabledRouter(RouterMember member) noexcept {
    const SocketLayerState* const layer = g_socketLayer;
    if (layer == nullptr) return nullptr;

    VelLog::Router* const router = (layer->*member).Get();
    return router->IsEnabled() ? router : nullptr;
}

// Asked before what the record needs is put together, on the way of every connection.
inline bool IsConnectionTraceEnabled() noexcept {
    return EnabledRouter(&SocketLayerState::connectionTraceRouter) != nullptr;
}

// The packet routers of the published state that are enabled, a bit each.
extern constinit std::atomic<unsigned int> g_enabledPacketTraces;

// Whether a transfer may have a record to write; whoever writes it asks the routers themselves.
// Asked on the path of every transfer, so it is one load and one decision for both routers.
inline bool IsAnyPacketTraceEnabled() noexcept {
    return g_enabledPacketTraces.load(std::memory_order_relaxed) != 0;
}

// Makes the state the one that the library uses.
void Publish(SocketLayerState& layer) noexcept;

// Called after the state is destroyed, when no router can be enabled any more.
void Unpublish() noexcept;

}  // namespace VelNet
