// Services that the system finds in a table that the test provides.
#include <sys/mount.h>

#include <filesystem>
#include <fstream>

#include "NameFiles.h"
#include "conformance/NameScene.h"
#include "support/TemporaryFolder.h"

namespace Conformance {
namespace {

constexpr const char* Table =
    "# Comment 1/tcp\n"
    "\n"
    "MixedCase\t4711/tcp  Other-Name # Trailing\n"
    "mixedcase 4712/udp\n"
    "AZ-Zulu 4714/tcp\n"
    "LAST 4713/tcp";

class ServiceTable {
public:
    explicit ServiceTable(const std::string& contents) {
        std::ofstream(path_) << contents;
        const char* const path = path_.c_str();
        EXPECT_EQ(::mount(path, "/etc/services", nullptr, MS_BIND, nullptr), 0);
    }
    ServiceTable(const ServiceTable&) = delete;
    ServiceTable& operator=(const ServiceTable&) = delete;

private:
    const Support::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_.Path() / "services";
};

Texts Found(const char* service, int type) {
    const Winsock::AddressInfo hints = Hints(2, type);
    return AddressesOf(Resolved("127.0.0.1", service, &hints));
}

void ExpectUnknown(const char* service) {
    List list;
    EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", service, list))) << service;
}

TEST(ServiceNamesInTheTable, IsKnownInAnyCase) {
    WithNames("", [] {
        const ServiceTable table(Table);
        for (const char* service : {"MixedCase", "mixedcase", "MIXEDCASE", "other-name"}) {
            EXPECT_EQ(Found(service, 1), Texts{"127.0.0.1 4711"}) << service;
        }
        EXPECT_EQ(Found("last", 1), Texts{"127.0.0.1 4713"});
        EXPECT_EQ(Found("az-zULU", 1), Texts{"127.0.0.1 4714"});
    });
}

TEST(ServiceNamesInTheTable, IsThatOfTheWantedType) {
    WithNames("", [] {
        const ServiceTable table(Table);
        EXPECT_EQ(Found("MIXEDcase", 2), Texts{"127.0.0.1 4712"});
        const Winsock::AddressInfo datagram = Hints(2, 2);
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", "last", list, &datagram)));
    });
}

TEST(ServiceNamesInTheTable, IsNoCommentAndNoPart) {
    WithNames("", [] {
        const ServiceTable table(Table);
        for (const char* service : {"comment", "trailing", "mixed", "mixedcase4711", "4711/TCP"}) {
            ExpectUnknown(service);
        }
    });
}

TEST(ServiceNamesInTheTable, IsUnknownWhereThereIsNone) {
    WithNames("", [] {
        const ServiceTable table("");
        ExpectUnknown("http");
        ExpectUnknown("HTTP");
    });
}

}  // namespace
}  // namespace Conformance
