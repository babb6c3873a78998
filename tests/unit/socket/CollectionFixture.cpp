#include "CollectionFixture.h"

namespace SocketTests {

Collection NewCollection() {
    return Collection(CreateSocketCollection());
}

Entries EntriesOf(const SocketCollection& collection) {
    Entries entries;
    for (unsigned int index = 0; index < collection.GetCount(); ++index)
        entries.emplace_back(collection.GetSocket(index).Get(), collection.GetEvent(index));
    return entries;
}

int ReferencesOf(const SocketImpl& socket) {
    return socket.GetReferenceCount();
}

VelBase::ReturnPtrI<StatusSocket> SocketOfStatus(Winsock::Handle handle, int status) {
    VelBase::ReturnPtrI<StatusSocket> socket(new StatusSocket(handle, STATE_CLOSED));
    socket->answer = [status](int) { return status; };
    return socket;
}

VelBase::ReturnPtrI<SocketImpl> Twin(Winsock::Handle handle) {
    return {new SocketImpl(handle, STATE_CLOSED)};
}

}  // namespace SocketTests
