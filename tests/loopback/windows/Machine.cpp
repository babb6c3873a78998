// winsock2.h comes before everything that may include windows.h.
#include <winsock2.h>
// Behind it.
#include <loopback/Machine.h>
#include <support/Wine.h>
#include <windows.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <stdexcept>

namespace Machine {

namespace {

union SocketAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

// Where the system keeps the name that it has told to programs since it started.
constexpr const char* ActiveName =
    "System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName";

bool WriteText(const std::string& path, const std::string& name, const std::string& text) {
    return RegSetKeyValueA(HKEY_LOCAL_MACHINE, path.c_str(), name.c_str(), REG_SZ, text.c_str(),
                           static_cast<DWORD>(text.size() + 1)) == ERROR_SUCCESS;
}

std::string ReadText(const std::string& path, const std::string& name) {
    char text[256] = {};
    DWORD size = sizeof text - 1;
    RegGetValueA(HKEY_LOCAL_MACHINE, path.c_str(), name.c_str(), RRF_RT_REG_SZ, nullptr, text,
                 &size);
    return text;
}

// The interfaces' list starts Winsock for itself: a test may have no layer up yet.
bool HasLoopbackOnly() {
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) return false;
    INTERFACE_INFO interfaces[64] = {};
    DWORD size = 0;
    const SOCKET asked = socket(AF_INET, SOCK_DGRAM, 0);
    const bool told = WSAIoctl(asked, SIO_GET_INTERFACE_LIST, nullptr, 0, interfaces,
                               sizeof interfaces, &size, nullptr, nullptr) == 0;
    closesocket(asked);
    WSACleanup();
    return told && std::all_of(interfaces, interfaces + size / sizeof interfaces[0],
                               [](const INTERFACE_INFO& one) {
                                   return (one.iiFlags & IFF_LOOPBACK) != 0 ||
                                          (one.iiFlags & IFF_UP) == 0;
                               });
}

}  // namespace

Name::Name(const std::string& name) : isSet_(false), former_(ReadText(ActiveName, "ComputerName")) {
    isSet_ = Support::RunsOnWine() && WriteText(ActiveName, "ComputerName", name);
}

Name::~Name() {
    if (isSet_) WriteText(ActiveName, "ComputerName", former_);
}

OwnNetwork::OwnNetwork() : isUp_(HasLoopbackOnly()), former_(-1) {}

OwnNetwork::~OwnNetwork() = default;

Settings::Settings() : areWritable_(Support::RunsOnWine()) {}

// The longest paths first: the system deletes a key only when it has none below it.
Settings::~Settings() {
    for (auto path = made_.rbegin(); path != made_.rend(); ++path) {
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, path->c_str());
    }
}

void Settings::MakeKey(const std::string& path) {
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('\\', end + 1);
        const std::string part = path.substr(0, end);
        HKEY key = nullptr;
        DWORD what = 0;
        if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, part.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                            &key, &what) != ERROR_SUCCESS) {
            throw std::runtime_error("no key " + part);
        }
        RegCloseKey(key);
        if (what == REG_CREATED_NEW_KEY) made_.push_back(part);
    }
}

void Settings::Write(const std::string& path, const std::string& name, const std::string& text) {
    MakeKey(path);
    if (!WriteText(path, name, text)) throw std::runtime_error("no value " + name);
}

}  // namespace Machine
