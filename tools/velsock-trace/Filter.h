// Which conversations are wanted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Conversation.h"

namespace VelSockTrace {

// Everything passes at first. Of several kinds or outcomes, one must fit.
struct Filter {
    std::optional<Endpoint> address;  // its address, or its name if it is none
    std::uint16_t port = 0;
    std::optional<std::int64_t> from;  // conversations that go on until then, or later
    std::optional<std::int64_t> to;    // conversations that have begun by then
    bool streams = false;
    bool datagrams = false;
    std::vector<Outcome> outcomes;

    bool Passes(const Conversation& conversation) const noexcept;
};

// Adds "stream", "datagrams" or an outcome's name. Returns whether there is such a kind.
bool AddKind(Filter& filter, const std::string& name);

const char* NameOf(Outcome outcome) noexcept;

}  // namespace VelSockTrace
