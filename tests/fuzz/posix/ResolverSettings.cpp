// The settings of the system's resolver, against the C library, which reads the same file. The
// input is the file. Both see it in a name space of this process's own.
#include <Platform/Registry.h>
#include <arpa/inet.h>
#include <resolv.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "fuzz/Fuzzing.h"
#include "support/Text.h"

// Stand in for the product's answers where the settings are.
namespace Posix {
const char* RegistryRoot() noexcept;
const char* RegistryRoot() noexcept {
    return "/nonexistent";
}
const char* ResolverFile() noexcept;
const char* ResolverFile() noexcept {
    return "/etc/resolv.conf";
}
const char* LocalServersResolverFile() noexcept;
const char* LocalServersResolverFile() noexcept {
    return "/etc/local-servers.conf";
}
}  // namespace Posix

namespace {

constexpr int Skipped = 77;

// What the C library would use if the host's name had a domain must not come into it.
bool HasOwnFiles() {
    if (::unshare(CLONE_NEWNS | CLONE_NEWUTS) != 0 &&
        ::unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWUTS) != 0)
        return false;
    ::unsetenv("LOCALDOMAIN");
    ::unsetenv("RES_OPTIONS");
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("own", "/etc", "tmpfs", 0, nullptr) == 0 && ::sethostname("own", 3) == 0;
}

void EnterOwnFiles() {
    if (HasOwnFiles()) return;
    std::fputs("no name space of its own for this process\n", stderr);
    std::exit(Skipped);
}

void Write(const char* path, std::string_view text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

struct Settings {
    std::string domain;
    std::string servers;

    bool operator==(const Settings&) const = default;
};

void PrintTo(const Settings& settings, std::ostream* stream) {
    *stream << testing::PrintToString(settings.domain) << " with "
            << testing::PrintToString(settings.servers);
}

// The C library reads the file anew if something has been preset.
Settings SystemsSettings() {
    _res.retrans = 7;
    Fuzz::Expect("res_init", 0, ::res_init());
    Settings settings;
    if (_res.dnsrch[0] != nullptr) settings.domain = _res.dnsrch[0];
    if (settings.domain == ".") settings.domain.clear();
    for (int index = 0; index < _res.nscount; ++index) {
        const sockaddr_in& server = _res.nsaddr_list[index];
        char text[INET_ADDRSTRLEN] = "";
        if (server.sin_family != AF_INET) continue;
        ::inet_ntop(AF_INET, &server.sin_addr, text, sizeof text);
        settings.servers += (settings.servers.empty() ? "" : " ") + std::string(text);
    }
    return settings;
}

struct KeyCloser {
    void operator()(Registry::Key* key) const { Registry::CloseKey(key); }
};

std::string Bytes(const System::WideUnits& units) {
    std::string bytes;
    for (const unsigned short unit : units)
        bytes += unit < 0x80 ? static_cast<char>(unit) : '?';
    return bytes;
}

std::string ValueOf(Registry::Key& key, const char* name) {
    System::WideUnits text;
    unsigned int error = 0;
    const bool exists = Registry::ReadValue(key, Support::Wide(name).data(), &text, error);
    Fuzz::Expect("the error of reading", 0U, error);
    Fuzz::Expect("whether an empty value exists", false, exists && text.empty());
    return Bytes(text);
}

Settings LibrarysSettings() {
    unsigned int error = 0;
    const auto path = Support::Wide("System\\CurrentControlSet\\Services\\Tcpip\\Parameters");
    const std::unique_ptr<Registry::Key, KeyCloser> key(
        Registry::OpenKey(Registry::LocalMachine, path.data(), error));
    Fuzz::Expect("the error of opening", 0U, error);
    Fuzz::Expect("whether there is a key", true, key != nullptr);
    return {.domain = ValueOf(*key, "Domain"), .servers = ValueOf(*key, "NameServer")};
}

// The C library takes itself for a server if there is none.
void Compare(Settings expected, Settings actual) {
    if (actual.servers.empty() && expected.servers == "127.0.0.1") expected.servers.clear();
    Fuzz::Expect("the settings", expected, actual);
}

bool IsAscii(std::string_view text) {
    for (const char character : text)
        if (static_cast<unsigned char>(character) > 0x7F) return false;
    return true;
}

// The C library has room for 255 characters of domains, and ends the process over some longer
// lists.
bool HasLongLine(std::string_view text) {
    constexpr std::size_t Longest = 255;
    std::size_t length = 0;
    for (const char character : text) {
        length = character == '\n' ? 0 : length + 1;
        if (length > Longest) return true;
    }
    return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const bool entered = (EnterOwnFiles(), true);
    const std::string text(Fuzz::Input(data, size).Rest());
    if (!entered || !IsAscii(text) || HasLongLine(text)) return 0;
    Write("/etc/resolv.conf", text);
    const Settings system = SystemsSettings();
    if (system.servers == "127.0.0.53" && _res.nscount == 1) {
        Write("/etc/local-servers.conf", "domain local.example\nnameserver 10.9.9.9\n");
        Compare({.domain = "local.example", .servers = "10.9.9.9"}, LibrarysSettings());
    } else {
        Compare(system, LibrarysSettings());
    }
    return 0;
}
