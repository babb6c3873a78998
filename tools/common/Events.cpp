#include "Events.h"

#include <VelCompanion/ErrorCatalogue.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "Text.h"

namespace VelSockTools {

namespace {

std::atomic<bool> isJson = false;
std::atomic<bool> isVerbose = false;

std::string LineOf(const std::string& text) {
    return OneLine(ValidUtf8(text)) + "\n";
}

std::string LineOf(const char* program, const std::string& text) {
    return LineOf(std::string(program) + ": " + text);
}

// At once, so that lines of several threads and processes do not mix.
void WriteError(const std::string& lines) {
    std::fputs(lines.c_str(), stderr);
    std::fflush(stderr);
}

// In UTC, as the records of the log have it.
std::string Now() {
    using namespace std::chrono;
    const auto now = time_point_cast<microseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss<microseconds> time(now - day);
    char text[64];
    std::snprintf(
        text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", static_cast<int>(date.year()),
        static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return text;
}

std::string JsonLine(const Event& event) {
    JsonObject object;
    object.AddText("time", Now());
    object.AddText("event", event.name);
    object.AddAll(event.members);
    return object.Line();
}

JsonObject MembersOf(const Failure& failure) {
    JsonObject members;
    members.AddNumber("exitCode", static_cast<int>(failure.Code()));
    members.AddText("text", failure.what());
    if (const auto error = failure.Error()) {
        members.AddNumber("code", *error);
        members.AddText("symbol", VelCompanion::SymbolOf(*error));
    }
    members.Add("details", JsonTexts(failure.Details()));
    return members;
}

std::string TextOf(const char* program, const Failure& failure) {
    std::string lines = LineOf(program, failure.what());
    if (!isVerbose) return lines;
    for (const std::string& detail : failure.Details())
        lines += "  " + LineOf(detail);
    return lines;
}

}  // namespace

void TellInJson() noexcept {
    isJson = true;
}

bool IsToldInJson() noexcept {
    return isJson;
}

void BeVerbose() noexcept {
    isVerbose = true;
}

bool IsVerbose() noexcept {
    return isVerbose;
}

void Tell(const Event& event) {
    WriteError(isJson ? JsonLine(event) : LineOf(event.sentence));
}

void Remark(const char* program, const Event& event) {
    if (isJson) return Tell(event);
    if (isVerbose) WriteError(LineOf(program, event.sentence));
}

ExitCode Report(const char* program, const Failure& failure) {
    WriteError(isJson ? JsonLine({"failure", {}, MembersOf(failure)}) : TextOf(program, failure));
    return failure.Code();
}

}  // namespace VelSockTools
