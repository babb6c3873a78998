#include <fcntl.h>
#include <loopback/Machine.h>
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace Machine {

namespace {

union SocketAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

bool WriteFile(const char* path, const std::string& text) {
    return static_cast<bool>(std::ofstream(path) << text << std::flush);
}

// A user without privileges has them in a world of his own, which a process with one thread may
// enter. His files stay his there.
bool LeaveWithUser(int what) {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(what | CLONE_NEWUSER) == 0 &&
           WriteFile("/proc/self/uid_map", user + " " + user + " 1") &&
           WriteFile("/proc/self/setgroups", "deny") &&
           WriteFile("/proc/self/gid_map", group + " " + group + " 1");
}

bool Leave(int what) {
    return unshare(what) == 0 || LeaveWithUser(what);
}

// Owns a descriptor that serves to configure the network.
class ControlSocket {
public:
    explicit ControlSocket(int family = AF_INET)
        : descriptor_(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~ControlSocket() { close(descriptor_); }
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    template <class Request>
    bool Ask(unsigned long what, Request& request) const {
        return ioctl(descriptor_, what, &request) == 0;
    }

private:
    int descriptor_;
};

char loopbackName[] = "lo";

bool RaiseLoopback() {
    ifreq request = {};
    std::strcpy(request.ifr_name, loopbackName);
    request.ifr_flags = IFF_UP | IFF_MULTICAST;
    return ControlSocket().Ask(SIOCSIFFLAGS, request);
}

sockaddr Ipv4(unsigned int address) {
    SocketAddress result = {};
    result.ipv4.sin_family = AF_INET;
    result.ipv4.sin_addr.s_addr = htonl(address);
    return result.any;
}

bool SendIpv4GroupsToLoopback() {
    rtentry route = {};
    route.rt_dst = Ipv4(0xE0000000);
    route.rt_genmask = Ipv4(0xF0000000);
    route.rt_flags = RTF_UP;
    route.rt_dev = loopbackName;
    return ControlSocket().Ask(SIOCADDRT, route);
}

bool SendIpv6GroupsToLoopback() {
    in6_rtmsg route = {};
    route.rtmsg_dst.s6_addr[0] = 0xFF;
    route.rtmsg_dst_len = 8;
    route.rtmsg_flags = RTF_UP;
    route.rtmsg_metric = 1;
    route.rtmsg_ifindex = static_cast<int>(if_nametoindex(loopbackName));
    return ControlSocket(AF_INET6).Ask(SIOCADDRT, route);
}

// The part of the path that exists already.
std::filesystem::path ExistingPartOf(std::filesystem::path path) {
    while (!std::filesystem::exists(path)) {
        path = path.parent_path();
    }
    return path;
}

bool CoverWithEmptyFolder(const std::string& path) {
    return Leave(CLONE_NEWNS) && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", path.c_str(), "tmpfs", 0, nullptr) == 0;
}

std::filesystem::path FolderOf(std::string key) {
    std::replace(key.begin(), key.end(), '\\', '/');
    return std::filesystem::path(VELSOCK_REGISTRY_ROOT) / "HKLM" / key;
}

}  // namespace

Name::Name(const std::string& name) : isSet_(false) {
    char former[256] = {};
    if (gethostname(former, sizeof former - 1) != 0) return;
    former_ = former;
    isSet_ = Leave(CLONE_NEWUTS) && sethostname(name.data(), name.size()) == 0;
}

Name::~Name() {
    if (isSet_) (void)!sethostname(former_.data(), former_.size());
}

OwnNetwork::OwnNetwork()
    : isUp_(false), former_(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {
    isUp_ = former_ != -1 && Leave(CLONE_NEWNET) && RaiseLoopback() && SendIpv4GroupsToLoopback();
    // A machine may have no IPv6, and groups of IPv4 all the same.
    if (isUp_) SendIpv6GroupsToLoopback();
}

OwnNetwork::~OwnNetwork() {
    // Without privileges there is no way back; the own network is as good for all other tests.
    setns(former_, CLONE_NEWNET);
    close(former_);
}

Settings::Settings() : areWritable_(false), place_(ExistingPartOf(VELSOCK_REGISTRY_ROOT).string()) {
    areWritable_ = place_ != "/" && CoverWithEmptyFolder(place_);
}

Settings::~Settings() {
    if (areWritable_) umount2(place_.c_str(), MNT_DETACH);
}

void Settings::MakeKey(const std::string& path) {
    std::filesystem::create_directories(FolderOf(path));
}

void Settings::Write(const std::string& path, const std::string& name, const std::string& text) {
    MakeKey(path);
    // One line feed at the end is not part of the value.
    std::ofstream(FolderOf(path) / name, std::ios::binary) << text << '\n';
}

}  // namespace Machine
