// A resolver that fails has not said that a name is unknown: nothing stands in for the answer.
#include <ifaddrs.h>
#include <netdb.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>

#include "NameFiles.h"
#include "NetworkInterface.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// Names that this computer would have an answer for by itself.
const char* const OwnNames[] = {"", "lonely.example", "lonely", "localhost"};

void ExpectFailure(int listError, int hostError) {
    for (const char* name : OwnNames) {
        List list;
        EXPECT_TRUE(Returns(listError, Resolve(name, "80", list))) << name;
        EXPECT_EQ(list, nullptr);
        EXPECT_TRUE(FailsWith(hostError, Winsock::gethostbyname(name))) << name;
    }
}

void OnALonelyComputer(const std::function<void()>& scene, const std::string& sources = "files") {
    WithNames("127.0.0.1 localhost\n10.4.4.4 lonely.example lonely\n", scene, "lonely.example",
              sources);
}

TEST(ResolverFault, IsNotAnUnknownNameWithoutMemory) {
    OnALonelyComputer([] {
        const FailingCall lists(SystemCall::Getaddrinfo, EAI_MEMORY);
        const FailingCall hosts(SystemCall::Gethostbyname, ENOMEM);
        ExpectFailure(8, 11003);
    });
}

TEST(ResolverFault, IsNotAnUnknownNameWhereItShouldBeAskedAgain) {
    WithNames(
        "10.4.4.4 lonely.example lonely\n",
        [] {
            const FailingCall lists(SystemCall::Getaddrinfo, EAI_AGAIN);
            const FailingCall hosts(SystemCall::Gethostbyname, TRY_AGAIN);
            for (const char* name : {"", "lonely.example", "LONELY"}) {
                List list;
                EXPECT_TRUE(Returns(11002, Resolve(name, "80", list))) << name;
                EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname(name))) << name;
            }
        },
        "lonely.example");
}

TEST(ResolverFault, IsNotAnUnknownNameWhereItBreaks) {
    OnALonelyComputer([] {
        const FailingCall lists(SystemCall::Getaddrinfo, EIO);
        const FailingCall hosts(SystemCall::Gethostbyname, NO_RECOVERY);
        ExpectFailure(11003, 11003);
    });
}

TEST(ResolverFault, IsNotAnUnknownNameWithoutDescriptors) {
    for (const char* sources : {"files", "files dns"}) {
        OnALonelyComputer(
            [] {
                const DescriptorLimit limit(DescriptorLimit::Exhausting());
                ExpectFailure(10024, 11003);
                List list;
                EXPECT_TRUE(Returns(10024, Resolve("unknown.example", "80", list)));
                EXPECT_TRUE(Returns(10024, Resolve("10.1.1.1", "http", list)));
                EXPECT_TRUE(FailsWith(11003, Winsock::gethostbyname("unknown.example")));
            },
            sources);
    }
}

TEST(ResolverFault, IsNotAnUnknownNameWhereItsTableCannotBeRead) {
    OnALonelyComputer([] {
        // A file without anything at its beginning, not even an end.
        const std::string memory = "/proc/" + std::to_string(::getpid()) + "/mem";
        ASSERT_EQ(::mount(memory.c_str(), "/etc/hosts", nullptr, MS_BIND, nullptr), 0);
        ExpectFailure(11003, 11003);
    });
}

// Nobody knows the name, or an address of it, but this computer does.
TEST(ResolverFault, IsNoneWhereTheOwnNamesAreUnknown) {
    const auto expectKnown = [](int listError, int hostError) {
        const FailingCall lists(SystemCall::Getaddrinfo, listError, {.count = 1});
        EXPECT_EQ(AddressesOf(Resolved("lonely", "80")).back(), "127.0.0.1 80") << listError;
        const FailingCall again(SystemCall::Getaddrinfo, listError, {.count = 1});
        EXPECT_EQ(AddressesOf(Resolved("localhost", "80")).back(), "127.0.0.1 80") << listError;
        const FailingCall hosts(SystemCall::Gethostbyname, hostError);
        EXPECT_NE(Winsock::gethostbyname("lonely"), nullptr) << hostError;
        EXPECT_NE(Winsock::gethostbyname("localhost"), nullptr) << hostError;
    };
    WithNames(
        "127.0.0.1 localhost\n",
        [&] {
            expectKnown(EAI_NONAME, HOST_NOT_FOUND);
            expectKnown(EAI_NODATA, NO_DATA);
        },
        "lonely");
}

TEST(ResolverFaultInAListOfInterfaces, IsNotAnErrorNumberFromBefore) {
    WithNames(
        "",
        [] {
            const HookedCall listed(SystemCall::Getifaddrs, [](const Call& call) {
                const Word result = call.Make();
                errno = EMFILE;
                return result;
            });
            EXPECT_EQ(AddressesOf(Resolved("lonely", "80")).back(), "127.0.0.1 80");
            EXPECT_NE(Winsock::gethostbyname("lonely"), nullptr);
        },
        "lonely");
}

// As tunnels may be.
TEST(ResolverFaultInAListOfInterfaces, IsNotAnInterfaceWithoutAnAddress) {
    WithNames(
        "",
        [] {
            const HookedCall listed(SystemCall::Getifaddrs, [](const Call& call) {
                const Word result = call.Make();
                (*call.Pointer<ifaddrs*>(0))->ifa_addr = nullptr;
                return result;
            });
            EXPECT_EQ(AddressesOf(Resolved("lonely", "80")).back(), "127.0.0.1 80");
        },
        "lonely");
}

TEST(ResolverFaultInAListOfInterfaces, IsNotAComputerWithoutAny) {
    WithNames(
        "",
        [] {
            const FailingCall fails(SystemCall::Getifaddrs, ENOBUFS);
            List list;
            EXPECT_TRUE(Returns(10055, Resolve("lonely", "80", list)));
            EXPECT_TRUE(FailsWith(11003, Winsock::gethostbyname("lonely")));
        },
        "lonely");
}

TEST(ResolverFaultInAListOfInterfaces, IsOneWhereTheSystemDoesNotShowThem) {
    const auto hidden = [](const std::string& hosts, const std::string& address) {
        WithNames(
            hosts,
            [&] {
                const FailingCall fails(SystemCall::Getifaddrs, EAFNOSUPPORT);
                EXPECT_EQ(AddressesOf(Resolved("lonely", "80")), Texts{address});
                EXPECT_NE(Winsock::gethostbyname("lonely"), nullptr);
            },
            "lonely");
    };
    hidden("", "127.0.0.1 80");
    hidden("127.0.1.1 lonely\n", "127.0.1.1 80");
}

}  // namespace
}  // namespace Conformance
