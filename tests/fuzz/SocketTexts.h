// What sockets write into the log and throw, as the targets about them expect it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fuzzing.h"

namespace Fuzz {

// An endpoint as records show it, and as extended sockets keep it.
struct TextEnd {
    std::string host;
    std::string port;
};

// An endpoint as classic sockets keep it.
struct Endpoint {
    std::string host = "0.0.0.0";
    int port = 0;

    TextEnd Text() const { return {host, std::to_string(port)}; }
};

// A record: category and text.
using LogLine = std::pair<std::string, std::u16string>;
using Log = std::vector<LogLine>;

// What an operation throws: text and code; nothing of either for success.
struct Thrown {
    std::u16string text;
    int code = 0;

    explicit operator bool() const { return !text.empty(); }
};

// A number from the table of errors or beside it, or a small one; never 0.
int TakeErrorNumber(Input& input);

Thrown FailureOf(std::string_view labelAndDescription, int error);
Thrown EndOfStream();

// What stands in front of the number in an extended socket's failure: the function
// ("SocketXtImpl::Bind"), a description, the call and two texts of addresses.
std::string ExtendedHead(const std::string& function, const std::string& description,
                         const std::string& call, const TextEnd& texts = {});
// Both ends as two such texts.
TextEnd Joined(const TextEnd& local, const TextEnd& remote);

LogLine ErrorLine(const Thrown& failure);
LogLine ConnectionLine(const std::string& event, const TextEnd& local, const TextEnd& remote);
LogLine ConnectionLine(const std::string& event, const Endpoint& local, const Endpoint& remote);
// The plain record and the one with the bytes.
Log TransferLines(const std::string& event, std::string_view bytes, const TextEnd& local,
                  const TextEnd& remote);
Log TransferLines(const std::string& event, std::string_view bytes, const Endpoint& local,
                  const Endpoint& remote);

// Runs the operation, which must end as expected.
void ExpectOutcome(std::string_view what, const Thrown& expected,
                   const std::function<void()>& operation);

}  // namespace Fuzz
