#include "scripted/Script.h"

#include <deque>
#include <map>

#include "Call.h"
#include "scripted/AddressBytes.h"

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

void ForgetAnswers() {
    const auto lock = LockState();
    queues.clear();
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

DatagramAnswers& DatagramAnswers::Delivers(std::string bytes, const std::string& dotted,
                                           unsigned short port) {
    return DeliversFrom(std::move(bytes), SocketAddressBytes(dotted, port));
}

DatagramAnswers& DatagramAnswers::DeliversFrom(std::string bytes, std::string address) {
    const auto count = static_cast<long long>(bytes.size());
    Answer answer = BytesAnswer(std::move(bytes), count);
    answer.address = std::move(address);
    return Queue(answer);
}

DatagramAnswers& DatagramAnswers::Delivers(std::string bytes) {
    const auto count = static_cast<long long>(bytes.size());
    return Queue(BytesAnswer(std::move(bytes), count));
}

DatagramAnswers& DatagramAnswers::Returns(int result) {
    return Queue(ResultOf(result));
}

SelectAnswers& SelectAnswers::Ready(std::vector<Winsock::Handle> readable,
                                    std::vector<Winsock::Handle> writable,
                                    std::vector<Winsock::Handle> exceptional) {
    const auto count = readable.size() + writable.size() + exceptional.size();
    return Returns(static_cast<int>(count), std::move(readable), std::move(writable),
                   std::move(exceptional));
}

SelectAnswers& SelectAnswers::Returns(int result, std::vector<Winsock::Handle> readable,
                                      std::vector<Winsock::Handle> writable,
                                      std::vector<Winsock::Handle> exceptional) {
    Answer answer = ResultOf(result);
    answer.readable = std::move(readable);
    answer.writable = std::move(writable);
    answer.exceptional = std::move(exceptional);
    return Queue(answer);
}

ListedAddress::ListedAddress(int familyOfAddress, const std::string& text, unsigned short port)
    : family(familyOfAddress),
      bytes(family == Winsock::FamilyIpv6 ? SocketAddressBytesIpv6(text, port)
                                          : SocketAddressBytes(text, port)) {}

ListedAddress::ListedAddress(int familyOfEntry, std::string rawBytes)
    : family(familyOfEntry), bytes(std::move(rawBytes)) {}

AddressListAnswers& AddressListAnswers::Returns(std::vector<ListedAddress> addresses) {
    Answer answer = ResultOf(0);
    answer.addresses = std::move(addresses);
    return Queue(answer);
}

AddressListAnswers& AddressListAnswers::ReturnsEmpty() {
    return Returns({});
}

NameAnswers& NameAnswers::Returns(std::string host, std::string service) {
    Answer answer = BytesAnswer(std::move(host));
    answer.service = std::move(service);
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
