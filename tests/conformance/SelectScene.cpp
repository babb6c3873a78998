#include "SelectScene.h"

namespace Conformance {

using Winsock::HandleSet;

HandleSet SetOf(std::initializer_list<Winsock::Handle> handles) {
    HandleSet set = {};
    for (const Winsock::Handle handle : handles)
        set.handles[set.count++] = handle;
    return set;
}

std::vector<Winsock::Handle> HandlesIn(const HandleSet& set) {
    return {set.handles, set.handles + set.count};
}

std::vector<Winsock::Handle> Handles(std::initializer_list<const OwnedSocket*> sockets) {
    std::vector<Winsock::Handle> handles;
    for (const OwnedSocket* socket : sockets)
        handles.push_back(socket->Get());
    return handles;
}

std::string ReadyFor(const OwnedSocket& socket, Winsock::TimeValue time,
                     std::string_view wineSituation) {
    HandleSet read = SetOf({socket.Get()});
    HandleSet write = read;
    HandleSet except = read;
    const int count = Winsock::select(0, &read, &write, &except, &time);
    EXPECT_TRUE(
        Succeeds(count, static_cast<int>(read.count + write.count + except.count), wineSituation));
    std::string ready;
    if (read.count > 0) ready += "r";
    if (write.count > 0) ready += "w";
    if (except.count > 0) ready += "e";
    return ready;
}

bool IsReadable(const OwnedSocket& socket, Winsock::TimeValue time) {
    HandleSet read = SetOf({socket.Get()});
    return Winsock::select(0, &read, nullptr, nullptr, &time) == 1;
}

}  // namespace Conformance
