// The operator new of every program that counts its memory or lets it fail.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "scripted/Allocations.h"
#include "scripted/platform/Call.h"
#include "support/FailingAllocations.h"

namespace Scripted {

namespace {

constexpr std::size_t MaximumSizes = 1000;

// Stands before each block.
struct Header {
    void* memory;
    std::size_t size;
    unsigned int epoch;  // 0 when the block is not counted
};

std::atomic<unsigned int> epoch = 1;  // one a test
std::atomic<std::size_t> requests = 0;
std::atomic<std::size_t> bytesRequested = 0;
std::atomic<long long> liveBlocks = 0;
std::atomic<long long> liveBytes = 0;
std::atomic<std::size_t> sizesKept = 0;
std::array<std::atomic<std::size_t>, MaximumSizes> sizes;
std::atomic<std::size_t> countdown = 0;  // to the request that fails; 0 when none does
std::atomic<bool> failed = false;
thread_local constinit int uncountedDepth = 0;

constexpr unsigned int Unlimited = ~0U;
thread_local constinit unsigned int successesLeft = Unlimited;

bool IsCounted() {
    return uncountedDepth == 0;
}

void CountRequest(std::size_t size) {
    ++requests;
    bytesRequested += size;
    if (const std::size_t place = sizesKept++; place < MaximumSizes) sizes[place] = size;
}

// Whether this request is the one to fail.
bool CountDown() {
    for (std::size_t left = countdown; left != 0;) {
        if (!countdown.compare_exchange_weak(left, left - 1)) continue;
        if (left == 1) failed = true;
        return left == 1;
    }
    return false;
}

// Whether the thread has had all that it gets.
bool IsExhausted() {
    if (successesLeft == 0) return true;
    if (successesLeft != Unlimited) --successesLeft;
    return false;
}

void CountLife(const Header& header, int direction) {
    if (header.epoch == 0 || header.epoch != epoch) return;
    liveBlocks += direction;
    liveBytes += direction * static_cast<long long>(header.size);
}

Header* HeaderOf(void* block) {
    return static_cast<Header*>(block) - 1;
}

constexpr std::size_t Usual =
    std::max<std::size_t>(alignof(Header), __STDCPP_DEFAULT_NEW_ALIGNMENT__);

// A block of the usual alignment ends where its memory ends, so that whoever watches the memory
// sees what goes beyond.
constexpr std::size_t RoomBefore(std::size_t alignment) {
    if (alignment > Usual) return sizeof(Header) + alignment;
    return (sizeof(Header) + Usual - 1) / Usual * Usual;
}

void* Place(void* memory, std::size_t size, std::size_t alignment) {
    const std::size_t start = reinterpret_cast<std::uintptr_t>(memory) + sizeof(Header);
    const std::size_t padding = (alignment - start % alignment) % alignment;
    void* const block = static_cast<char*>(memory) + sizeof(Header) + padding;
    const Header* const header =
        new (HeaderOf(block)) Header{memory, size, IsCounted() ? epoch.load() : 0};
    CountLife(*header, 1);
    return block;
}

// The block, or null.
void* Allocate(std::size_t size, std::size_t alignment) noexcept {
    if (IsCounted()) {
        CountRequest(size);
        if (CountDown() || IsExhausted()) return nullptr;
    }
    const std::size_t extra = RoomBefore(alignment);
    if (size > SIZE_MAX - extra) return nullptr;
    void* const memory = std::malloc(size + extra);
    return memory == nullptr ? nullptr : Place(memory, size, alignment);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
    if (void* const block = Allocate(size, alignment); block != nullptr) return block;
    throw std::bad_alloc();
}

void Free(void* block) noexcept {
    if (block == nullptr) return;
    const Header* const header = HeaderOf(block);
    CountLife(*header, -1);
    std::free(header->memory);
}

// Blocks of a smaller alignment than the header's own are given that.
std::size_t Number(std::align_val_t alignment) {
    return std::max(static_cast<std::size_t>(alignment), Usual);
}

}  // namespace

void BeginAllocations() noexcept {
    ++epoch;
    liveBlocks = 0;
    liveBytes = 0;
}

Live LiveMemory() noexcept {
    return {.blocks = liveBlocks, .bytes = liveBytes};
}

Counted::Counted() noexcept : depth_(uncountedDepth) {
    uncountedDepth = 0;
}
Counted::~Counted() {
    uncountedDepth = depth_;
}

namespace Allocations {

Uncounted::Uncounted() noexcept {
    ++uncountedDepth;
}
Uncounted::~Uncounted() {
    --uncountedDepth;
}

Mark::Mark()
    : requests_(requests),
      bytes_(bytesRequested),
      liveBlocks_(Scripted::liveBlocks),
      liveBytes_(Scripted::liveBytes) {
    sizesKept = 0;
}

std::size_t Mark::Requests() const {
    return requests - requests_;
}
std::size_t Mark::Bytes() const {
    return bytesRequested - bytes_;
}
long long Mark::LiveBlocks() const {
    return Scripted::liveBlocks - liveBlocks_;
}
long long Mark::LiveBytes() const {
    return Scripted::liveBytes - liveBytes_;
}

std::vector<std::size_t> Mark::Sizes() const {
    const Uncounted uncounted;
    const std::size_t count = std::min(sizesKept.load(), MaximumSizes);
    return {sizes.begin(), sizes.begin() + static_cast<std::ptrdiff_t>(count)};
}

FailNth::FailNth(std::size_t n) {
    failed = false;
    countdown = n;
}
FailNth::~FailNth() {
    countdown = 0;
}
bool FailNth::Happened() const {
    return failed;
}

}  // namespace Allocations

}  // namespace Scripted

namespace Support {

FailingAllocations::FailingAllocations(unsigned int successes) noexcept {
    Scripted::successesLeft = successes;
}
FailingAllocations::~FailingAllocations() {
    Scripted::successesLeft = Scripted::Unlimited;
}

}  // namespace Support

using Scripted::Allocate;
using Scripted::AllocateOrThrow;
using Scripted::Free;
using Scripted::Number;
using Scripted::Usual;

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, Usual);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, Usual);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, Usual);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, Usual);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, Number(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return AllocateOrThrow(size, Number(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, Number(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Allocate(size, Number(alignment));
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    Free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    Free(block);
}
