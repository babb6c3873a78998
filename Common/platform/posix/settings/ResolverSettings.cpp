// Parses the file instead of asking the C library's resolver, since environment variables can
// override that. The lines have the same meaning as there.
#include "settings/ResolverSettings.h"

#include "settings/ResolverFiles.h"
#include "settings/SettingsFiles.h"

#include <arpa/inet.h>
#include <fcntl.h>

#include <optional>
#include <string_view>

namespace Posix {

namespace {

constexpr std::size_t MostServers = 3;
constexpr std::string_view Blanks = " \t";

// Splits off the string up to the separator.
std::string_view TakeUpTo(char separator, std::string_view& rest) noexcept {
    const std::size_t end = rest.find(separator);
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return taken;
}

// Returns the first word after the keyword that begins the line; none for any other line.
std::string_view WordAfter(std::string_view keyword, std::string_view line) noexcept {
    if (!line.starts_with(keyword)) return {};
    line.remove_prefix(keyword.size());
    const std::size_t begin = line.find_first_not_of(Blanks);
    if (begin == 0 || begin == std::string_view::npos) return {};
    line.remove_prefix(begin);
    return line.substr(0, line.find_first_of(Blanks));
}

// Parses an address in any of inet_aton's forms, with nothing after it.
std::optional<std::string> Ipv4Text(const std::string& word) {
    in_addr address = {};
    const bool hasTail = word.find_first_of("\r\v\f") != std::string::npos;
    if (hasTail || ::inet_aton(word.c_str(), &address) == 0) return {};
    char text[INET_ADDRSTRLEN];
    return ::inet_ntop(AF_INET, &address, text, sizeof text);
}

bool IsIpv6(const std::string& word) {
    in6_addr address = {};
    const std::string literal = word.substr(0, word.find('%'));
    return ::inet_pton(AF_INET6, literal.c_str(), &address) == 1;
}

// The resolver uses a limited number of servers of both families together.
void TakeServer(const std::string& word, ResolverSettings& settings) {
    if (settings.serverCount == MostServers) return;
    const std::optional<std::string> ipv4 = Ipv4Text(word);
    if (ipv4) settings.ipv4Servers.push_back(*ipv4);
    if (ipv4 || IsIpv6(word)) ++settings.serverCount;
}

void TakeLine(std::string_view line, ResolverSettings& settings) {
    for (const std::string_view keyword : {"domain", "search"}) {
        const std::string_view word = WordAfter(keyword, line);
        if (!word.empty()) settings.domain = word;
    }
    TakeServer(std::string(WordAfter("nameserver", line)), settings);
}

// A line ends where it does for the C library, also at a terminator. No keyword begins a comment.
ResolverSettings Parse(std::string_view text) {
    ResolverSettings settings;
    while (!text.empty()) {
        std::string_view line = TakeUpTo('\n', text);
        TakeLine(TakeUpTo('\0', line), settings);
    }
    // The root (".") means that there is no domain.
    if (settings.domain == ".") settings.domain.clear();
    return settings;
}

// The address of systemd-resolved's stub, which forwards to the servers in its own file.
bool NamesLocalServerOnly(const ResolverSettings& settings) {
    return settings.serverCount == 1 &&
           settings.ipv4Servers == std::vector<std::string>{"127.0.0.53"};
}

// Without the file the settings remain unchanged.
unsigned int ReadFile(const char* path, ResolverSettings& settings) {
    const Descriptor file = RegularFile(Descriptor(::open(path, FileFlags)));
    if (!file) return ErrorUnlessMissing();
    std::string text;
    if (const unsigned int error = ReadWhole(file, text)) return error;
    settings = Parse(text);
    return 0;
}

}  // namespace

unsigned int ReadResolverSettings(ResolverSettings& settings) {
    const unsigned int error = ReadFile(ResolverFile(), settings);
    if (!NamesLocalServerOnly(settings)) return error;
    return ReadFile(LocalServersResolverFile(), settings);
}

}  // namespace Posix
