#include "Plan.h"

#include "VelLogging/Configure.h"
#include "VelLogging/DaemonSinks.h"

#include <VelLog/LogControl.h>

#include <algorithm>
#include <iterator>

namespace VelLogging {

namespace {

struct Pair {
    const char* router;
    const char* category;
};
constexpr Pair Pairs[] = {
    {VelLog::ROUTER_NETWORK, VelLog::CATEGORY_ERROR},
    {VelLog::ROUTER_NETWORK, VelLog::CATEGORY_CONNECTION_TRACE},
    {VelLog::ROUTER_NETWORK, VelLog::CATEGORY_PACKET_TRACE},
    {VelLog::ROUTER_NETWORK, VelLog::CATEGORY_VERBOSE_PACKET_TRACE},
};

// The options that a sink of each kind may have, with a blank behind each.
struct Kind {
    const char* name;
    const char* options;
};
constexpr Kind Kinds[] = {
    {"stderr", "format queue "},
    {"file", "format keep queue size "},
    {"syslog", "facility format queue tag "},
    {"journal", "queue tag "},
    {"debugger", "format queue "},
    {"ring", "format queue "},
};

struct NamedFormat {
    const char* name;
    Format format;
};
constexpr NamedFormat Formats[] = {
    {"plain", Format::Plain},
    {"text", Format::Text},
    {"logfmt", Format::Logfmt},
    {"json", Format::Json},
};

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

std::string NamesOfPairs() {
    std::string names;
    for (const Pair& pair : Pairs)
        names += (names.empty() ? "" : ", ") + std::string(pair.router) + '/' + pair.category;
    return names;
}

template <class Row, std::size_t Count>
std::string NamesOf(const Row (&rows)[Count]) {
    std::string names;
    for (const Row& row : rows)
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    return names;
}

template <class Row, std::size_t Count>
const Row* Find(const Row (&rows)[Count], const std::string& name) {
    const Row* const row =
        std::find_if(rows, rows + Count, [&](const Row& other) { return other.name == name; });
    return row != rows + Count ? row : nullptr;
}

// Reads one text.
class Reader {
public:
    Reader(Plan& plan, std::string_view text) : plan_(plan), text_(text) {}

    void Read() {
        const Part whole{std::string(text_), 1};
        if (whole.text.find_first_not_of(" \t\r\n") == std::string::npos) return;
        for (const Part& part : SplitAt(',', whole))
            ReadPart(part);
    }

private:
    void ReadPart(const Part& part) {
        if (part.text.empty())
            Fail(text_, part.position, "there is nothing before the comma or end");
        const std::vector<Part> pieces = SplitAt(';', part);
        const Halves head = HalvesAt(':', pieces[0]);
        if (const Kind* kind = Find(Kinds, head.first.text))
            return ReadSink(*kind, part.position, head.second.text, pieces);
        ReadSwitch(part);
    }

    void ReadSwitch(const Part& part) {
        const Halves halves = HalvesAt('=', part);
        const Halves names = HalvesAt('/', halves.first);
        if (!names.isFound || !halves.isFound) FailAtUnknown(part);
        if (halves.second.text != "on" && halves.second.text != "off")
            Fail(text_, halves.second.position,
                 Quoted(halves.second.text) + R"( is neither "on" nor "off")");
        const std::size_t before = plan_.switches.size();
        for (const Pair& pair : Pairs) {
            if (IsLike(pair.router, names.first.text) && IsLike(pair.category, names.second.text))
                plan_.switches.push_back({pair.router, pair.category, halves.second.text == "on"});
        }
        if (plan_.switches.size() == before)
            Fail(text_, part.position,
                 "there is no router " + Quoted(halves.first.text) + "; there are " +
                     NamesOfPairs());
    }

    [[noreturn]] void FailAtUnknown(const Part& part) const {
        Fail(text_, part.position,
             Quoted(part.text) + " is neither ROUTER/CATEGORY=on or off nor a sink; sinks are " +
                 NamesOf(Kinds));
    }

    // The options are the pieces behind the first.
    void ReadSink(const Kind& kind, std::size_t position, const std::string& target,
                  const std::vector<Part>& pieces) {
        SinkPlan sink;
        sink.kind = kind.name;
        sink.target = Meant(target);
        sink.text = text_;
        sink.position = position;
        CheckTarget(sink);
        for (std::size_t index = 1; index < pieces.size(); ++index)
            ReadOption(sink, kind, pieces[index]);
        plan_.sinks.push_back(std::move(sink));
    }

    void CheckTarget(SinkPlan& sink) const {
        const bool takesNone = sink.kind == "stderr" || sink.kind == "debugger";
        if (takesNone && !sink.target.empty())
            Fail(text_, sink.position, Quoted(sink.kind) + " takes nothing behind a colon");
        if (sink.kind == "file" && sink.target.empty())
            Fail(text_, sink.position, "\"file\" needs a path: file:PATH");
        sink.size = sink.kind == "ring" ? 64 * 1024 : 0;
        if (sink.kind == "ring" && !sink.target.empty())
            sink.size = NumberOf({sink.target, sink.position});
    }

    // The kind's options are words, each with a blank behind it.
    static bool HasOption(const Kind& kind, const std::string& name) {
        const bool isWord = !name.empty() && name.find(' ') == std::string::npos;
        return isWord &&
               (std::string(" ") + kind.options).find(' ' + name + ' ') != std::string::npos;
    }

    void ReadOption(SinkPlan& sink, const Kind& kind, const Part& piece) const {
        const Halves option = HalvesAt('=', piece);
        const std::string& name = option.first.text;
        if (!option.isFound || !HasOption(kind, name))
            Fail(text_, piece.position,
                 Quoted(piece.text) + " is no option of " + Quoted(kind.name) + "; options are " +
                     WithEquals(kind.options));
        Store(sink, name, option.second);
    }

    static std::string WithEquals(std::string options) {
        options.pop_back();
        std::string listed;
        for (const char character : options)
            listed += character == ' ' ? "=, " : std::string(1, character);
        return listed + '=';
    }

    void Store(SinkPlan& sink, const std::string& name, const Part& value) const {
        if (name == "format") sink.format = FormatOf(value);
        if (name == "size") sink.size = NumberOf(value);
        if (name == "keep") sink.keep = CountOf(value);
        if (name == "queue") sink.queue = CountOf(value);
        if (name == "tag") sink.tag = Meant(value.text);
        if (name == "facility") sink.facility = FacilityOf(value);
    }

    Format FormatOf(const Part& value) const {
        if (const NamedFormat* format = Find(Formats, value.text)) return format->format;
        Fail(text_, value.position,
             "there is no format " + Quoted(value.text) + "; there are " + NamesOf(Formats));
    }

    unsigned long long NumberOf(const Part& value) const {
        unsigned long long number = 0;
        if (ReadNumber(value.text, number)) return number;
        Fail(text_, value.position,
             Quoted(value.text) + " is no number from 1, with K, M or G behind it or without");
    }

    unsigned long long CountOf(const Part& value) const {
        constexpr unsigned long long Most = 1'000'000;
        unsigned long long number = 0;
        if (value.text == "0") return 0;
        if (ReadNumber(value.text, number) && number <= Most) return number;
        Fail(text_, value.position, Quoted(value.text) + " is no count from 0 to 1000000");
    }

    int FacilityOf(const Part& value) const {
        if (value.text == "user") return SyslogSink::FacilityUser;
        if (value.text == "daemon") return SyslogSink::FacilityDaemon;
        if (value.text.size() == 6 && IsLike(value.text, "local?") && value.text[5] >= '0' &&
            value.text[5] <= '7')
            return SyslogSink::FacilityLocal0 + (value.text[5] - '0');
        Fail(text_, value.position,
             "there is no facility " + Quoted(value.text) +
                 "; there are user, daemon, local0 to local7");
    }

    Plan& plan_;
    const std::string_view text_;
};

}  // namespace

std::string FailureText(std::string_view text, std::size_t position, const std::string& why) {
    return "log configuration \"" + std::string(text) + "\", character " +
           std::to_string(position) + ": " + why;
}

void Fail(std::string_view text, std::size_t position, const std::string& why) {
    throw ConfigurationError(FailureText(text, position, why), position);
}

void AddTo(Plan& plan, std::string_view text) {
    Reader(plan, text).Read();
}

}  // namespace VelLogging
