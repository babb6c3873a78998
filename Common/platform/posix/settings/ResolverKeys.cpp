#include "settings/ResolverKeys.h"

#include "Text/Utf8.h"
#include "settings/ResolverSettings.h"

#include <iterator>

namespace Posix {

namespace {

// The only path below the hive.
constexpr std::string_view Way[] = {"System",     "CurrentControlSet", "Services", "Tcpip",
                                    "Parameters", "Interfaces",        "Resolver"};
constexpr std::size_t ParametersDepth = 5;
constexpr std::size_t InterfacesDepth = 6;

// Follows the path from a depth on that way. Returns the depth it leads to, or 0 if it leaves the
// way: even an empty path is a step.
std::size_t Descend(std::size_t depth, Name path) {
    const auto step = [&depth](Name part) {
        return depth < std::size(Way) && IsNamed(part, Way[depth++]);
    };
    return TakeParts(path, step) ? depth : 0;
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) text += ' ';
        text += word;
    }
    return text;
}

class ResolverKey final : public Registry::Key {
public:
    ResolverKey(std::size_t depth, ResolverSettings settings)
        : depth_(depth), settings_(std::move(settings)) {}

    std::unique_ptr<Key> Open(Name path, unsigned int& error) const override {
        error = 0;
        const std::size_t depth = Descend(depth_, path);
        return depth > 0 ? std::make_unique<ResolverKey>(depth, settings_) : nullptr;
    }

    bool Read(Name name, System::WideUnits* text, unsigned int& error) const override {
        error = 0;
        const std::string value = Value(name);
        if (value.empty()) return false;
        if (text != nullptr) *text = Text::Utf16FromUtf8(value);
        return true;
    }

    std::vector<System::WideUnits> SubKeys(unsigned int& error) const override {
        error = 0;
        std::vector<System::WideUnits> names;
        if (depth_ < std::size(Way)) names.push_back(Text::Utf16FromUtf8(Way[depth_]));
        return names;
    }

private:
    // Returns the empty string for a value that does not exist.
    std::string Value(Name name) const {
        if (depth_ == InterfacesDepth) return {};
        if (IsNamed(name, "Domain")) return settings_.domain;
        if (IsNamed(name, "NameServer")) return Joined(settings_.ipv4Servers);
        return {};
    }

    std::size_t depth_;
    ResolverSettings settings_;
};

}  // namespace

std::optional<Name> ResolverParametersPath(Name path) {
    if (Descend(0, path) < ParametersDepth) return {};
    std::size_t partsLeft = ParametersDepth;
    Name parameters = path;
    TakeParts(path, [&](Name part) {
        parameters.end = part.end;
        return --partsLeft > 0;
    });
    return parameters;
}

std::unique_ptr<Registry::Key> OpenResolverKey(Name path, unsigned int& error) {
    ResolverSettings settings;
    error = ReadResolverSettings(settings);
    if (error != 0) return nullptr;
    return std::make_unique<ResolverKey>(Descend(0, path), std::move(settings));
}

}  // namespace Posix
