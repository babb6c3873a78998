// What tests of sets of sockets share.
#pragma once

#include <Socket/SocketCollectionImpl.h>
#include <VelNet/SocketCollection.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "SocketTrials.h"

namespace SocketTests {

struct EndCollection {
    void operator()(SocketCollection* collection) const { collection->Destroy(); }
};
using Collection = std::unique_ptr<SocketCollection, EndCollection>;

Collection NewCollection();

using Entry = std::pair<const Socket*, int>;
using Entries = std::vector<Entry>;

Entries EntriesOf(const SocketCollection& collection);

int ReferencesOf(const SocketImpl& socket);

// A socket whose status a test decides. It answers the n-th question, counted from 0.
class StatusSocket : public SocketImpl {
public:
    using SocketImpl::SocketImpl;

    int GetStatus() const override { return answer(asked++); }

    std::function<int(int)> answer = [](int) { return 0; };
    mutable int asked = 0;
};

VelBase::ReturnPtrI<StatusSocket> SocketOfStatus(Winsock::Handle handle, int status);

// A socket of that handle which does not close it.
VelBase::ReturnPtrI<SocketImpl> Twin(Winsock::Handle handle);

}  // namespace SocketTests
