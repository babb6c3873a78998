// Sets of sockets when a call of the system fails or answers oddly.
#include "CollectionFixture.h"
#include "FaultStoryLines.h"
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// The set waits for 1001, connected, to read; 1002, connected, to close; 1003, connected, to write;
// 1004, listening, to accept; and for 1005, connected, with an event that has no name. Of each
// socket that is readable the status is asked three times, once for each event that it may have.

{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 0
    returns null
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 4 read 1001 1002 1004 write 1003
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     -> 0
    ioctlsocket(1002, 0x4004667F)     -> 0
    ioctlsocket(1002, 0x4004667F)     -> 0
    returns 1001/1 1002/3 1003/2 1004/0
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 1 read 1001 1004 write 1003
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    returns 1001/1 1003/2 1004/0
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 200
    returns empty
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 3 read 1005 1003 77 write 1001 1002
    ioctlsocket(1003, 0x4004667F)     -> 1
    ioctlsocket(1003, 0x4004667F)     -> 1
    ioctlsocket(1003, 0x4004667F)     -> 1
    ioctlsocket(1005, 0x4004667F)     -> 1
    ioctlsocket(1005, 0x4004667F)     -> 1
    ioctlsocket(1005, 0x4004667F)     -> 1
    returns empty
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed, errno = {n}
)"},

// A socket that cannot tell counts as idle: as closed by its peer.

{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 2 read 1001 1002
    ioctlsocket(1001, 0x4004667F)     fails
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     fails
    ioctlsocket(1002, 0x4004667F)     -> 0
    ioctlsocket(1002, 0x4004667F)     -> 1
    returns 1001/1
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 2 read 1001 1002
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     fails
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     fails
    ioctlsocket(1002, 0x4004667F)     -> 0
    returns 1002/3
)"},
{"Select", R"(
    select(1005, {1001, 1002, 1004}, {1003}, null, {3, 0})   -> 2 read 1001 1002
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     -> 1
    ioctlsocket(1001, 0x4004667F)     fails
    ioctlsocket(1002, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     -> 1
    ioctlsocket(1002, 0x4004667F)     fails
    returns 1001/1 1002/3
)"},
{"Select with nothing to wait for", R"(
    Sleep(3000)
    returns null
)"},
{"Select to read", R"(
    select(1002, {1001}, null, null, {0, 0})   -> 1 read 1001
    ioctlsocket(1001, 0x4004667F)     -> 0
    ioctlsocket(1001, 0x4004667F)     -> 0
    ioctlsocket(1001, 0x4004667F)     -> 0
    returns empty
)"},
{"Select to read", R"(
    select(1002, {1001}, null, null, {0, 0})   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed, errno = {n}
)"},
{"Select to read", R"(
    select(1002, {1001}, null, null, {0, 0})   -> 1 read 1001
    ioctlsocket(1001, 0x4004667F)     fails
    ioctlsocket(1001, 0x4004667F)     fails
    ioctlsocket(1001, 0x4004667F)     fails
    returns empty
)"},
{"Add, Find, GetCount, GetSocket, GetEvent, Remove", R"(
    returns 1 0 4294967295 1001/1 removed
)"},

// The set's end releases its sockets.

{"Destroy", R"(
    closesocket(1001)
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    closes socket 1001
)"},
{"Destroy", R"(
    closesocket(1001)                 fails
    WSAGetLastError()
    log Error
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    tells VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, errno = {n}
    closes socket 1001
)"},
};
// clang-format on

struct Member {
    SocketState state;
    int event;
};

constexpr Member Members[] = {
    {STATE_CONNECTED, 1}, {STATE_CONNECTED, 3}, {STATE_CONNECTED, 2},
    {STATE_LISTENING, 0}, {STATE_CONNECTED, 4},
};

// Sockets of handles from 1001 on, which are not the system's.
Collection SetOf(std::span<const Member> members) {
    Collection set = NewCollection();
    Winsock::Handle handle = 1001;
    for (const auto& [state, event] : members) {
        const VelBase::ReturnPtrI<SocketImpl> socket(new SocketImpl(handle++, state));
        set->Add(socket.Get(), event);
    }
    return set;
}

std::string ContentsOf(const SocketCollection& set) {
    std::string contents;
    for (const auto& [socket, event] : EntriesOf(set)) {
        const auto handle = FieldsOf(dynamic_cast<const SocketImpl&>(*socket)).handle;
        contents += std::to_string(handle) + '/' + std::to_string(event) + ' ';
    }
    return contents.empty() ? "empty" : Trimmed(contents);
}

// What is selected ends at once; the set holds what it held.
std::function<Trial()> Selecting(std::span<const Member> members, unsigned int seconds) {
    return [=] {
        const std::shared_ptr<SocketCollection> set(SetOf(members).release(), EndCollection());
        return Trial{.act =
                         [=] {
                             const Collection ready(set->Select(seconds));
                             return ready ? ContentsOf(*ready) : "null";
                         },
                     .state =
                         [=] {
                             return Properties{{"set", ContentsOf(*set)}};
                         }};
    };
}

Trial Destroying() {
    const auto set = std::make_shared<Collection>(NewCollection());
    const auto socket = AddressedSocket();
    (*set)->Add(socket.Get(), 1);
    return {.act = [=] {
        set->reset();
        return "";
    }};
}

std::string UseEntries(SocketImpl& socket) {
    const Collection set = NewCollection();
    set->Add(&socket, 1);
    std::string told = std::to_string(set->GetCount()) + ' ' +
                       std::to_string(set->Find(&socket, 1)) + ' ' +
                       std::to_string(set->Find(&socket, 2)) + ' ' + ContentsOf(*set);
    set->Remove(&socket, 2);
    set->Remove(&socket, 1);
    return told + (set->GetCount() == 0 ? " removed" : " not removed");
}

const FaultTable Table = {
    {
        {"Select", Selecting(Members, 3)},
        {"Select with nothing to wait for", Selecting(std::span(Members).subspan(4), 3)},
        {"Select to read", Selecting(std::span(Members).subspan(0, 1), 0)},
        {"Add, Find, GetCount, GetSocket, GetEvent, Remove", OnClassic(UseEntries)},
        {"Destroy", Destroying},
    },
    Stories};

class FaultsOfSets : public SocketTest {};

TEST_F(FaultsOfSets, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfSets, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfSets, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
