// Asking which of 64 connected sockets have bytes, with bytes on one of them and on all.

#include <VelNet/SocketCollection.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <memory>

#include "Rows.h"
#include "Scenes.h"
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

struct EndCollection {
    void operator()(VelNet::SocketCollection* collection) const { collection->Destroy(); }
};
using CollectionOwner = std::unique_ptr<VelNet::SocketCollection, EndCollection>;

template <int ReadySockets>
class LibrarySelection : public SelectionScene<ReadySockets> {
public:
    LibrarySelection() {
        for (const ClassicPair& pair : pairs_)
            watched_->Add(&pair.Server(), VelNet::EVENT_READ);
        for (std::size_t index = 0; index < ReadySockets; ++index)
            pairs_[index].Client().Send("x", 1);
    }

    int Do() const {
        const CollectionOwner ready(watched_->Select(0));
        return static_cast<int>(ready->GetCount());
    }

private:
    std::array<ClassicPair, WatchedSockets> pairs_;
    CollectionOwner watched_{VelNet::CreateSocketCollection()};
};

}  // namespace

void AddSelectionRows(Cases& cases) {
    cases.push_back(CaseOf<RawSelection<1>>("select-1-of-64", "raw"));
    cases.push_back(CaseOf<LibrarySelection<1>>("select-1-of-64", "library"));
    cases.push_back(CaseOf<RawSelection<WatchedSockets>>("select-64-of-64", "raw"));
    cases.push_back(CaseOf<LibrarySelection<WatchedSockets>>("select-64-of-64", "library"));
}

}  // namespace Bench
