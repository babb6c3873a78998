// Logging as a text says.
#pragma once

#include <VelLogging/RingSink.h>
#include <VelLogging/Sink.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace VelLogging {

// A text that cannot be followed. what() shows the text, the place, and what could stand there.
class ConfigurationError : public std::runtime_error {
public:
    // Usually thrown by Configure alone.
    ConfigurationError(const std::string& what, std::size_t position)
        : std::runtime_error(what), position_(position) {}

    // Of the character in the text, from 1, where the part begins that is meant.
    std::size_t Position() const noexcept { return position_; }

private:
    std::size_t position_;
};

// A sink of the text that the system refuses: a file that cannot be opened, for instance.
class SinkError : public ConfigurationError {
public:
    using ConfigurationError::ConfigurationError;
};

// The logging that a text has set up. At the end of its scope it unsets its sink and ends it: let
// it live as long as sockets are used. The routers stay as they were switched.
class Logging {
public:
    // Sets the sink, which the object owns from now on. The ring is a part of it, or null.
    Logging(std::unique_ptr<Sink> sink, const RingSink* ring) noexcept;
    // The other one has nothing to end any more.
    Logging(Logging&&) noexcept;
    // Ends what it has set up before.
    Logging& operator=(Logging&&) noexcept;
    // Unsets the sink if it is set, and ends it.
    ~Logging();

    // For logrotate: its files are opened again. Not for signal handlers.
    void Reopen() const noexcept;
    // How many records its sinks have lost.
    unsigned long long Lost() const noexcept;
    // Its sink in memory, or null if the text names none.
    const RingSink* Ring() const noexcept { return ring_; }

private:
    std::unique_ptr<Sink> sink_;
    const RingSink* ring_;
};

// Switches routers and sets sinks as the text says, for instance
//
//   Network/*=on, Network/Verbose*=off, file:/var/log/x.log;size=10M;keep=5;format=json
//
// Its parts are separated by commas, and blanks around them do not count. A part is one of
//
//   ROUTER/CATEGORY=on|off     "*" stands for any characters, "?" for one. The parts are applied
//                              from left to right; what none names stays as it is.
//   SINK[:TARGET][;OPTION=VALUE]...
//       stderr                 standard error; it is also what a text without a sink gets
//       file:PATH              size=BYTES (with K, M or G), keep=COUNT
//       syslog[:SOCKET]        tag=NAME, facility=user|daemon|local0|...|local7
//       journal[:SOCKET]       tag=NAME
//       debugger               Windows alone
//       ring[:BYTES]           in memory, see Logging::Ring; at most one
//     with format=plain|text|logfmt|json for all but the journal, and queue=COUNT for all: see
//     QueuedSink. Commas and semicolons of a target or value are written twice.
//
// With a second text, that goes on where the first ends; usually it has the sinks. The sink that
// the host has set before is replaced. If a text cannot be followed, or a sink cannot be made,
// nothing is changed except that files may have been created.
//
// Throws: ConfigurationError   the text cannot be followed
//         SinkError            a sink cannot be made
//         std::bad_alloc
[[nodiscard]] Logging Configure(std::string_view text, std::string_view more = {});

// The same with the text of an environment variable. Without the variable, or if it is empty, the
// text given stands instead; if that is empty too, nothing is changed.
[[nodiscard]] Logging ConfigureFromEnvironment(const char* variable,
                                               std::string_view otherwise = {});

}  // namespace VelLogging
