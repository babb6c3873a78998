#include "names/ResolverErrors.h"

#include "errors/Errors.h"

namespace Posix {

namespace {

// What is special to no call is, to who asks for a name, a resolver that failed.
int WinsockFromResolversErrno() noexcept {
    const int error = WinsockFromErrno(errno);
    return error == WinsockError::Invalid ? WinsockError::NoRecovery : error;
}

}  // namespace

int WinsockFromNameError(int error) noexcept {
    switch (error) {
        case 0:
            return 0;
        case EAI_NONAME:
        case EAI_ADDRFAMILY:
            return WinsockError::HostNotFound;
        case EAI_NODATA:
            return WinsockError::NoData;
        case EAI_AGAIN:
            return WinsockError::TryAgain;
        case EAI_FAMILY:
            return WinsockError::AddressFamilyNotSupported;
        case EAI_SERVICE:
            return WinsockError::ServiceNotFound;
        case EAI_SOCKTYPE:
            return WinsockError::SocketTypeNotSupported;
        case EAI_BADFLAGS:
            return WinsockError::Invalid;
        case EAI_MEMORY:
            return WinsockError::NotEnoughMemory;
        case EAI_OVERFLOW:
            return WinsockError::InsufficientBuffer;
        case EAI_SYSTEM:
            return WinsockFromResolversErrno();
        default:
            return WinsockError::NoRecovery;
    }
}

}  // namespace Posix
