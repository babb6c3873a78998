#include "names/HostEntryStorage.h"

#include "sockets/AddressFamily.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>

namespace Posix {

namespace {

// A thread-specific key with the C library's free as its destructor: each block is freed with its
// thread, without running code of this module, which may have been unloaded by then.
using StoredKey = std::atomic<unsigned long>;
constexpr unsigned long NoKey = ~0UL;
constinit StoredKey storedKey = NoKey;

// If several threads create the key at once, the first one wins.
bool EnsureKey() noexcept {
    if (storedKey.load(std::memory_order_acquire) != NoKey) return true;
    auto made = static_cast<pthread_key_t>(NoKey);  // 0 may be the key of somebody else
    if (::pthread_key_create(&made, &std::free) != 0) return false;
    unsigned long expected = NoKey;
    if (!storedKey.compare_exchange_strong(expected, made)) ::pthread_key_delete(made);
    return true;
}

pthread_key_t Key() noexcept {
    return static_cast<pthread_key_t>(storedKey.load(std::memory_order_acquire));
}

// A process has few keys (PTHREAD_KEYS_MAX), so the module deletes its own when it is unloaded.
// That frees the unloading thread's block; those of other living threads leak.
[[gnu::destructor]] void DeleteKey() noexcept {
    const unsigned long stored = storedKey.exchange(NoKey);
    if (stored == NoKey) return;
    const auto key = static_cast<pthread_key_t>(stored);
    std::free(::pthread_getspecific(key));
    ::pthread_key_delete(key);
}

HostEntryStorage* Allocate(std::size_t room) noexcept {
    auto* block = static_cast<HostEntryStorage*>(std::malloc(sizeof(HostEntryStorage) + room));
    if (block != nullptr) block->room = room;
    return block;
}

}  // namespace

HostEntryStorage* HostEntryOfThread(std::size_t room) noexcept {
    if (!EnsureKey()) return nullptr;
    auto* present = static_cast<HostEntryStorage*>(::pthread_getspecific(Key()));
    if (present != nullptr && present->room >= room) return present;
    HostEntryStorage* block = Allocate(room);
    if (block == nullptr || ::pthread_setspecific(Key(), block) != 0) {
        std::free(block);
        return nullptr;
    }
    std::free(present);
    return block;
}

Winsock::HostEntry* FillFromHost(HostEntryStorage& block, const hostent& host) noexcept {
    const AddressFamily& family = IpFamily(host.h_addrtype == AF_INET6);
    block.entry = {.name = host.h_name,
                   .aliases = host.h_aliases,
                   .addressType = static_cast<short>(family.winsock),
                   .addressLength = static_cast<short>(host.h_length),
                   .addresses = host.h_addr_list};
    return &block.entry;
}

}  // namespace Posix
