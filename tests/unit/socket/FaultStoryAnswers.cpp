// How the answers of fault stories are written:
//
//   accept        2001 10.0.0.9:4711      2001 raw 0200   any bytes as the address
//   getsockname, getpeername   10.1.2.3:50123   raw 0200
//   getaddrinfo   10.0.0.1:80 [2001:DB8::2]:80 (7)        (7) is of that family; nothing
//   getnameinfo   host port
//   recv          "abc"   bytes 61C3   0
//   recvfrom      "abc" 10.0.0.9:4711   bytes 61C3 10.0.0.9:4711   0
//   select        2 read 1001 1002 write 1003
//   gethostbyname, gethostbyaddr   10.0.0.1 10.0.0.2 named host
//   gethostname, ComputerName      the text
//   WSAStartup    0 0x0101 0x0202         the result, the version, the highest
//   all others    the result, or the number that the call hands out
#include <cstdlib>

#include "FaultStoryLines.h"

namespace SocketTests {

namespace {

std::string BytesOf(const std::string& hex) {
    std::string bytes;
    for (std::size_t index = 0; index + 1 < hex.size(); index += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(index, 2), nullptr, 16));
    return bytes;
}

struct Endpoint {
    std::string host;
    unsigned short port;
};

Endpoint EndpointOf(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    return {text.substr(0, colon), static_cast<unsigned short>(std::stoi(text.substr(colon + 1)))};
}

std::string AddressOf(const std::vector<std::string>& words, std::size_t index) {
    if (words.at(index) == "raw") return BytesOf(words.size() > index + 1 ? words.back() : "");
    const auto [host, port] = EndpointOf(words[index]);
    return SocketAddressBytes(host, port);
}

ListedAddress ListedAddressOf(const std::string& word) {
    if (word.starts_with('(')) return {std::stoi(word.substr(1)), std::string("\x07\0abcdef", 8)};
    const auto [host, port] = EndpointOf(word);
    if (!host.starts_with('[')) return {Winsock::FamilyIpv4, host, port};
    return {Winsock::FamilyIpv6, host.substr(1, host.size() - 2), port};
}

std::string DataOf(const std::vector<std::string>& words) {
    if (words[0] == "bytes") return BytesOf(words.at(1));
    return words[0].substr(1, words[0].size() - 2);
}

void ReadData(Answer& answer, const std::vector<std::string>& words) {
    if (words[0] != "bytes" && words[0][0] != '"') {
        answer.result = std::stoll(words[0]);
        return;
    }
    answer.bytes = DataOf(words);
    answer.result = static_cast<long long>(answer.bytes.size());
    if (words.back().find(':') != std::string::npos)
        answer.address = AddressOf(words, words.size() - 1);
}

void ReadReady(Answer& answer, const std::vector<std::string>& words) {
    answer.result = std::stoll(words[0]);
    std::vector<Winsock::Handle>* set = nullptr;
    for (const std::string& word : std::span(words).subspan(1)) {
        if (word == "read")
            set = &answer.readable;
        else if (word == "write")
            set = &answer.writable;
        else
            set->push_back(std::stoull(word));
    }
}

void ReadHost(Answer& answer, const std::vector<std::string>& words) {
    for (std::size_t index = 0; index < words.size(); ++index) {
        if (words[index] == "named")
            answer.host.name = words.at(++index);
        else if (words[index] != "nothing")
            answer.host.addresses.push_back(AddressBytes(words[index]));
    }
}

void ReadVersions(Answer& answer, const std::vector<std::string>& words) {
    answer.result = std::stoll(words[0]);
    if (words.size() < 3) return;
    answer.version = static_cast<unsigned short>(std::stoi(words[1], nullptr, 16));
    answer.highestVersion = static_cast<unsigned short>(std::stoi(words[2], nullptr, 16));
}

void ReadAccepted(Answer& answer, const std::vector<std::string>& words) {
    answer.result = std::stoll(words[0]);
    answer.bytes = AddressOf(words, 1);
}

void ReadAddresses(Answer& answer, const std::vector<std::string>& words) {
    for (const std::string& word : words)
        if (word != "nothing") answer.addresses.push_back(ListedAddressOf(word));
}

void ReadNames(Answer& answer, const std::vector<std::string>& words) {
    answer.bytes = words[0];
    answer.service = words.at(1);
}

}  // namespace

Answer ReadAnswer(const std::string& call, const std::string& text) {
    Answer answer{.kind = Answer::Kind::Result};
    const std::vector<std::string> words = WordsOf(text);
    if (call == "accept")
        ReadAccepted(answer, words);
    else if (call == "getsockname" || call == "getpeername")
        answer.bytes = AddressOf(words, 0);
    else if (call == "getaddrinfo")
        ReadAddresses(answer, words);
    else if (call == "getnameinfo")
        ReadNames(answer, words);
    else if (call == "recv" || call == "recvfrom")
        ReadData(answer, words);
    else if (call == "select")
        ReadReady(answer, words);
    else if (call == "gethostbyname" || call == "gethostbyaddr")
        ReadHost(answer, words);
    else if (call == "gethostname")
        answer.bytes = text;
    else if (call == "ComputerName")
        answer.text = Widen(text);
    else if (call == "WSAStartup")
        ReadVersions(answer, words);
    else
        answer.result = std::stoll(text);
    return answer;
}

}  // namespace SocketTests
