#include "SystemSettings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

namespace VelSockTools {

namespace {

namespace fs = std::filesystem;

constexpr const char* Root = VELSOCK_REGISTRY_ROOT;

bool IsSameName(const std::string& one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) {
                          return std::tolower(static_cast<unsigned char>(left)) ==
                                 std::tolower(static_cast<unsigned char>(right));
                      });
}

std::optional<fs::path> FindBelow(const fs::path& folder, std::string_view name) {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        if (IsSameName(entry.path().filename().string(), name)) return entry.path();
    }
    return {};
}

// The key that hides the resolver's settings as soon as it exists.
std::optional<fs::path> FindParameters() {
    constexpr std::array<std::string_view, 6> keys{"HKLM",     "System", "CurrentControlSet",
                                                   "Services", "Tcpip",  "Parameters"};
    std::optional<fs::path> place = Root;
    for (const std::string_view key : keys) {
        if (place) place = FindBelow(*place, key);
    }
    return place;
}

std::string TextIn(const fs::path& file) {
    constexpr std::size_t most = 200;
    std::ifstream stream(file, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text.substr(0, most);
}

// The server that systemd runs for this host alone, which asks others.
bool NamesLocalServerAlone(const char* resolverFile) {
    std::ifstream stream(resolverFile);
    int servers = 0;
    bool isLocal = false;
    for (std::string word, value; stream >> word;) {
        if (word != "nameserver" || !(stream >> value)) continue;
        ++servers;
        isLocal = value == "127.0.0.53";
    }
    return servers == 1 && isLocal;
}

}  // namespace

std::string PlaceOfSettings() {
    std::error_code ignored;
    const bool exists = fs::is_directory(Root, ignored);
    return std::string(Root) + (exists ? "" : ", which does not exist");
}

std::vector<std::string> ListSettings() {
    constexpr std::size_t most = 100;
    std::vector<std::string> lines;
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator place(Root, options, error), end;
         !error && place != end && lines.size() < most; place.increment(error)) {
        if (!place->is_regular_file(error)) continue;
        lines.push_back(place->path().lexically_relative(Root).string() + ": " +
                        TextIn(place->path()));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string PlaceOfNameServers() {
    constexpr const char* resolverFile = "/etc/resolv.conf";
    constexpr const char* behindLocalServer = "/run/systemd/resolve/resolv.conf";
    if (const auto key = FindParameters()) return "the settings tree, " + key->string();
    std::error_code ignored;
    const bool isBehind =
        NamesLocalServerAlone(resolverFile) && fs::exists(behindLocalServer, ignored);
    return isBehind ? behindLocalServer : resolverFile;
}

}  // namespace VelSockTools
