#include "Options.h"

#include <VelLog/LogControl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "CommandLine.h"
#include "SystemNetwork.h"

namespace VelSockCat {

namespace {

constexpr unsigned int AnyNumber = std::numeric_limits<unsigned int>::max();

// The whole string must be decimal digits of a number up to the limit: no sign, no space, nothing
// after it.
unsigned int ParseNumber(const std::string& text, unsigned int limit, const std::string& what) {
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number > limit) {
        Refuse("'" + text + "' is not a " + what + " (a number up to " + std::to_string(limit) +
               ")");
    }
    return number;
}

unsigned int ParseMilliseconds(const std::string& text) {
    return ParseNumber(text, AnyNumber, "number of milliseconds");
}

// Seconds with at most three decimals, as milliseconds.
unsigned int ParseSeconds(const std::string& text) {
    constexpr std::size_t decimals = 3;
    constexpr unsigned int most = AnyNumber / 1000 - 1;
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string fraction = text.substr(std::min(point + 1, text.size()));
    if (fraction.size() > decimals || (point < text.size() && fraction.empty())) {
        Refuse("'" + text + "' is not a number of seconds with at most three decimals");
    }
    fraction.resize(decimals, '0');
    return ParseNumber(text.substr(0, point), most, "number of seconds") * 1000 +
           ParseNumber(fraction, AnyNumber, "number of seconds");
}

// A number of bytes, or of a thousand, a million or a thousand million of them.
unsigned int ParseRate(const std::string& text) {
    const std::string what = "number of bytes per second";
    const std::string units = "KMG";
    const std::size_t unit = text.empty() ? std::string::npos : units.find(text.back());
    unsigned int factor = 1;
    for (std::size_t step = 0; unit != std::string::npos && step <= unit; ++step)
        factor *= 1000;
    const std::string digits = factor == 1 ? text : text.substr(0, text.size() - 1);
    const unsigned int number = ParseNumber(digits, AnyNumber / factor, what);
    if (number == 0) Refuse("nothing passes at a rate of 0");
    return number * factor;
}

Patience ParsePatience(const std::string& text) {
    if (text == "-1") return {true, 0};
    return {false, ParseSeconds(text)};
}

std::string CategoryOf(const std::string& name) {
    struct Row {
        std::string_view name;
        std::string_view category;
    };
    static constexpr std::array<Row, 4> rows{{{"connection", VelLog::CATEGORY_CONNECTION_TRACE},
                                              {"packet", VelLog::CATEGORY_PACKET_TRACE},
                                              {"verbose", VelLog::CATEGORY_VERBOSE_PACKET_TRACE},
                                              {"error", VelLog::CATEGORY_ERROR}}};
    const auto* const row =
        std::find_if(rows.begin(), rows.end(), [&](const Row& each) { return each.name == name; });
    if (row == rows.end()) {
        Refuse("'" + name + "' is none of connection, packet, verbose, error");
    }
    return std::string(row->category);
}

std::vector<std::string> ParseCategories(const std::string& list) {
    std::vector<std::string> categories;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        categories.push_back(CategoryOf(list.substr(begin, end - begin)));
        begin = end + 1;
    }
    return categories;
}

void TakeFamily(Arguments& arguments, SocketFamily family) {
    if (arguments.chosenFamily.value_or(family) != family) {
        Refuse("'--classic' and '--xt' exclude each other");
    }
    arguments.chosenFamily = family;
}

void TakeDirection(Arguments& arguments, Direction direction) {
    if (arguments.direction != Direction::Both && arguments.direction != direction) {
        Refuse("'--send-only' and '--receive-only' exclude each other");
    }
    arguments.direction = direction;
}

void TakeVersion(Arguments& arguments, VelNet::SocketXt::ADDR_FAMILY version) {
    if (arguments.version != VelNet::SocketXt::FAMILY_UNKNOWN && arguments.version != version) {
        Refuse("'-4' and '-6' exclude each other");
    }
    arguments.version = version;
}

template <class... Commands>
constexpr unsigned int SetOf(Commands... commands) {
    return ((1U << static_cast<unsigned int>(commands)) | ...);
}

constexpr unsigned int Connections = SetOf(Command::Listen, Command::Connect);
constexpr unsigned int DatagramSenders = SetOf(Command::UdpSend, Command::Broadcast);
constexpr unsigned int DatagramReceivers = SetOf(Command::UdpListen, Command::Multicast);
constexpr unsigned int Datagrams = DatagramSenders | DatagramReceivers;
constexpr unsigned int Services = SetOf(Command::Echo, Command::Discard, Command::Chargen);
constexpr unsigned int Servers = Services | SetOf(Command::Relay);
constexpr unsigned int Acceptors = Servers | SetOf(Command::Listen);
constexpr unsigned int Transfers = Connections | Datagrams | Servers;
constexpr unsigned int All = Transfers | SetOf(Command::Ports);

using Text = const std::string&;

constexpr std::array<Option, 28> Options{{
    {"--classic", "", All, false,
     [](Arguments& arguments, Text) { TakeFamily(arguments, SocketFamily::Classic); }},
    {"--xt", "", All, false,
     [](Arguments& arguments, Text) { TakeFamily(arguments, SocketFamily::Extended); }},
    {"--ipv4", "-4", All, false,
     [](Arguments& arguments, Text) { TakeVersion(arguments, VelNet::SocketXt::FAMILY_IPV4); }},
    {"--ipv6", "-6", All, false,
     [](Arguments& arguments, Text) { TakeVersion(arguments, VelNet::SocketXt::FAMILY_IPV6); }},
    {"--send-only", "", Connections, false,
     [](Arguments& arguments, Text) { TakeDirection(arguments, Direction::SendOnly); }},
    {"--receive-only", "", Connections, false,
     [](Arguments& arguments, Text) { TakeDirection(arguments, Direction::ReceiveOnly); }},
    {"", "-N", Connections, false,
     [](Arguments& arguments, Text) { arguments.endsWithInput = true; }},
    {"", "-q", Connections, true,
     [](Arguments& arguments, Text value) { arguments.quitAfter = ParsePatience(value); }},
    {"", "-w", SetOf(Command::Connect, Command::Relay, Command::Ports), true,
     [](Arguments& arguments, Text value) { arguments.connectTimeout = ParseSeconds(value); }},
    {"--connect-timeout", "", SetOf(Command::Connect, Command::Relay, Command::Ports), true,
     [](Arguments& arguments, Text value) { arguments.connectTimeout = ParseMilliseconds(value); }},
    {"--accept-timeout", "", Acceptors, true,
     [](Arguments& arguments, Text value) { arguments.acceptTimeout = ParseMilliseconds(value); }},
    {"--reuse", "", Acceptors | SetOf(Command::UdpListen), false,
     [](Arguments& arguments, Text) { arguments.reuseAddress = true; }},
    {"--answers", "", DatagramSenders, true,
     [](Arguments& arguments, Text value) {
         arguments.answers = ParseNumber(value, AnyNumber, "number of answers");
     }},
    {"--from", "", Datagrams, false,
     [](Arguments& arguments, Text) { arguments.showSenders = true; }},
    {"--size", "", DatagramSenders, true,
     [](Arguments& arguments, Text value) {
         arguments.datagramSize = ParseNumber(value, 65535, "size of a datagram");
     }},
    {"--count", "", Datagrams | Services, true,
     [](Arguments& arguments, Text value) {
         arguments.datagramCount = ParseNumber(value, AnyNumber, "number of datagrams");
     }},
    {"--recv-timeout", "", Transfers, true,
     [](Arguments& arguments, Text value) { arguments.receiveTimeout = ParseMilliseconds(value); }},
    {"--send-timeout", "", Connections | DatagramSenders | Servers, true,
     [](Arguments& arguments, Text value) { arguments.sendTimeout = ParseMilliseconds(value); }},
    {"--keep", "-k", Acceptors, false,
     [](Arguments& arguments, Text) { arguments.keepsAccepting = true; }},
    {"--udp", "-u", Servers, false,
     [](Arguments& arguments, Text) { arguments.usesDatagrams = true; }},
    {"--hex", "-x", Transfers, false,
     [](Arguments& arguments, Text) { arguments.showsBytes = true; }},
    {"--stats", "", Transfers, false,
     [](Arguments& arguments, Text) { arguments.showsTotals = true; }},
    {"--json", "", All | SetOf(Command::Explain), false,
     [](Arguments& arguments, Text) { arguments.tellsInJson = true; }},
    {"--rate", "",
     Connections | DatagramSenders | SetOf(Command::Relay, Command::Echo, Command::Chargen), true,
     [](Arguments& arguments, Text value) { arguments.rate = ParseRate(value); }},
    {"--verbose", "-v", All, false, [](Arguments& arguments, Text) { arguments.verbose = true; }},
    {"--trace", "", All, true,
     [](Arguments& arguments, Text value) { arguments.categories = ParseCategories(value); }},
    {"--log-file", "", All, true,
     [](Arguments& arguments, Text value) { arguments.logFile = value; }},
    {"--log", "", All, true, [](Arguments& arguments, Text value) { arguments.log = value; }},
}};

}  // namespace

bool Option::BelongsTo(Command command) const noexcept {
    return (commands & SetOf(command)) != 0;
}

const Option* FindOption(const std::string& name) {
    const auto* const option =
        std::find_if(Options.begin(), Options.end(),
                     [&](const Option& each) { return name == each.name || name == each.letter; });
    return option == Options.end() ? nullptr : option;
}

unsigned short ParsePort(const std::string& text, bool datagrams) {
    constexpr unsigned int highest = std::numeric_limits<unsigned short>::max();
    const bool isNumber =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber) return static_cast<unsigned short>(ParseNumber(text, highest, "port"));
    const auto port = VelSockTools::FindServicePort(text, datagrams);
    if (!port) Refuse("'" + text + "' is neither a port nor a service that this computer knows");
    return *port;
}

void Refuse(const std::string& text) {
    VelSockTools::RefuseUsage("velsock-cat", text);
}

}  // namespace VelSockCat
