#include "NameServer.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "NameFiles.h"
#include "ResolverFiles.h"

namespace Conformance {

namespace {

// A message of the name service, in the parts that the server looks at.
constexpr std::size_t HeaderLength = 12;
constexpr unsigned char ServerFailure = 2;
constexpr unsigned char NoSuchName = 3;
constexpr unsigned char NotImplemented = 4;
constexpr unsigned char Refused = 5;
constexpr unsigned char TypeIpv4 = 1;
constexpr unsigned char TypeName = 12;
constexpr unsigned char TypeIpv6 = 28;
constexpr unsigned char ClassInternet = 1;

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

// What stands behind the name: type and class.
std::string KindOf(const std::string& query) {
    return query.substr(HeaderLength + NameIn(query).size() + 1, 4);
}

std::string KindOf(unsigned char type) {
    return {'\0', static_cast<char>(type), '\0', ClassInternet};
}

// Whether it is a question and nothing else, for what is known, and asks for recursion alone.
bool IsPlain(const std::string& query) {
    const std::string kind = KindOf(query);
    const bool known =
        kind == KindOf(TypeIpv4) || kind == KindOf(TypeIpv6) || kind == KindOf(TypeName);
    return known && query[2] == '\1' && query.substr(4, 8) == std::string("\0\1\0\0\0\0\0\0", 8);
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

// Without the marks for the recursion, neither that it was asked for nor that it is to be had.
std::string Refusal(const std::string& query) {
    std::string reply = Reply(query, Refused, "");
    reply[2] = '\x80';
    reply[3] = Refused;
    return reply;
}

std::string Answer(const std::string& query) {
    if (!IsPlain(query)) return Reply(query, NotImplemented, "");
    const std::string name = NameIn(query);
    const std::string kind = KindOf(query);
    const std::string ipv4 = {127, 0, 0, 9};
    const std::string ipv6 = std::string(15, '\0') + '\1';
    if (name == "failing.example.") return Reply(query, ServerFailure, "");
    if (name.starts_with("refused.")) return Refusal(query);
    const bool four = name == "both.example." || name == "four.example.";
    const bool six = name == "both.example." || name == "six.example.";
    if (!four && !six && name != "none.example.") return Reply(query, NoSuchName, "");
    if (kind == KindOf(TypeIpv4) && four) return Reply(query, 0, Record(TypeIpv4, ipv4));
    if (kind == KindOf(TypeIpv6) && six) return Reply(query, 0, Record(TypeIpv6, ipv6));
    return Reply(query, 0, "");
}

}  // namespace

NameServerPort::NameServerPort() {
    address_.sin_family = AF_INET;
    address_.sin_port = htons(53);
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(descriptor_, Address(), sizeof address_), 0);
}

NameServerPort::~NameServerPort() {
    ::close(descriptor_);
}

const sockaddr* NameServerPort::Address() const {
    return static_cast<const sockaddr*>(static_cast<const void*>(&address_));
}

int NameServerPort::TakeQuestions() const {
    int count = 0;
    char query[512];
    while (::recv(descriptor_, query, sizeof query, MSG_DONTWAIT) >= 0)
        ++count;
    return count;
}

NameServer::NameServer(std::chrono::milliseconds pause)
    : pause_(pause), thread_([this] { Serve(); }) {}

// An empty question ends it.
NameServer::~NameServer() {
    ::sendto(port_.Descriptor(), "", 0, 0, port_.Address(), sizeof(sockaddr_in));
    thread_.join();
}

std::vector<std::string> NameServer::Asked() const {
    const std::lock_guard guard(lock_);
    return asked_;
}

// A signal may meet this thread, too.
void NameServer::Serve() {
    ssize_t count = -1;
    while (count != 0) {
        count = ServeOne();
        if (count < 0 && errno != EINTR) return;
    }
}

// The length of the question.
ssize_t NameServer::ServeOne() {
    char query[512];
    sockaddr_in peer = {};
    socklen_t length = sizeof peer;
    auto* const from = static_cast<sockaddr*>(static_cast<void*>(&peer));
    const ssize_t count = ::recvfrom(port_.Descriptor(), query, sizeof query, 0, from, &length);
    if (count <= 0) return count;
    std::this_thread::sleep_for(pause_);
    const std::string reply = TakeDown({query, static_cast<std::size_t>(count)});
    ::sendto(port_.Descriptor(), reply.data(), reply.size(), 0, from, length);
    return count;
}

std::string NameServer::TakeDown(const std::string& query) {
    const std::lock_guard guard(lock_);
    asked_.push_back(NameIn(query));
    return Answer(query);
}

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

void WithNameServer(const std::function<void()>& scene, int pause, const std::string& hostName,
                    const std::string& hosts) {
    WithResolverSettings(PatientSettings, hosts, hostName, [&] {
        const NameServer server{std::chrono::milliseconds(pause)};
        scene();
    });
}

}  // namespace Conformance
