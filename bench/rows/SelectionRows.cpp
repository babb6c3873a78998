// Asking which of 64 connected sockets have bytes, with bytes on one of them and on all; and where
// in the collection one of them is.

#include <poll.h>

#include <algorithm>
#include <array>
#include <numeric>

#include "Rows.h"
#include "Scenes.h"
#include "harness/CollectionOwner.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

namespace Bench {
namespace {

template <int ReadySockets>
class RawSelection : public SelectionScene<ReadySockets> {
public:
    RawSelection() {
        for (std::size_t index = 0; index < pairs_.size(); ++index)
            entries_[index] = {pairs_[index].Server(), POLLIN, 0};
        for (std::size_t index = 0; index < ReadySockets; ++index)
            Checked(::send(pairs_[index].Client(), "x", 1, MSG_NOSIGNAL), "send");
    }

    int Do() {
        Checked(::poll(entries_.data(), entries_.size(), 0), "poll");
        return static_cast<int>(
            std::count_if(entries_.begin(), entries_.end(),
                          [](const pollfd& entry) { return entry.revents != 0; }));
    }

private:
    std::array<RawPair, WatchedSockets> pairs_;
    std::array<pollfd, WatchedSockets> entries_{};
};

// So many connected sockets in a collection.
class WatchedPairs {
public:
    WatchedPairs() {
        for (const ClassicPair& pair : pairs_)
            watched_->Add(&pair.Server(), VelNet::EVENT_READ);
    }

protected:
    std::array<ClassicPair, WatchedSockets> pairs_;
    CollectionOwner watched_{VelNet::CreateSocketCollection()};
};

template <int ReadySockets>
class LibrarySelection : public SelectionScene<ReadySockets>, private WatchedPairs {
public:
    LibrarySelection() {
        for (std::size_t index = 0; index < ReadySockets; ++index)
            static_cast<void>(pairs_[index].Client().Send("x", 1));
    }

    int Do() const {
        const CollectionOwner ready(watched_->Select(0));
        return static_cast<int>(ready->GetCount());
    }
};

// The last of the sockets.
class RawFind : public SelectionScene<WatchedSockets> {
public:
    RawFind() { std::iota(descriptors_.begin(), descriptors_.end(), 1); }

    int Do() {
        const auto place =
            std::find(descriptors_.begin(), descriptors_.end(), wanted_) - descriptors_.begin();
        return static_cast<int>(place) + 1;
    }

private:
    std::array<int, WatchedSockets> descriptors_{};
    volatile int wanted_ = WatchedSockets;  // for the compiler not to know the answer
};

class LibraryFind : public SelectionScene<WatchedSockets>, private WatchedPairs {
public:
    int Do() const {
        const unsigned int found = watched_->Find(&pairs_.back().Server(), VelNet::EVENT_READ);
        return static_cast<int>(found) + 1;
    }
};

}  // namespace

void AddSelectionRows(Cases& cases) {
    cases.push_back(CaseOf<RawSelection<1>>("select-1-of-64", "raw"));
    cases.push_back(CaseOf<LibrarySelection<1>>("select-1-of-64", "library"));
    cases.push_back(CaseOf<RawSelection<WatchedSockets>>("select-64-of-64", "raw"));
    cases.push_back(CaseOf<LibrarySelection<WatchedSockets>>("select-64-of-64", "library"));
    cases.push_back(CaseOf<RawFind>("find-in-64", "raw"));
    cases.push_back(CaseOf<LibraryFind>("find-in-64", "library"));
}

}  // namespace Bench
