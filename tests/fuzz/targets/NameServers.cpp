// The host's name servers and domain from its settings, against the rules of their order. The input
// is the layout, then a line for each value; the interfaces' come in pairs.
#include <VelNet/Exception.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketInitialization.h>

#include <array>
#include <optional>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "fuzz/ScriptedScene.h"
#include "unit/text/ModelCodec.h"

namespace {

using namespace Scripted;
using Fuzz::Expect;

constexpr char ParametersPath[] = "System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr std::array Names = {"Domain", "DhcpDomain", "NameServer", "DhcpNameServer"};
enum Value { Domain, DhcpDomain, NameServer, DhcpNameServer };

// The values of a key; those that are missing are not there at all.
using Values = std::array<std::optional<std::u16string>, 4>;

struct Settings {
    bool hasInterfaces = true;
    Values parameters;
    std::vector<Values> interfaces;
};

// A line that begins with a minus stands for no value.
Values TakeValues(Fuzz::Input& input) {
    Values values;
    for (auto& value : values) {
        const std::string line = Fuzz::CText(input.Line());
        if (!line.starts_with('-')) value = Model::Utf16FromUtf8(line);
    }
    return values;
}

Settings TakeSettings(Fuzz::Input& input) {
    Settings settings{.hasInterfaces = input.Below(4) != 0, .parameters = {}, .interfaces = {}};
    const unsigned int count = input.Below(4);
    input.Line();
    settings.parameters = TakeValues(input);
    for (unsigned int index = 0; index < count; ++index)
        settings.interfaces.push_back(TakeValues(input));
    return settings;
}

void Put(const std::string& path, const Values& values) {
    RegistryTree().Key(path);
    for (std::size_t index = 0; index < values.size(); ++index)
        if (values[index]) RegistryTree().Value(path, Names[index], *values[index]);
}

void Put(const Settings& settings) {
    Put(ParametersPath, settings.parameters);
    for (std::size_t index = 0; index < settings.interfaces.size(); ++index)
        Put(std::string(ParametersPath) + "\\Interfaces\\" + std::to_string(index),
            settings.interfaces[index]);
}

// The first that is not empty.
std::u16string Either(const Values& values, Value first, Value second) {
    const std::u16string text = values[first].value_or(u"");
    return text.empty() ? values[second].value_or(u"") : text;
}

std::u16string ExpectedServerText(const Settings& settings) {
    if (!settings.hasInterfaces) return Either(settings.parameters, NameServer, DhcpNameServer);
    std::u16string text;
    for (const Values& values : settings.interfaces) {
        const std::u16string own = Either(values, DhcpNameServer, NameServer);
        if (!own.empty()) text = own;
    }
    return text;
}

std::u16string ExpectedDomain(const Settings& settings) {
    if (!settings.hasInterfaces) return Either(settings.parameters, Domain, DhcpDomain);
    for (const Values& values : settings.interfaces) {
        if (values[DhcpDomain]) return *values[DhcpDomain];
        if (values[Domain]) return *values[Domain];
    }
    return {};
}

Lines TokensOf(const std::u16string& text) {
    constexpr std::u16string_view Allowed = u"0123456789.";
    Lines tokens;
    for (std::size_t begin = text.find_first_of(Allowed); begin != std::u16string::npos;) {
        const std::size_t end = std::min(text.find_first_not_of(Allowed, begin), text.size());
        tokens.emplace_back(text.begin() + static_cast<std::ptrdiff_t>(begin),
                            text.begin() + static_cast<std::ptrdiff_t>(end));
        begin = text.find_first_of(Allowed, end);
    }
    return tokens;
}

std::optional<int> UpTo255(const std::string& digits) {
    if (digits.empty()) return {};
    int number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
        if (digit == '.' || number > 255) return {};
    }
    return number;
}

// Four numbers of up to 255 in decimal digits, which is what the scripted system takes.
std::optional<std::string> AsScripted(const std::string& token) {
    std::string text;
    std::size_t begin = 0;
    for (int index = 0; index < 4; ++index) {
        const std::size_t end = index < 3 ? token.find('.', begin) : token.size();
        if (end == std::string::npos) return {};
        const std::optional<int> number = UpTo255(token.substr(begin, end - begin));
        if (!number) return {};
        text += (text.empty() ? "" : ".") + std::to_string(*number);
        begin = end + 1;
    }
    if (text == "255.255.255.255") return {};
    return text;
}

std::u16string NoneIsSetUp() {
    return u"VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is "
           u"not configured on this machine. Registry error: NameServer and DhcpNameServer keys "
           u"are not set up";
}

// What must come: addresses, or a failure's text. Also how many tokens were looked at.
struct Outcome {
    Lines addresses;
    std::u16string failure;
    std::size_t tokens;
};

Outcome ExpectedServers(const Lines& tokens) {
    Outcome outcome = {.addresses = {}, .failure = {}, .tokens = 0};
    for (const std::string& token : tokens) {
        ++outcome.tokens;
        const std::optional<std::string> address = AsScripted(token);
        if (!address) {
            outcome.failure =
                u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input "
                u"parameter is not an Internet Protocol dotted address: " +
                Widen(token);
            return outcome;
        }
        outcome.addresses.push_back(*address);
    }
    if (tokens.empty()) outcome.failure = NoneIsSetUp();
    return outcome;
}

Lines AddressesOf(const VelNet::OctetsCollection& collection) {
    Lines addresses;
    for (unsigned int index = 0; index < collection.GetCount(); ++index)
        addresses.emplace_back(collection.GetOctets(index).GetAddressString().c_str());
    return addresses;
}

void CompareServers(const Settings& settings) {
    const Lines tokens = TokensOf(ExpectedServerText(settings));
    const Outcome expected = ExpectedServers(tokens);
    try {
        const auto servers = VelNet::SocketAddress::GetLocalMachineDomainNameServer();
        Expect("the failure", expected.failure, std::u16string());
        Expect("the servers", expected.addresses, AddressesOf(*servers));
    } catch (const VelNet::Exception& failure) {
        Expect("the failure", expected.failure, Text(failure.GetMessage()));
        Expect("the code", -1, static_cast<int>(failure.GetErrorCode()));
    }
    Expect("the tokens", expected.tokens, EventsOf("inet_addr").size());
}

std::string Encoded(const std::u16string& text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    std::string bytes;
    for (std::span<const unsigned short> rest = units; !rest.empty();)
        bytes += Model::Utf8Of(Model::TakeFromUtf16(rest));
    return bytes;
}

void CompareDomain(const Settings& settings) {
    const std::u16string expected = ExpectedDomain(settings);
    const auto domain = VelNet::SocketAddress::GetLocalMachineDomain();
    if (expected.empty())
        Expect("whose name stands in", 1, CountOf("gethostname"));
    else
        Expect<std::string>("the domain", Encoded(expected), domain.c_str());
}

void Ask(const Settings& settings) {
    if (!settings.hasInterfaces) On::GetVersionExW().Returns(4).Returns(4);
    CompareServers(settings);
    CompareDomain(settings);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const Settings settings = TakeSettings(input);
    Fuzz::PlayScene([&] {
        Put(settings);
        Ask(settings);
    });
    return 0;
}
