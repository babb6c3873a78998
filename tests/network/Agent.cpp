// One host of a network test: reads commands on standard input, carries each out with the library,
// and answers each with one line on standard output (Commands.cpp has the commands), until one is
// "end".
#include <VelLog/LogControl.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>

#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "Commands.h"
#include "Host.h"
#include "support/Text.h"

namespace {

using namespace Network;

constexpr const char* RecordedCategories[] = {"Error", "Connection Trace", "Packet Trace"};

class Recording {
public:
    explicit Recording(Recorder& recorder) {
        VelLog::SetSink(&recorder);
        for (const char* category : RecordedCategories) {
            VelLog::SetRouterEnabled("Network", category, true);
        }
    }
    ~Recording() { VelLog::SetSink(nullptr); }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
};

Words WordsOf(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::string LineOf(const char* first, const Words& words) {
    std::string line = first;
    for (const std::string& word : words) {
        line.append(" ").append(word);
    }
    return line;
}

std::string Answer(Host& host, const std::string& line) try {
    return LineOf("ok", CarryOut(host, WordsOf(line)));
} catch (const VelNet::Exception& exception) {
    const std::string code = std::to_string(exception.GetErrorCode());
    return LineOf("failed", {code, Support::Narrow(exception.GetMessage())});
} catch (const VelBase::Message& message) {
    const std::string number = std::to_string(message.GetID());
    return LineOf("not started", {number, Support::Narrow(message.GetMessage())});
} catch (const std::exception& exception) {
    return LineOf("cannot", {exception.what()});
}

}  // namespace

int main() {
    const VelNet::SocketInitialization layer;
    Host host;
    const Recording recording(host.Records());
    for (std::string line; std::getline(std::cin, line) && line != "end";) {
        std::cout << Answer(host, line) << std::endl;
    }
}
