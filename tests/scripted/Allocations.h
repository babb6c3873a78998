// Counts and fails the program's use of operator new.
//
// All forms of operator new and delete are replaced in every program that links the scripted
// platform.
#pragma once

#include <cstddef>
#include <vector>

namespace Scripted::Allocations {

// Counts from its construction on, on all threads.
class Mark {
public:
    Mark();
    std::size_t Requests() const;
    std::size_t Bytes() const;
    // The bytes asked for by each request, the first 1,000 at most.
    std::vector<std::size_t> Sizes() const;
    // Blocks allocated since the test began that are alive, less those alive at the mark.
    long long LiveBlocks() const;
    long long LiveBytes() const;

private:
    std::size_t requests_, bytes_;
    long long liveBlocks_, liveBytes_;
};

// Fails one request, the n-th from here (1 is the next): std::bad_alloc, or null from the forms
// that do not throw. Ends with its scope. One at a time.
class FailNth {
public:
    explicit FailNth(std::size_t n);
    ~FailNth();
    FailNth(const FailNth&) = delete;
    FailNth& operator=(const FailNth&) = delete;
    // Whether the request came. When it did not, all requests have been failed once and the loop
    // over n is done.
    bool Happened() const;
};

// What the calling thread allocates in this scope is not counted, not failed, and no leak. For what
// a test keeps beyond its body: members of its fixture, statics, what SUCCEED and RecordProperty
// note.
class Uncounted {
public:
    Uncounted() noexcept;
    ~Uncounted();
    Uncounted(const Uncounted&) = delete;
    Uncounted& operator=(const Uncounted&) = delete;
};

}  // namespace Scripted::Allocations
