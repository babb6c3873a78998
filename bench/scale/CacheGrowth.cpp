// What a cache of many hosts takes to find the one that it learnt last.

#include "ScaledRows.h"

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketAddressCache.h>

namespace Bench {
namespace {

// Dotted, so that no resolver has to be asked.
std::string HostName(int number) {
    return "10.0." + std::to_string(number / 256) + "." + std::to_string(number % 256);
}

class FindNewestHost : public ScaledScene {
public:
    explicit FindNewestHost(int count) : newest_(HostName(count - 1)) {
        for (int number = 0; number < count; ++number)
            cache_->GetOctetsFromMachineName(HostName(number).c_str());
    }

    int Do() const {
        return cache_->GetOctetsFromMachineName(newest_.c_str()).GetOctet1() == 10 ? 1 : 0;
    }

private:
    VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache_{VelNet::CreateSocketAddressCache()};
    std::string newest_;
};

}  // namespace

void AddCacheGrowth(Cases& cases) {
    AddGrowth<FindNewestHost>(cases, "cached-host", {1, 10, 100, 1'000, 10'000});
}

}  // namespace Bench
