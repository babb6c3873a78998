// What the socket layer holds while it is up.
#pragma once

#include "VelBase/InterfaceHolder.h"
#include "VelLog/Initializer.h"
#include "VelLog/Router.h"
#include "VelRegistry/Initializer.h"
#include "VelSynch/Initializer.h"

#include <atomic>

namespace VelNet {

// Members are made in this order and ended in the reverse one: the routers while the logging
// library is up.
struct SocketLayerState {
    SocketLayerState();

    VelSynch::Initializer synchronisation;
    VelRegistry::Initializer registry;
    VelLog::Initializer log;
    VelBase::InterfaceHolder<VelLog::Router> errorRouter;
    VelBase::InterfaceHolder<VelLog::Router> connectionTraceRouter;
    VelBase::InterfaceHolder<VelLog::Router> packetTraceRouter;
    VelBase::InterfaceHolder<VelLog::Router> verbosePacketTraceRouter;
    std::atomic<int> cachedIpVersion = 0;
};

// The state while the layer is up, else null. Written under the start-up lock, read without:
// whoever uses the library keeps a SocketInitialization alive around that.
extern constinit SocketLayerState* g_socketLayer;

using RouterMember = VelBase::InterfaceHolder<VelLog::Router> SocketLayerState::*;

// The router, or null when it is switched off or the layer is down. Every log site goes through
// here before it formats anything.
inline VelLog::Router* EnabledRouter(RouterMember member) noexcept {
    const SocketLayerState* const layer = g_socketLayer;
    if (layer == nullptr) return nullptr;

    VelLog::Router* const router = (layer->*member).Get();
    return router->IsEnabled() ? router : nullptr;
}

// Whether a transfer has a record to write. Asked on the path of every transfer: one load of the
// state, two of flags, and one decision for both.
inline bool IsAnyPacketTraceEnabled() noexcept {
    const SocketLayerState* const layer = g_socketLayer;
    if (layer == nullptr) return false;

    const bool plain = layer->packetTraceRouter->IsEnabled();
    const bool withData = layer->verbosePacketTraceRouter->IsEnabled();
    return plain || withData;
}

}  // namespace VelNet
