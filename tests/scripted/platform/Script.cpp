#include "scripted/Script.h"

#include <deque>
#include <map>

#include "Call.h"
#include "scripted/Text.h"

namespace Scripted {

namespace {

std::map<std::string, std::deque<Answer>> queues;

const bool forgotten = AtReset([] {
    const auto lock = LockState();
    queues.clear();
});

Answer ResultOf(long long result) {
    return {.kind = Answer::Kind::Result, .result = result};
}

Answer BytesAnswer(std::string bytes, long long result = 0) {
    Answer answer = ResultOf(result);
    answer.bytes = std::move(bytes);
    return answer;
}

}  // namespace

void QueueAnswer(const std::string& call, Answer answer) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    queues[call].push_back(std::move(answer));
}

Answer TakeAnswer(const std::string& call) {
    const auto lock = LockState();
    const auto queue = queues.find(call);
    if (queue == queues.end()) return {};
    Answer answer = std::move(queue->second.front());
    queue->second.pop_front();
    if (queue->second.empty()) queues.erase(queue);
    return answer;
}

std::vector<std::string> UnusedAnswers() {
    const auto lock = LockState();
    std::vector<std::string> unused;
    for (const auto& [call, queue] : queues)
        unused.insert(unused.end(), queue.size(), call);
    return unused;
}

NumberAnswers& NumberAnswers::Returns(long long result) {
    return Queue(ResultOf(result));
}

StartupAnswers& StartupAnswers::Returns(int code, unsigned short version,
                                        unsigned short highestVersion) {
    Answer answer = ResultOf(code);
    answer.version = version;
    answer.highestVersion = highestVersion;
    return Queue(answer);
}

AddressAnswers& AddressAnswers::Returns(const std::string& dotted, unsigned short port) {
    return ReturnsRaw(SocketAddressBytes(dotted, port));
}

AddressAnswers& AddressAnswers::ReturnsRaw(std::string address) {
    return Queue(BytesAnswer(std::move(address)));
}

AcceptAnswers& AcceptAnswers::Returns(Winsock::Handle handle, const std::string& dotted,
                                      unsigned short port) {
    return ReturnsRaw(handle, SocketAddressBytes(dotted, port));
}

AcceptAnswers& AcceptAnswers::ReturnsRaw(Winsock::Handle handle, std::string address) {
    return Queue(BytesAnswer(std::move(address), static_cast<long long>(handle)));
}

ReceiveAnswers& ReceiveAnswers::Delivers(std::string bytes) {
    const auto count = static_cast<long long>(bytes.size());
    return Queue(BytesAnswer(std::move(bytes), count));
}

ReceiveAnswers& ReceiveAnswers::Returns(int result) {
    return Queue(ResultOf(result));
}

IoctlAnswers& IoctlAnswers::Returns(unsigned int bytesAvailable) {
    return Queue(ResultOf(bytesAvailable));
}

HostAnswers& HostAnswers::Returns(const std::vector<std::string>& dotted, const std::string& name) {
    HostAnswer host{.name = name};
    for (const std::string& address : dotted)
        host.addresses.push_back(AddressBytes(address));
    return ReturnsRaw(host);
}

HostAnswers& HostAnswers::ReturnsRaw(HostAnswer host) {
    Answer answer = ResultOf(0);
    answer.host = std::move(host);
    return Queue(answer);
}

BytesAnswers& BytesAnswers::Returns(std::string bytes) {
    return Queue(BytesAnswer(std::move(bytes)));
}

WideAnswers& WideAnswers::Returns(std::u16string text) {
    Answer answer = ResultOf(0);
    answer.text = std::move(text);
    return Queue(answer);
}

}  // namespace Scripted
