// Owners for what the library hands out without one.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelLog/LogControl.h>
#include <VelLog/LogSink.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketXt.h>

#include <memory>

namespace VelCompanion {

// Ends a collection as its contract asks for, where delete must not be used.
struct DestroyCollection {
    // The collection must not be null.
    void operator()(VelNet::SocketCollection* collection) const { collection->Destroy(); }
};

// Owns a collection, or none.
using CollectionOwner = std::unique_ptr<VelNet::SocketCollection, DestroyCollection>;

// Creates an empty collection. Throws std::bad_alloc.
[[nodiscard]] inline CollectionOwner MakeCollection() {
    return CollectionOwner(VelNet::CreateSocketCollection());
}

// Does what SocketCollection::Select does, with an owner for the result: empty if the time, in
// seconds, elapsed first. Throws what it throws.
[[nodiscard]] inline CollectionOwner Select(VelNet::SocketCollection& collection,
                                            unsigned int seconds) {
    return CollectionOwner(collection.Select(seconds));
}

// Directs the log's records to a sink for the length of a scope. Belongs to one thread; scopes may
// stand within each other if they end in reverse order. The sink must live longer.
class SinkInUse {
public:
    // Directs the records to the sink from now on.
    explicit SinkInUse(VelLog::LogSink& sink) noexcept : former_(VelLog::SetSink(&sink)) {}

    // Directs the records to where they went before. When this returns, no thread uses the sink any
    // more.
    ~SinkInUse() { VelLog::SetSink(former_); }

    SinkInUse(const SinkInUse&) = delete;
    SinkInUse& operator=(const SinkInUse&) = delete;

private:
    VelLog::LogSink* former_;
};

// Returns a second owner of the same object, with a reference of its own; an empty one for an empty
// one. An owner cannot be copied otherwise.
template <class T>
[[nodiscard]] VelBase::ReturnPtrI<T> Share(const VelBase::ReturnPtrI<T>& owner) {
    return {owner.Get()};
}

// Returns an extended socket as what it is derived from, for code that takes either family. Without
// std::move, write AsSocket(Share(socket)).
[[nodiscard]] inline VelBase::ReturnPtrI<VelNet::Socket> AsSocket(
    VelBase::ReturnPtrI<VelNet::SocketXt> socket) {
    return {socket.Get()};
}

}  // namespace VelCompanion
