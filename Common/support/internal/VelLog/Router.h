// A log router: the switch and the name under which a group of records is written.
#pragma once

#include "VelBase/ReturnPtrI.h"
#include "VelSynch/LockStackCategory.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <atomic>

namespace VelLog {

// Counted like every interface. The flag may be switched by another thread at any time; a log site
// reads it before it formats anything.
class Router : public VelSynch::ReferenceCountedImpl<int> {
public:
    // The names are borrowed and outlive the router.
    Router(const char* name, const char* category) noexcept : name_(name), category_(category) {}

    const char* Name() const noexcept { return name_; }
    const char* Category() const noexcept { return category_; }

    // Any value but 0 means enabled.
    bool IsEnabled() const noexcept { return flag_.load(std::memory_order_relaxed) != 0; }
    void SetFlag(unsigned char flag) noexcept { flag_.store(flag, std::memory_order_relaxed); }

private:
    std::atomic<unsigned char> flag_ = 0;
    const char* name_;
    const char* category_;
};

// A new router, switched as the host last asked for this name and category, else off. The names
// must outlive it. The lock-stack category places the router's lock in the product's order; the
// routers of this library need none. Throws std::bad_alloc.
VelBase::ReturnPtrI<Router> CreateRouter(const char* name, const char* category,
                                         VelSynch::EnumOrrinLockStackCategory lockStackCategory);

}  // namespace VelLog
