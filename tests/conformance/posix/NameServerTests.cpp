// Lists of addresses of names that a name server knows, which the test is itself.
#include <netinet/in.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "NameFiles.h"
#include "ResolverFiles.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"

namespace Conformance {
namespace {

// A message of the name service, in the parts that the server looks at.
constexpr std::size_t HeaderLength = 12;
constexpr unsigned char NoSuchName = 3;
constexpr unsigned char ServerFailure = 2;
constexpr unsigned char Refused = 5;
constexpr unsigned char TypeIpv4 = 1;
constexpr unsigned char TypeIpv6 = 28;

// The name in the question, with a dot after each label.
std::string NameIn(const std::string& query) {
    std::string name;
    std::size_t place = HeaderLength;
    while (query.at(place) != '\0') {
        const auto length = static_cast<unsigned char>(query[place]);
        name += query.substr(place + 1, length) + '.';
        place += length + 1U;
    }
    return name;
}

// An address record for the name in the question.
std::string Record(unsigned char type, const std::string& address) {
    const std::string head = {
        '\xC0', HeaderLength, '\0', static_cast<char>(type), '\0', 1, '\0', '\0', '\0', 60, '\0'};
    return head + static_cast<char>(address.size()) + address;
}

std::string Reply(const std::string& query, unsigned char code, const std::string& record) {
    const std::size_t questionLength = NameIn(query).size() + 1 + 4;
    std::string reply = query.substr(0, HeaderLength + questionLength);
    reply[2] = '\x81';
    reply[3] = static_cast<char>(0x80 | code);
    reply[7] = record.empty() ? '\0' : '\1';
    reply[11] = '\0';
    return reply + record;
}

std::string Answer(const std::string& query) {
    const std::string name = NameIn(query);
    const char type = query.at(HeaderLength + name.size() + 2);
    const std::string ipv4 = {127, 0, 0, 9};
    const std::string ipv6 = std::string(15, '\0') + '\1';
    if (name == "failing.example.") return Reply(query, ServerFailure, "");
    if (name == "refused.example.") return Reply(query, Refused, "");
    const bool four = name == "both.example." || name == "four.example.";
    const bool six = name == "both.example." || name == "six.example.";
    if (!four && !six && name != "none.example.") return Reply(query, NoSuchName, "");
    if (type == TypeIpv4 && four) return Reply(query, 0, Record(1, ipv4));
    if (type == TypeIpv6 && six) return Reply(query, 0, Record(28, ipv6));
    return Reply(query, 0, "");
}

// Where the resolver asks; nobody else is in this network. By itself it is a server that is silent.
class NameServerPort {
public:
    NameServerPort() {
        address_.sin_family = AF_INET;
        address_.sin_port = htons(53);
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(descriptor_, Address(), sizeof address_), 0);
    }
    ~NameServerPort() { ::close(descriptor_); }
    NameServerPort(const NameServerPort&) = delete;
    NameServerPort& operator=(const NameServerPort&) = delete;

    int Descriptor() const { return descriptor_; }
    const sockaddr* Address() const {
        return static_cast<const sockaddr*>(static_cast<const void*>(&address_));
    }

private:
    int descriptor_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address_ = {};
};

// Answers each question after a pause; an empty one ends it.
class NameServer {
public:
    explicit NameServer(std::chrono::milliseconds pause)
        : pause_(pause), thread_([this] { Serve(); }) {}
    ~NameServer() {
        ::sendto(port_.Descriptor(), "", 0, 0, port_.Address(), sizeof(sockaddr_in));
        thread_.join();
    }
    NameServer(const NameServer&) = delete;
    NameServer& operator=(const NameServer&) = delete;

private:
    // A signal may meet this thread, too.
    void Serve() const {
        ssize_t count = -1;
        while (count != 0) {
            count = ServeOne();
            if (count < 0 && errno != EINTR) return;
        }
    }
    // The length of the question.
    ssize_t ServeOne() const {
        char query[512];
        sockaddr_in peer = {};
        socklen_t length = sizeof peer;
        auto* const from = static_cast<sockaddr*>(static_cast<void*>(&peer));
        const ssize_t count = ::recvfrom(port_.Descriptor(), query, sizeof query, 0, from, &length);
        if (count <= 0) return count;
        std::this_thread::sleep_for(pause_);
        const std::string reply = Answer({query, static_cast<std::size_t>(count)});
        ::sendto(port_.Descriptor(), reply.data(), reply.size(), 0, from, length);
        return count;
    }

    NameServerPort port_;
    std::chrono::milliseconds pause_;
    std::thread thread_;
};

constexpr const char* PatientSettings = "nameserver 127.0.0.1\noptions timeout:30 attempts:1\n";
constexpr const char* HastySettings = "nameserver 127.0.0.1\noptions timeout:1 attempts:1\n";

void WithResolverSettings(const std::string& settings, const std::string& hosts,
                          const std::string& hostName, const std::function<void()>& scene) {
    const ResolverFiles files;
    files.Write(settings);
    WithNames(
        hosts,
        [&] {
            const char* const path = files.Settings().c_str();
            ASSERT_EQ(::mount(path, "/etc/resolv.conf", nullptr, MS_BIND, nullptr), 0);
            scene();
        },
        hostName, "files dns");
}

void WithNameServer(const std::function<void()>& scene, int pause = 0,
                    const std::string& hostName = "lonely.example", const std::string& hosts = "") {
    WithResolverSettings(PatientSettings, hosts, hostName, [&] {
        const NameServer server{std::chrono::milliseconds(pause)};
        scene();
    });
}

TEST(NameServerAddressList, HasTheAddressesOfBothFamilies) {
    WithNameServer([] {
        const Winsock::AddressInfo ipv4 = Hints(2);
        EXPECT_EQ(AddressesOf(Resolved("both.example", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.9 80"}));
        EXPECT_EQ(AddressesOf(Resolved("both.example", "80", &ipv4)), Texts{"127.0.0.9 80"});
        EXPECT_EQ(AddressesOf(Resolved("four.example", "80")), Texts{"127.0.0.9 80"});
    });
}

TEST(NameServerAddressList, TellsWhyThereIsNone) {
    WithNameServer([] {
        List list;
        EXPECT_TRUE(Returns(11001, Resolve("unknown.example", "80", list)));
        EXPECT_TRUE(Returns(11004, Resolve("none.example", "80", list)));
        EXPECT_TRUE(Returns(11002, Resolve("failing.example", "80", list)));
        EXPECT_EQ(list, nullptr);
    });
}

TEST(NameServerAddressList, DoesNotStandInTheWayOfTheOwnName) {
    WithNameServer([] {
        EXPECT_EQ(AddressesOf(Resolved("lonely", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
    });
}

TEST(NameServerAddressList, IsAwaitedUnderAStormOfSignals) {
    constexpr int pause = 200;
    WithNameServer(
        [] {
            const SignalStorm storm({}, 1);
            EXPECT_EQ(AddressesOf(Resolved("both.example", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.9 80"}));
            EXPECT_GT(SignalStorm::SignalCount(), 0);
        },
        pause);
}

TEST(NameServerHostByName, TellsWhyThereIsNone) {
    WithNameServer([] {
        EXPECT_NE(Winsock::gethostbyname("four.example"), nullptr);
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("unknown.example")));
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyname("none.example")));
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyname("six.example")));
        EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname("failing.example")));
    });
}

TEST(NameServerHostByAddress, TellsAnUnreachableNameServerFromAnAddressWithoutName) {
    const char address[4] = {10, 1, 2, 3};
    WithNameServer([&] { EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyaddr(address, 4, 2))); });
    WithResolverSettings(PatientSettings, "", "here", [&] {
        EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyaddr(address, 4, 2)));
    });
}

// The server might know the name, and another address than the interfaces have.
TEST(NameServerAndTheOwnName, IsATemporaryFailureWhereTheServerFails) {
    WithNameServer(
        [] {
            for (const char* asked : {"", "failing.example", "failing"}) {
                List list;
                EXPECT_TRUE(Returns(11002, Resolve(asked, "80", list))) << asked;
                EXPECT_EQ(list, nullptr);
                EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname(asked))) << asked;
            }
        },
        0, "failing.example");
}

TEST(NameServerAndTheOwnName, IsFoundInTheHostsFileWhateverTheServerDoes) {
    WithNameServer([] { EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{"10.4.4.4 80"}); }, 0,
                   "failing.example", "10.4.4.4 failing.example\n");
}

TEST(NameServerAndTheOwnName, IsWhatTheServerSays) {
    WithNameServer(
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{"127.0.0.9 80"});
            EXPECT_NE(Winsock::gethostbyname(""), nullptr);
        },
        0, "four.example");
}

void ExpectInterfacesAddresses() {
    for (const char* name : {"", "LONELY.example"}) {
        EXPECT_EQ(AddressesOf(Resolved(name, "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}))
            << name;
        EXPECT_NE(Winsock::gethostbyname(name), nullptr) << name;
    }
}

// Where nobody says anything of the name, nobody knows it; none of these servers has to be awaited.
TEST(NameServerlessOwnName, HasTheInterfacesAddresses) {
    for (const char* settings : {"", "options timeout:30\n", PatientSettings,
                                 "nameserver 10.9.9.9\nnameserver fd00::9\n"}) {
        WithResolverSettings(settings, "", "lonely.example", [] {
            ExpectInterfacesAddresses();
            List list;
            EXPECT_TRUE(Returns(11002, Resolve("unknown.example", "80", list)));
        });
    }
}

TEST(NameServerlessOwnName, HasTheInterfacesAddressesThoughOneIsSetThatIsSilent) {
    WithResolverSettings(HastySettings, "", "lonely.example", [] {
        const NameServerPort silent;
        ExpectInterfacesAddresses();
    });
}

TEST(NameServerlessOwnName, HasTheInterfacesAddressesThoughOneIsSetThatRefuses) {
    WithNameServer(
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
            EXPECT_NE(Winsock::gethostbyname(""), nullptr);
        },
        0, "refused.example");
}

TEST(NameServerAndLocalhost, IsKnownWhateverTheServerSays) {
    const auto check = [] {
        EXPECT_EQ(AddressesOf(Resolved("localhost", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        EXPECT_NE(Winsock::gethostbyname("localhost"), nullptr);
    };
    WithNameServer(check);
    WithResolverSettings(HastySettings, "", "here", [&] {
        const NameServerPort silent;
        check();
    });
}

}  // namespace
}  // namespace Conformance
