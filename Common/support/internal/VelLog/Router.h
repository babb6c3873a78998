// A log router: the switch of a group of records, and the names under which they are written.
#pragma once

#include "VelBase/ReturnPtrI.h"
#include "VelSynch/LockStackCategory.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <atomic>

namespace VelLog {

// Reference counted. Any thread may set the flag at any time; a log site reads it before it formats
// anything.
class Router : public VelSynch::ReferenceCountedImpl<int> {
public:
    // The names are not copied and must outlive the router.
    Router(const char* name, const char* category) noexcept : name_(name), category_(category) {}

    const char* Name() const noexcept { return name_; }
    const char* Category() const noexcept { return category_; }

    // Any value but 0 means on.
    bool IsEnabled() const noexcept { return flag_.load(std::memory_order_relaxed) != 0; }
    void SetFlag(unsigned char flag) noexcept { flag_.store(flag, std::memory_order_relaxed); }

private:
    std::atomic<unsigned char> flag_ = 0;
    const char* name_;
    const char* category_;
};

// Creates a router, enabled while a sink is set and the host has switched this name and category
// on. The names must outlive it. The lock-stack category gives the router's lock its position in
// the product's order; this library's routers need none. Throws std::bad_alloc.
VelBase::ReturnPtrI<Router> CreateRouter(const char* name, const char* category,
                                         VelSynch::EnumOrrinLockStackCategory lockStackCategory);

}  // namespace VelLog
