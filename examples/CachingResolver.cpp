// Prints the address of each name. A name that comes again is answered by the cache.
//
//   CachingResolver NAME...
#include <VelBase/ReturnPtrI.h>
#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketInitialization.h>

#include <chrono>
#include <cstdio>
#include <new>

namespace {

using Clock = std::chrono::steady_clock;
using CacheOwner = VelBase::ReturnPtrI<VelNet::SocketAddressCache>;

CacheOwner NewCache() {
    CacheOwner cache(VelNet::CreateSocketAddressCache());
    if (!cache) throw std::bad_alloc();
    return cache;
}

// Failures are not remembered: a name that is unknown is looked up again the next time.
void Print(VelNet::SocketAddressCache& cache, const char* name) try {
    const auto begin = Clock::now();
    const VelNet::Octets address = cache.GetOctetsFromMachineName(name);
    const std::chrono::duration<double, std::micro> time = Clock::now() - begin;
    std::printf("%s %s (%.1f us)\n", name, address.GetAddressString().c_str(), time.count());
} catch (const VelNet::Exception& failure) {
    std::printf("%s has no address (code %d)\n", name, failure.GetErrorCode());
}

}  // namespace

int main(int count, char** words) try {
    const VelNet::SocketInitialization socketLayer;
    const CacheOwner cache = NewCache();
    for (int index = 1; index < count; ++index)
        Print(*cache, words[index]);
} catch (const VelNet::Exception& failure) {
    const auto text = VelBase::WideCharToUTF8(failure.GetMessage(), false);
    std::fprintf(stderr, "%s (code %d)\n", text.c_str(), failure.GetErrorCode());
    return 1;
}
