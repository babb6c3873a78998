#include "names/ResolverErrors.h"

#include "errors/Errors.h"
#include "names/NameServers.h"
#include "names/SystemTable.h"

namespace Posix {

namespace {

// WinsockFromErrno returns Invalid for a number without an equivalent; for a name query that means
// that the resolver failed.
WinsockError WinsockFromResolversErrno() noexcept {
    const WinsockError error = WinsockFromErrno(errno);
    return error == WinsockError::Invalid ? WinsockError::NoRecovery : error;
}

// The resolver reports an unknown name also if it could not open or read /etc/hosts or
// /etc/services; errno then tells.
WinsockError UnlessShortage(WinsockError error) noexcept {
    return IsShortage(errno) ? WinsockFromResolversErrno() : error;
}

}  // namespace

WinsockError WinsockFromNameError(int error) noexcept {
    switch (error) {
        case 0:
            return WinsockError::None;
        case EAI_NONAME:
        case EAI_ADDRFAMILY:
            return UnlessShortage(WinsockError::HostNotFound);
        case EAI_NODATA:
            return WinsockError::NoData;
        case EAI_AGAIN:
            return WinsockError::TryAgain;
        case EAI_FAMILY:
            return WinsockError::AddressFamilyNotSupported;
        case EAI_SERVICE:
            return UnlessShortage(WinsockError::ServiceNotFound);
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

WinsockError WinsockFromLookUp(int resolverError, int systemError) noexcept {
    if (resolverError != NETDB_SUCCESS) return WinsockFromResolver(resolverError);
    return IsShortage(systemError) ? WinsockError::NoRecovery : WinsockError::HostNotFound;
}

bool IsShortage(int systemError) noexcept {
    switch (systemError) {
        case EMFILE:
        case ENFILE:
        case ENOMEM:
        case ENOBUFS:
        case EIO:
            return true;
        default:
            return false;
    }
}

bool MeansUntold(WinsockError error) noexcept {
    return error == WinsockError::HostNotFound || error == WinsockError::NoData ||
           error == WinsockError::TryAgain;
}

bool MeansUnknown(WinsockError error, const char* name) {
    if (error != WinsockError::TryAgain) return MeansUntold(error);
    return !IsInHostsFile(name) && !DoesNameServerFail(name);
}

}  // namespace Posix
