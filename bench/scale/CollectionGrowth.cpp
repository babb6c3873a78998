// Collections of many sockets.

#include "ScaledRows.h"
#include "harness/CollectionOwner.h"
#include "harness/LibrarySockets.h"

#include <cstddef>
#include <vector>

namespace Bench {
namespace {

// So many connected sockets in a collection.
class CollectionScene : public ScaledScene {
public:
    explicit CollectionScene(int count) : pairs_(static_cast<std::size_t>(count)) {
        for (const ClassicPair& pair : pairs_)
            watched_->Add(&pair.Server(), VelNet::EVENT_READ);
    }

protected:
    VelNet::SocketCollection& Watched() const { return *watched_; }
    const ClassicPair& Last() const { return pairs_.back(); }
    void MakeAllReady() const {
        for (const ClassicPair& pair : pairs_)
            static_cast<void>(pair.Client().Send("x", 1));
    }

    std::vector<ClassicPair> pairs_;
    CollectionOwner watched_{VelNet::CreateSocketCollection()};
};

class SelectOneReady : public CollectionScene {
public:
    explicit SelectOneReady(int count) : CollectionScene(count) {
        static_cast<void>(Last().Client().Send("x", 1));
    }

    int Do() const { return CollectionOwner(Watched().Select(0))->GetCount() == 1; }
};

class SelectAllReady : public CollectionScene {
public:
    explicit SelectAllReady(int count) : CollectionScene(count) { MakeAllReady(); }

    int Do() const { return CollectionOwner(Watched().Select(0))->GetCount() == pairs_.size(); }
};

// Every entry by its index, as the result of Select is gone through.
class WalkByIndex : public CollectionScene {
public:
    using CollectionScene::CollectionScene;

    int Do() const {
        unsigned int found = 0;
        for (unsigned int index = 0; index < Watched().GetCount(); ++index)
            if (Watched().GetSocket(index) && Watched().GetEvent(index) == VelNet::EVENT_READ)
                ++found;
        return found == pairs_.size();
    }
};

class FindLast : public CollectionScene {
public:
    using CollectionScene::CollectionScene;

    int Do() const {
        return Watched().Find(&Last().Server(), VelNet::EVENT_READ) == pairs_.size() - 1;
    }
};

class RemoveAndAddLast : public CollectionScene {
public:
    using CollectionScene::CollectionScene;

    int Do() const {
        Watched().Remove(&Last().Server(), VelNet::EVENT_READ);
        Watched().Add(&Last().Server(), VelNet::EVENT_READ);
        return 1;
    }
};

}  // namespace

void AddCollectionGrowth(Cases& cases) {
    const auto numbers = {1, 4, 16, 32, 64};
    AddGrowth<SelectOneReady>(cases, "select-one-ready", numbers);
    AddGrowth<SelectAllReady>(cases, "select-all-ready", numbers);
    AddGrowth<WalkByIndex>(cases, "walk-by-index", numbers);
    AddGrowth<FindLast>(cases, "find", numbers);
    AddGrowth<RemoveAndAddLast>(cases, "remove-and-add", numbers);
}

}  // namespace Bench
