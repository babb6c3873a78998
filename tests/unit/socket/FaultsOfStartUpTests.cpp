// The layer's start and stop when a call of the system or a support library fails.
#include <list>
#include <memory>

#include "FaultStory.h"
#include "StartUpFixture.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Starting: what was built is undone backwards. Nothing is published yet, so nothing is logged.

{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)
    holds count=1 layer=up
    opens VelSynch
    opens VelRegistry
    opens VelLog
    opens router Network, Error
    opens router Network, Connection Trace
    opens router Network, Packet Trace
    opens router Network, Verbose Packet Trace
    opens start-up
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)   fails
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    throws VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = {n}
    numbers except 0
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)   -> 0 0x0102 0x0202
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    throws VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = {0}
    leaks start-up
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)   -> 0 0x0202 0x0102
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    throws VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = {0}
    leaks start-up
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)   -> 0 0x0101 0x0101
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    throws VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = {0}
    leaks start-up
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)
    WSAStartup(0x0202)   -> 0 0x0302 0x0302
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    throws VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = {0}
    leaks start-up
)"},
{"start", R"(
    VelSynch up   throws
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up   throws
    VelSynch down
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up   throws
    VelRegistry down
    VelSynch down
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)   throws
    VelLog down
    VelRegistry down
    VelSynch down
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)   throws
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)   throws
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    passes
)"},
{"start", R"(
    VelSynch up
    VelRegistry up
    VelLog up
    CreateRouter(Network, Error, -3)
    CreateRouter(Network, Connection Trace, -3)
    CreateRouter(Network, Packet Trace, -3)
    CreateRouter(Network, Verbose Packet Trace, -3)   throws
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    passes
)"},
{"start again", R"(
    holds count=2
)"},

// Stopping goes on, whatever WSACleanup says; only -1 is a failure.

{"stop", R"(
    WSACleanup()
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    holds count=0 layer=down
    closes VelSynch
    closes VelRegistry
    closes VelLog
    closes router Network, Error
    closes router Network, Connection Trace
    closes router Network, Packet Trace
    closes router Network, Verbose Packet Trace
    closes start-up
)"},
{"stop", R"(
    WSACleanup()   -> 1
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    holds count=0 layer=down
    closes VelSynch
    closes VelRegistry
    closes VelLog
    closes router Network, Error
    closes router Network, Connection Trace
    closes router Network, Packet Trace
    closes router Network, Verbose Packet Trace
    closes start-up
)"},
{"stop", R"(
    WSACleanup()   fails
    WSAGetLastError()
    log Error: Cannot cleanup socket layer: {failure}
    ~Router(Network, Verbose Packet Trace)
    ~Router(Network, Packet Trace)
    ~Router(Network, Connection Trace)
    ~Router(Network, Error)
    VelLog down
    VelRegistry down
    VelSynch down
    tells VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed, errno = {n}
    holds count=0 layer=down
    closes VelSynch
    closes VelRegistry
    closes VelLog
    closes router Network, Error
    closes router Network, Connection Trace
    closes router Network, Packet Trace
    closes router Network, Verbose Packet Trace
    closes start-up
)"},
{"stop one of two", R"(
    holds count=1
)"},
};
// clang-format on

Properties LayerState() {
    return {{"count", std::to_string(g_socketInitializationCount)},
            {"layer", g_socketLayer == nullptr ? "down" : "up"}};
}

// Objects that keep the layer up, that many at first.
std::function<Trial()> With(std::size_t count,
                            const std::function<void(std::list<SocketInitialization>&)>& act) {
    return [=] {
        const auto objects = std::make_shared<std::list<SocketInitialization>>(count);
        return Trial{.act =
                         [=] {
                             act(*objects);
                             return "";
                         },
                     .state = LayerState};
    };
}

void Start(std::list<SocketInitialization>& objects) {
    objects.emplace_back();
}

void Stop(std::list<SocketInitialization>& objects) {
    objects.pop_back();
}

const FaultTable Table = {{
                              {"start", With(0, Start)},
                              {"start again", With(1, Start)},
                              {"stop", With(1, Stop)},
                              {"stop one of two", With(2, Stop)},
                          },
                          Stories,
                          false,
                          "returns"};  // without a layer

class FaultsOfStartUp : public FoundationTests::StartUpTest {};

TEST_F(FaultsOfStartUp, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfStartUp, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfStartUp, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
