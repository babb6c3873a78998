// The owner of a collection of sockets.
#pragma once

#include <VelNet/SocketCollection.h>

#include <memory>

namespace Bench {

struct EndCollection {
    void operator()(VelNet::SocketCollection* collection) const { collection->Destroy(); }
};

using CollectionOwner = std::unique_ptr<VelNet::SocketCollection, EndCollection>;

}  // namespace Bench
