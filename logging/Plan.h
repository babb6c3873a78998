// What a configuration's text asks for.
#pragma once

#include "Parts.h"
#include "VelLogging/Format.h"

#include <optional>
#include <string_view>
#include <vector>

namespace VelLogging {

struct Switch {
    const char* router;
    const char* category;
    bool isOn;
};

struct SinkPlan {
    std::string kind;
    std::string target;
    std::optional<Format> format;
    unsigned long long size = 0;
    unsigned long long keep = 5;
    unsigned long long queue = 0;
    std::string tag;
    std::optional<int> facility;
    std::string_view text;  // the whole one, for messages
    std::size_t position = 0;
};

struct Plan {
    std::vector<Switch> switches;
    std::vector<SinkPlan> sinks;
};

// What says that the text cannot be followed, and why.
std::string FailureText(std::string_view text, std::size_t position, const std::string& why);

// Throws ConfigurationError with that.
[[noreturn]] void Fail(std::string_view text, std::size_t position, const std::string& why);

// Adds what the text asks for, which must live as long as the plan.
// Throws ConfigurationError, std::bad_alloc.
void AddTo(Plan& plan, std::string_view text);

}  // namespace VelLogging
