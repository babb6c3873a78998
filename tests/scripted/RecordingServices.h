// Stand-ins for the services that the socket layer brings up and logs through: initializers,
// routers, the writing of records. They write into the one transcript:
//
//   VelSynch up   VelSynch down   VelRegistry up   …   VelLog down
//   CreateRouter(Network, Error, -3)      name, category, lock-stack category
//   ~Router(Network, Error)               the router object ends
//   LogMessage(Error, "the record's text")
//
// Each is also the name of a call for Observe, EventsOf and CountOf: "VelSynch up", "CreateRouter",
// "~Router", "LogMessage". What is scripted to throw is recorded first and then throws; nothing is
// up or made then. Asking for the formatter is counted, not recorded.
#pragma once

#include <VelResource/MessageFormatter.h>

#include <string>
#include <vector>

#include "scripted/ScriptedPlatform.h"

namespace Scripted {

namespace On {

inline PlainAnswers SynchInitializer() {
    return PlainAnswers("VelSynch up");
}
inline PlainAnswers RegistryInitializer() {
    return PlainAnswers("VelRegistry up");
}
inline PlainAnswers LogInitializer() {
    return PlainAnswers("VelLog up");
}
inline PlainAnswers CreateRouter() {
    return PlainAnswers("CreateRouter");
}
inline PlainAnswers LogMessage() {
    return PlainAnswers("LogMessage");
}

}  // namespace On

// Switch the routers of the category that are alive, and those that are made later in the test.
void EnableRouter(const std::string& category);
void EnableAllRouters();
void SetRouterFlag(const std::string& category, unsigned char flag);

// How many routers of the category are alive.
int LiveRouters(const std::string& category);

struct LoggedArgument {
    VelResource::MessageArgument::Kind kind;
    std::u16string wide;  // of a wide text
    std::string narrow;   // of a narrow text
    int integer;

    bool operator==(const LoggedArgument&) const = default;
};

// One call of LogMessage.
struct LoggedMessage {
    std::string router;
    std::string category;
    std::string format;
    std::string quotedFormat;
    const char* source;
    const char* function;
    int line;
    std::vector<LoggedArgument> arguments;
    std::u16string text;  // as the real formatter renders it
    std::thread::id thread;
};

std::vector<LoggedMessage> LoggedMessages();
std::vector<LoggedMessage> LoggedMessages(const std::string& category);
// The texts alone.
std::vector<std::u16string> LoggedTexts(const std::string& category);
// The transcript keeps its lines.
void ForgetLoggedMessages();

// How often the formatter was asked for since the test began.
int FormatterRequests();

}  // namespace Scripted
