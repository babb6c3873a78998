#include "faults/posix/Ledger.h"

#include <VelNet/Exception.h>
#include <VelNet/Socket.h>

namespace Faults {

namespace {

// Counted start-ups show in that sockets can be made.
bool IsLayerDown() {
    try {
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    } catch (const VelNet::Exception& failure) {
        return failure.GetErrorCode() == VelNet::SOCKET_ERR_NOTINITIALISED;
    }
    return false;
}

}  // namespace

Ledger Ledger::Now() {
    Ledger now;
    now.isLayerDown_ = IsLayerDown();
    now.process_ = Support::ProcessState::Now();
    now.heap_ = CurrentHeapUse();
    return now;
}

std::string Ledger::DifferenceTo(const Ledger& later, bool mayHaveMadeKey) const {
    return process_.DifferenceTo(later.process_, mayHaveMadeKey) +
           (isLayerDown_ != later.isLayerDown_ ? " start-ups" : "");
}

}  // namespace Faults
