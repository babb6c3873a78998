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
    void SetFlag(unsigned char flag) noexcept {
        flag_.store(flag);
        Mirror();
    }

    // From now on keeps one bit of the word equal to the flag, for a site that asks for several
    // routers at once. The word outlives the router.
    void MirrorIn(std::atomic<unsigned int>& word, unsigned int bit) noexcept {
        mirroredBit_ = bit;
        mirror_.store(&word);
        Mirror();
    }

private:
    // Looks again after each change: of two threads that switch at the same time, the one that
    // changes the bit last sees the other's flag.
    void Mirror() noexcept {
        std::atomic<unsigned int>* const word = mirror_.load();
        if (word == nullptr) return;
        bool enabled = false;
        do {
            enabled = flag_.load() != 0;
            enabled ? word->fetch_or(mirroredBit_) : word->fetch_and(~mirroredBit_);
        } while (enabled != (flag_.load() != 0));
    }

    std::atomic<unsigned char> flag_ = 0;
    unsigned int mirroredBit_ = 0;
    std::atomic<std::atomic<unsigned int>*> mirror_ = nullptr;
    const char* name_;
    const char* category_;
};

// Creates a router, enabled while a sink is set and the host has switched this name and category
// on. The names must outlive it. The lock-stack category gives the router's lock its position in
// the product's order; this library's routers need none. Throws std::bad_alloc.
VelBase::ReturnPtrI<Router> CreateRouter(const char* name, const char* category,
                                         VelSynch::EnumOrrinLockStackCategory lockStackCategory);

}  // namespace VelLog
