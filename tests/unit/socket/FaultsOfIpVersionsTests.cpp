// The configured version of IP when reading the settings fails.
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Whatever cannot be read, the version is 4, and that is remembered.

{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")
    ReadValue(3, "IPVersion", null)
    ReadValue(3, "IPVersion")
    CloseKey(3)
    CloseKey(1)
    returns 2
    holds cached=2
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")   fails
    ErrorDescription({u})
    returns 1
    holds cached=1
    numbers except 0
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")   fails 0
    returns 1
    holds cached=1
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")   fails
    ErrorDescription({u})
    CloseKey(1)
    returns 1
    holds cached=1
    numbers except 0
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")   fails 0
    CloseKey(1)
    returns 1
    holds cached=1
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")   fails
    ErrorDescription({u})
    CloseKey(1)
    returns 1
    holds cached=1
    numbers except 0
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")   fails 0
    CloseKey(1)
    returns 1
    holds cached=1
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")
    ReadValue(3, "IPVersion", null)   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    returns 1
    holds cached=1
    numbers except 0
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")
    ReadValue(3, "IPVersion", null)   fails 0
    CloseKey(3)
    CloseKey(1)
    returns 1
    holds cached=1
)"},
{"GetIpVersion", R"(
    OpenKey(3, "SOFTWARE\Corvane")
    OpenSubKey(1, "Orrin Server")
    CloseKey(2)
    OpenSubKey(1, "Orrin Server")
    ReadValue(3, "IPVersion", null)
    ReadValue(3, "IPVersion")   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    returns 1
    holds cached=1
    numbers except 0
)"},
{"GetIpVersion again", R"(
    returns 2
)"},
};
// clang-format on

// What was remembered is forgotten for the next trial.
Trial AskingFor(int cached) {
    ForgetRegistry();
    RegistryTree().Value("SOFTWARE\\Corvane\\Orrin Server", "IPVersion", u"6");
    g_socketLayer->cachedIpVersion = cached;
    return {.act = [] { return std::to_string(SocketXt::GetIpVersion()); },
            .state =
                [] {
                    return Properties{{"cached", std::to_string(g_socketLayer->cachedIpVersion)}};
                }};
}

const FaultTable Table = {{
                              {"GetIpVersion", [] { return AskingFor(0); }},
                              {"GetIpVersion again", [] { return AskingFor(2); }},
                          },
                          Stories};

class FaultsOfIpVersions : public SocketTest {
protected:
    void TearDown() override {
        g_socketLayer->cachedIpVersion = 0;
        SocketTest::TearDown();
    }
};

TEST_F(FaultsOfIpVersions, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfIpVersions, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfIpVersions, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
