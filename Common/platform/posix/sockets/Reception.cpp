#include "sockets/Reception.h"

namespace Posix {

constinit System::Lock receptionLock;

namespace {

// A table beside the socket table, likewise zeroed memory that takes up nothing until it is
// touched.
constinit Reception* receptions[SocketTableSize] = {};

std::atomic_ref<Reception*> ReceptionAt(int descriptor) noexcept {
    return std::atomic_ref<Reception*>(receptions[descriptor]);
}

}  // namespace

Reception* FindReception(const Socket& socket) noexcept {
    if (!socket.Has(Flag::Reception)) return nullptr;
    return ReceptionAt(socket.descriptor).load(std::memory_order_acquire);
}

Reception& ReceptionOf(const Socket& socket) {
    if (Reception* const known = FindReception(socket)) return *known;
    auto* const made = new Reception;
    ReceptionAt(socket.descriptor).store(made, std::memory_order_release);
    socket.entry->Set(Flag::Reception);
    return *made;
}

void CloseReception(int descriptor) noexcept {
    delete ReceptionAt(descriptor).exchange(nullptr, std::memory_order_acq_rel);
}

}  // namespace Posix
