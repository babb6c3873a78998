// The stand-ins for the support services.
#include <VelLog/Initializer.h>
#include <VelLog/LogMessage.h>
#include <VelRegistry/Initializer.h>
#include <VelSynch/Initializer.h>

#include <atomic>
#include <map>
#include <set>

#include "scripted/RecordingServices.h"
#include "scripted/platform/Call.h"

namespace Scripted {

namespace {

class RecordedRouter;

struct State {
    std::set<RecordedRouter*> routers;
    std::map<std::string, unsigned char> flags;  // by category
    unsigned char otherFlags = 0;
    std::vector<LoggedMessage> messages;
};

State state;
std::atomic<int> formatterRequests = 0;

unsigned char FlagOf(const std::string& category) {
    const auto found = state.flags.find(category);
    return found == state.flags.end() ? state.otherFlags : found->second;
}

std::string RouterText(const char* name, const char* category) {
    return std::string(name) + ", " + category;
}

class RecordedRouter : public VelLog::Router {
public:
    RecordedRouter(const char* name, const char* category) : Router(name, category) {
        const Allocations::Uncounted uncounted;
        OpenInLedger("router " + RouterText(name, category));
        const auto lock = LockState();
        state.routers.insert(this);
        SetFlag(FlagOf(category));
    }

    ~RecordedRouter() override {
        const Allocations::Uncounted uncounted;
        Call("~Router").Plain(RouterText(Name(), Category())).Play();
        CloseInLedger("router " + RouterText(Name(), Category()));
        const auto lock = LockState();
        state.routers.erase(this);
    }
};

// Routers that a failed test left behind stay known, or their end would be an error of its own.
const bool forgotten = AtReset([] {
    const auto lock = LockState();
    state = {.routers = std::move(state.routers), .flags = {}, .messages = {}};
    formatterRequests = 0;
});

void GoUp(const std::string& library) {
    const Allocations::Uncounted uncounted;
    Call(library + " up").Bare().Play();
    OpenInLedger(library);
}

void GoDown(const std::string& library) {
    const Allocations::Uncounted uncounted;
    Call(library + " down").Bare().Play();
    CloseInLedger(library);
}

std::string TextOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

LoggedArgument Copied(const VelResource::MessageArgument& argument) {
    using Kind = VelResource::MessageArgument::Kind;
    return {.kind = argument.kind,
            .wide = argument.kind == Kind::WideText ? Text(argument.wide) : u"",
            .narrow = argument.kind == Kind::NarrowText ? TextOrEmpty(argument.narrow) : "",
            .integer = argument.kind == Kind::Integer ? argument.integer : 0};
}

std::vector<LoggedArgument> Arguments(const VelResource::MessageFormatter& formatter) {
    std::vector<LoggedArgument> arguments;
    for (int position = 0; position < formatter.ArgumentCount(); ++position)
        arguments.push_back(Copied(formatter.Argument(position)));
    return arguments;
}

void Keep(const LoggedMessage& message) {
    const auto lock = LockState();
    state.messages.push_back(message);
}

}  // namespace

void SetRouterFlag(const std::string& category, unsigned char flag) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    state.flags[category] = flag;
    for (RecordedRouter* const router : state.routers)
        if (router->Category() == category) router->SetFlag(flag);
}

void EnableRouter(const std::string& category) {
    SetRouterFlag(category, 1);
}

void EnableAllRouters() {
    const auto lock = LockState();
    state.flags.clear();
    state.otherFlags = 1;
    for (RecordedRouter* const router : state.routers)
        router->SetFlag(1);
}

int LiveRouters(const std::string& category) {
    const auto lock = LockState();
    int count = 0;
    for (const RecordedRouter* const router : state.routers)
        if (router->Category() == category) ++count;
    return count;
}

std::vector<LoggedMessage> LoggedMessages() {
    const auto lock = LockState();
    return state.messages;
}

std::vector<LoggedMessage> LoggedMessages(const std::string& category) {
    std::vector<LoggedMessage> messages = LoggedMessages();
    std::erase_if(messages,
                  [&](const LoggedMessage& message) { return message.category != category; });
    return messages;
}

std::vector<std::u16string> LoggedTexts(const std::string& category) {
    std::vector<std::u16string> texts;
    for (const LoggedMessage& message : LoggedMessages(category))
        texts.push_back(message.text);
    return texts;
}

void ForgetLoggedMessages() {
    const auto lock = LockState();
    state.messages.clear();
}

int FormatterRequests() {
    return formatterRequests;
}

}  // namespace Scripted

namespace VelSynch {
Initializer::Initializer() {
    Scripted::GoUp("VelSynch");
}
Initializer::~Initializer() {
    Scripted::GoDown("VelSynch");
}
}  // namespace VelSynch

namespace VelRegistry {
Initializer::Initializer() {
    Scripted::GoUp("VelRegistry");
}
Initializer::~Initializer() {
    Scripted::GoDown("VelRegistry");
}
}  // namespace VelRegistry

namespace VelLog {

using Scripted::Call;

Initializer::Initializer() {
    Scripted::GoUp("VelLog");
}
Initializer::~Initializer() {
    Scripted::GoDown("VelLog");
}

VelBase::ReturnPtrI<Router> CreateRouter(const char* name, const char* category,
                                         VelSynch::EnumOrrinLockStackCategory lockStackCategory) {
    Call call("CreateRouter");
    call.Plain(Scripted::RouterText(name, category)).Number(lockStackCategory).Play();
    const Scripted::Counted counted;
    return new Scripted::RecordedRouter(name, category);
}

VelResource::MessageFormatter& GetMessageFormatter() noexcept {
    static VelResource::MessageFormatter formatter;
    ++Scripted::formatterRequests;
    formatter.Clear();
    return formatter;
}

void LogMessage(Router& router, const char* format, VelResource::MessageFormatter& formatter,
                const char* quotedFormat, const char* source, const char* function, int line) {
    Call call("LogMessage");
    const Scripted::LoggedMessage message = {
        .router = router.Name(),
        .category = router.Category(),
        .format = format,
        .quotedFormat = Scripted::TextOrEmpty(quotedFormat),
        .source = source,
        .function = function,
        .line = line,
        .arguments = Scripted::Arguments(formatter),
        .text = Support::Text(formatter.Format(format).Units()),
        .thread = std::this_thread::get_id()};
    Scripted::Keep(message);
    call.Plain(message.category).Plain(Scripted::QuotedUnits(message.text)).Play();
}

}  // namespace VelLog
