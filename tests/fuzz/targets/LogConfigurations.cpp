// The text that configures logging, against a second reading of its grammar: what it asks for, or
// where it cannot be followed. Here each character keeps its place in the text.
#include <VelLog/LogControl.h>
#include <VelLogging/Configure.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>
#include <optional>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "logging/Plan.h"

namespace {

using Fuzz::Expect;
using Number = unsigned long long;

// What the text asks for, in one line each; or the place at which it is refused.
using Lines = std::vector<std::string>;
struct Refused {
    std::size_t position;
};

struct Character {
    char value;
    std::size_t position;
};

// A piece of the text, which may be empty at its place.
struct Piece {
    std::vector<Character> characters;
    std::size_t position;

    std::string Text() const {
        std::string text;
        for (const Character& each : characters)
            text += each.value;
        return text;
    }
};

bool IsBlank(const Character& each) {
    return each.value == ' ' || each.value == '\t' || each.value == '\r' || each.value == '\n';
}

Piece Trimmed(Piece piece) {
    auto& all = piece.characters;
    while (!all.empty() && IsBlank(all.back()))
        all.pop_back();
    const auto first = std::find_if_not(all.begin(), all.end(), IsBlank);
    all.erase(all.begin(), first);
    if (!all.empty()) piece.position = all.front().position;
    return piece;
}

std::vector<Piece> Split(char separator, const Piece& whole) {
    std::vector<Piece> pieces;
    Piece piece{{}, whole.position};
    const auto& all = whole.characters;
    for (std::size_t index = 0; index < all.size(); ++index) {
        const bool isSeparator = all[index].value == separator;
        const bool isDoubled =
            isSeparator && index + 1 < all.size() && all[index + 1].value == separator;
        if (!isSeparator || isDoubled) {
            piece.characters.push_back(all[index]);
            if (isDoubled) ++index;
            continue;
        }
        pieces.push_back(Trimmed(std::move(piece)));
        piece = {{}, all[index].position + 1};
    }
    pieces.push_back(Trimmed(std::move(piece)));
    return pieces;
}

// What is before a character and behind it; nothing behind it if it does not occur.
std::pair<Piece, std::optional<Piece>> Divided(char at, const Piece& piece) {
    const auto& all = piece.characters;
    const auto place = std::find_if(all.begin(), all.end(),
                                    [at](const Character& each) { return each.value == at; });
    if (place == all.end()) return {piece, {}};
    return {Trimmed({{all.begin(), place}, piece.position}),
            Trimmed({{place + 1, all.end()}, place->position + 1})};
}

bool IsLike(std::string_view text, std::string_view pattern) {
    // Which beginnings of the text the pattern so far stands for.
    std::vector<bool> fits(text.size() + 1);
    fits[0] = true;
    for (const char each : pattern) {
        std::vector<bool> next(text.size() + 1);
        for (std::size_t length = 0; length <= text.size(); ++length) {
            if (each == '*') next[length] = fits[length] || (length != 0 && next[length - 1]);
            if (each != '*' && length != 0)
                next[length] = fits[length - 1] && (each == '?' || each == text[length - 1]);
        }
        fits = std::move(next);
    }
    return fits.back();
}

std::optional<Number> NumberOf(std::string text) {
    static const std::map<char, unsigned int> Units = {{'K', 10}, {'k', 10}, {'M', 20},
                                                       {'m', 20}, {'G', 30}, {'g', 30}};
    const auto unit = text.empty() ? Units.end() : Units.find(text.back());
    if (unit != Units.end()) text.pop_back();
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || last != end || number == 0) return {};
    if (unit == Units.end()) return number;
    const Number times = Number{1} << unit->second;
    if (number > std::numeric_limits<Number>::max() / times) return {};
    return number * times;
}

const std::map<std::string, std::vector<std::string>> Options = {
    {"stderr", {"format", "queue"}},
    {"file", {"format", "queue", "size", "keep"}},
    {"syslog", {"format", "queue", "tag", "facility"}},
    {"journal", {"queue", "tag"}},
    {"debugger", {"format", "queue"}},
    {"ring", {"format", "queue"}}};

// A sink's line: the values that the text does not name are those that are usual, and an empty tag
// is none.
std::string LineOf(const std::string& kind, const std::string& target,
                   const std::map<std::string, std::string>& values) {
    std::string line = kind + '|' + target;
    for (const auto& [name, value] : values)
        line += '|' + name + '=' + value;
    return line;
}

std::string ValueOf(const std::string& name, const Piece& value) {
    static constexpr std::array Formats = {"plain", "text", "logfmt", "json"};
    const std::string text = value.Text();
    const auto number = NumberOf(text);
    if (name == "tag") return text;
    if (name == "format" && std::count(Formats.begin(), Formats.end(), text) == 1) return text;
    if (name == "size" && number) return std::to_string(*number);
    const bool counts = name == "keep" || name == "queue";
    if (counts && text == "0") return text;
    if (counts && number && *number <= 1'000'000) return std::to_string(*number);
    const bool isLocal = text.size() == 6 && text.starts_with("local");
    if (name == "facility" && text == "user") return "1";
    if (name == "facility" && text == "daemon") return "3";
    if (name == "facility" && isLocal && text[5] >= '0' && text[5] <= '7')
        return std::to_string(16 + text[5] - '0');
    throw Refused{value.position};
}

std::string TargetOf(const std::string& kind, const Piece& part,
                     const std::optional<Piece>& target) {
    const std::string text = target ? target->Text() : "";
    const bool takesNone = kind == "stderr" || kind == "debugger";
    if (takesNone ? !text.empty() : kind == "file" && text.empty()) throw Refused{part.position};
    if (kind == "ring" && !text.empty() && !NumberOf(text)) throw Refused{part.position};
    return text;
}

std::string ReadSink(const std::string& kind, const Piece& part) {
    const std::vector<Piece> pieces = Split(';', part);
    const auto [name, target] = Divided(':', pieces.front());
    const std::string text = TargetOf(kind, part, target);
    std::map<std::string, std::string> values = {{"keep", "5"}, {"queue", "0"}, {"size", "0"}};
    if (kind == "ring") values["size"] = std::to_string(text.empty() ? 65536 : *NumberOf(text));
    const auto& options = Options.at(kind);
    for (std::size_t index = 1; index < pieces.size(); ++index) {
        const auto [option, value] = Divided('=', pieces[index]);
        if (!value || std::count(options.begin(), options.end(), option.Text()) == 0)
            throw Refused{pieces[index].position};
        values[option.Text()] = ValueOf(option.Text(), *value);
        if (values["tag"].empty()) values.erase("tag");
    }
    return LineOf(kind, text, values);
}

constexpr std::array Categories = {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE,
                                   VelLog::CATEGORY_PACKET_TRACE,
                                   VelLog::CATEGORY_VERBOSE_PACKET_TRACE};

Lines ReadSwitch(const Piece& part) {
    const auto [names, value] = Divided('=', part);
    const auto [router, category] = Divided('/', names);
    if (!value || !category) throw Refused{part.position};
    if (value->Text() != "on" && value->Text() != "off") throw Refused{value->position};
    Lines lines;
    for (const char* const each : Categories)
        if (IsLike(VelLog::ROUTER_NETWORK, router.Text()) && IsLike(each, category->Text()))
            lines.push_back(each + ('=' + value->Text()));
    if (lines.empty()) throw Refused{part.position};
    return lines;
}

// Its switches first, as a plan has them.
Lines Model(std::string_view text) {
    Piece whole{{}, 1};
    for (const char each : text)
        whole.characters.push_back({each, whole.characters.size() + 1});
    if (Trimmed(whole).characters.empty()) return {};
    Lines switches;
    Lines sinks;
    for (const Piece& part : Split(',', whole)) {
        if (part.characters.empty()) throw Refused{part.position};
        const Piece head = Split(';', part).front();
        const std::string kind = Divided(':', head).first.Text();
        if (Options.contains(kind)) {
            sinks.push_back(ReadSink(kind, part));
        } else {
            for (const std::string& line : ReadSwitch(part))
                switches.push_back(line);
        }
    }
    switches.insert(switches.end(), sinks.begin(), sinks.end());
    return switches;
}

std::string LineOf(const VelLogging::SinkPlan& sink) {
    static constexpr std::array Formats = {"plain", "text", "logfmt", "json"};
    std::map<std::string, std::string> values = {{"keep", std::to_string(sink.keep)},
                                                 {"queue", std::to_string(sink.queue)},
                                                 {"size", std::to_string(sink.size)}};
    if (sink.format) values["format"] = Formats[static_cast<std::size_t>(*sink.format)];
    if (!sink.tag.empty()) values["tag"] = sink.tag;
    if (sink.facility) values["facility"] = std::to_string(*sink.facility);
    return LineOf(sink.kind, sink.target, values);
}

Lines Planned(std::string_view text) {
    VelLogging::Plan plan;
    VelLogging::AddTo(plan, text);
    Lines lines;
    for (const VelLogging::Switch& each : plan.switches) {
        Expect<std::string>("the router", VelLog::ROUTER_NETWORK, each.router);
        lines.push_back(each.category + std::string(each.isOn ? "=on" : "=off"));
    }
    for (const VelLogging::SinkPlan& each : plan.sinks)
        lines.push_back(LineOf(each));
    return lines;
}

// Of a refusal, the position, and that the text says so.
Lines Outcome(std::string_view text) {
    try {
        return Planned(text);
    } catch (const VelLogging::ConfigurationError& error) {
        const std::string position = std::to_string(error.Position());
        // A zero in the text ends what a C string can show.
        const std::string head = Fuzz::CText("log configuration \"" + std::string(text) +
                                             "\", character " + position + ": ");
        Expect("the text's beginning", head, std::string(error.what()).substr(0, head.size()));
        return {"refused at " + position};
    }
}

Lines Expected(std::string_view text) {
    try {
        return Model(text);
    } catch (const Refused& refused) {
        return {"refused at " + std::to_string(refused.position)};
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Expect("what the text asks for", Expected(text), Outcome(text));
    return 0;
}
