// What the settings of a resolver mean, held against the system's resolver, and whatever else a
// file may hold.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <resolv.h>
#include <sys/mount.h>

#include <algorithm>
#include <random>

#include "NameFiles.h"
#include "ResolverScene.h"

namespace Conformance {
namespace {

using ResolverFile = ResolverKeys;

// Settings made of pieces that mean something, and of noise.
class SettingsMaker {
public:
    std::string Make() {
        std::string text;
        const std::size_t lines = Any(8);
        for (std::size_t line = 0; line < lines; ++line) {
            const std::size_t words = Any(5);
            for (std::size_t word = 0; word < words; ++word)
                text += Word() + OneOf({" ", "\t", "  ", " \t ", "", "\r", "\v"});
            text += OneOf({"\n", "\n", "\n", "\r\n", "\n\n", " \n", std::string("\0\n", 2)});
        }
        return text;
    }
    std::string Noise() {
        std::string text(Any(200), '\0');
        for (char& character : text)
            character = static_cast<char>(Any(256));
        return text;
    }
    std::size_t Any(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(generator_);
    }

private:
    std::string OneOf(const std::vector<std::string>& choices) {
        return choices[Any(choices.size())];
    }
    std::string Word() {
        static const std::vector<std::string> words = {"domain",
                                                       "search",
                                                       "nameserver",
                                                       "nameserver",
                                                       "nameserver ",
                                                       "options",
                                                       "#",
                                                       ";",
                                                       "one.example",
                                                       "two.example",
                                                       "10.0.0.1",
                                                       "10.0.0.2",
                                                       "192.168.1.1",
                                                       "10.3",
                                                       "0x0a000001",
                                                       "012.0.0.7",
                                                       "::1",
                                                       "fe80::1%lo",
                                                       "2001:db8::5",
                                                       "1.2.3.4.5",
                                                       "256.1.1.1",
                                                       ".",
                                                       "",
                                                       "10.0.0.1x"};
        if (Any(20) > 0) return OneOf(words);
        std::string noise;
        for (std::size_t count = Any(4); count > 0; --count)
            noise += static_cast<char>(Any(256));
        return noise;
    }

    std::mt19937 generator_{20'240'229};
};

std::vector<std::string> WordsOf(const std::u16string& bracketed) {
    std::vector<std::string> words;
    std::string word;
    for (const char16_t unit : bracketed) {
        if (unit == u'[') continue;
        if (unit != u' ' && unit != u']') {
            word += static_cast<char>(unit);
            continue;
        }
        words.push_back(word);
        word.clear();
    }
    return words;
}

bool IsDotted(const std::string& text) {
    in_addr address = {};
    return ::inet_pton(AF_INET, text.c_str(), &address) == 1;
}

TEST_F(ResolverFile, MakesWellFormedValuesWhateverItHolds) {
    SettingsMaker maker;
    for (int round = 0; round < 20'000; ++round) {
        const std::string settings = maker.Any(2) == 0 ? maker.Noise() : maker.Make();
        files_.Write(settings);
        const Key key = Open(ResolverPath);
        ASSERT_NE(key, nullptr);
        const std::u16string domain = Read(key, u"Domain");
        EXPECT_EQ(domain.find_first_of(u" \t\n\0"), std::u16string::npos);
        EXPECT_NE(domain, u"[]");
        const std::u16string servers = Read(key, u"NameServer");
        if (servers == u"none") continue;
        const std::vector<std::string> words = WordsOf(servers);
        EXPECT_LE(words.size(), 3U);
        EXPECT_TRUE(std::all_of(words.begin(), words.end(), IsDotted)) << settings;
    }
}

// What the C library's resolver makes of the same settings.
class SystemsResolver {
public:
    // The file takes the place of the machine's for the lifetime.
    explicit SystemsResolver(const std::filesystem::path& settings) {
        covered_ = ::mount(settings.c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr) == 0;
        known_ = covered_ && ::res_ninit(&state_) == 0;
    }
    ~SystemsResolver() {
        if (known_) ::res_nclose(&state_);
        if (covered_) ::umount("/etc/resolv.conf");
    }
    SystemsResolver(const SystemsResolver&) = delete;
    SystemsResolver& operator=(const SystemsResolver&) = delete;

    bool IsKnown() const { return known_; }
    std::string Domain() const { return state_.dnsrch[0] != nullptr ? state_.dnsrch[0] : ""; }
    std::vector<std::string> Servers() const {
        std::vector<std::string> servers;
        for (int index = 0; index < state_.nscount; ++index) {
            const sockaddr_in& server = state_.nsaddr_list[index];
            char text[INET_ADDRSTRLEN];
            if (server.sin_family != AF_INET) continue;
            servers.emplace_back(::inet_ntop(AF_INET, &server.sin_addr, text, sizeof text));
        }
        return servers;
    }

private:
    struct __res_state state_ = {};
    bool covered_ = false;
    bool known_ = false;
};

std::u16string Widened(const std::string& text) {
    std::u16string wide;
    for (const char character : text)
        wide += static_cast<unsigned char>(character) < 0x80 ? char16_t(character) : u'\uFFFD';
    return wide;
}

std::u16string ValueOf(const std::string& text) {
    return text.empty() || text == "." ? u"none" : InBrackets(Widened(text));
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

// Bytes that are no ASCII may be valid UTF-8 together; here they count as one unit each.
bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

TEST_F(ResolverFile, MeansWhatTheSystemsResolverMakesOfIt) {
    const std::string none = "127.0.0.1";  // where the resolver looks without any server
    WithNames("", [&] {
        SettingsMaker maker;
        int compared = 0;
        for (int round = 0; round < 5'000; ++round) {
            const std::string settings = maker.Make();
            if (!IsAscii(settings)) continue;
            files_.Write(settings);
            const SystemsResolver system(files_.Settings());
            ASSERT_TRUE(system.IsKnown());
            const std::string servers = Joined(system.Servers());
            const std::u16string told = Told();
            const std::u16string domain = ValueOf(system.Domain());
            if (servers == none) {
                EXPECT_EQ(told, domain + u" none") << settings;
            } else {
                EXPECT_EQ(told, domain + u" " + ValueOf(servers)) << settings;
            }
            ++compared;
        }
        EXPECT_GT(compared, 2'500);
    });
}

}  // namespace
}  // namespace Conformance
