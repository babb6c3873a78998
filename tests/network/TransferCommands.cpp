#include "TransferCommands.h"

#include <VelNet/Exception.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "HostWord.h"

namespace Network {

namespace {

constexpr unsigned long long Endless = std::numeric_limits<unsigned long long>::max();

struct Buffer {
    char bytes[65536];

    static int RoomFor(unsigned long long left) {
        return static_cast<int>(std::min<unsigned long long>(left, sizeof bytes));
    }
    std::string Text(int count) const { return {bytes, static_cast<std::size_t>(count)}; }
};

// Repeats only after 16 MB, and no part equals the one that follows it.
char ByteAt(unsigned long long place) {
    return static_cast<char>((place ^ (place >> 8U) ^ (place >> 16U)) & 0xFFU);
}

void Fill(Buffer& buffer, int count, unsigned long long place) {
    for (int index = 0; index < count; ++index) {
        buffer.bytes[index] = ByteAt(place++);
    }
}

void Check(const Buffer& buffer, int count, unsigned long long place) {
    for (int index = 0; index < count; ++index, ++place) {
        if (buffer.bytes[index] == ByteAt(place)) continue;
        throw std::runtime_error("byte " + std::to_string(place) + " differs");
    }
}

void ReceiveThrough(NamedSocket& named, unsigned long long place) {
    Buffer buffer;
    while (named.received < place) {
        const int room = Buffer::RoomFor(place - named.received);
        const int received = named.socket->Receive(buffer.bytes, room);
        Check(buffer, received, named.received);
        named.received += static_cast<unsigned int>(received);
    }
}

constexpr int DatagramLength = 1000;

// Its number, and then bytes that follow from it.
std::string NumberedDatagram(unsigned long long number) {
    Buffer buffer;
    Fill(buffer, DatagramLength, number * DatagramLength);
    const std::string text = std::to_string(number) + ' ';
    return text + buffer.Text(DatagramLength - static_cast<int>(text.size()));
}

// Its number; fails unless it is whole.
unsigned long long NumberOf(const std::string& datagram) {
    const unsigned long long number = std::stoull(datagram);
    if (datagram != NumberedDatagram(number)) throw std::runtime_error("a datagram has changed");
    return number;
}

// Empty when none came within the socket's receive timeout.
std::optional<std::string> NextDatagram(VelNet::SocketXt& socket) {
    Buffer buffer;
    VelBase::ReturnString sender;
    VelBase::ReturnString port;
    try {
        return buffer.Text(socket.RecvFrom(buffer.bytes, sizeof buffer.bytes, sender, port));
    } catch (const VelNet::Exception& failure) {
        if (failure.GetErrorCode() != VelNet::SOCKET_ERR_TIMEDOUT) throw;
        return std::nullopt;
    }
}

}  // namespace

Words Send(Host& host, const Words& words) {
    const std::string& text = words[2];
    const int sent = host.Find(words[1]).socket->Send(text.data(), static_cast<int>(text.size()));
    return {std::to_string(sent)};
}

Words Receive(Host& host, const Words& words) {
    Buffer buffer;
    const int received = host.Find(words[1]).socket->Receive(buffer.bytes, sizeof buffer.bytes);
    return {buffer.Text(received)};
}

Words SendTo(Host& host, const Words& words) {
    VelNet::SocketXt& socket = host.FindExtended(words[1]);
    const std::string text = words[4] == "-" ? "" : words[4];
    const int sent = WithHost(words[2], [&](auto address) {
        return socket.SendTo(text.data(), static_cast<int>(text.size()), address, words[3].c_str());
    });
    return {std::to_string(sent)};
}

Words ReceiveFrom(Host& host, const Words& words) {
    Buffer buffer;
    VelBase::ReturnString sender;
    VelBase::ReturnString port;
    const int received =
        host.FindExtended(words[1]).RecvFrom(buffer.bytes, sizeof buffer.bytes, sender, port);
    return {buffer.Text(received), sender.c_str(), port.c_str()};
}

Words SendDatagrams(Host& host, const Words& words) {
    VelNet::SocketXt& socket = host.FindExtended(words[1]);
    const unsigned long long count = std::stoull(words[4]);
    for (unsigned long long number = 0; number < count; ++number) {
        const std::string datagram = NumberedDatagram(number);
        const int length = static_cast<int>(datagram.size());
        if (socket.SendTo(datagram.data(), length, words[2].c_str(), words[3].c_str()) != length) {
            throw std::runtime_error("a datagram was cut");
        }
    }
    return {};
}

Words ReceiveDatagrams(Host& host, const Words& words) {
    VelNet::SocketXt& socket = host.FindExtended(words[1]);
    std::set<unsigned long long> numbers;
    while (const auto datagram = NextDatagram(socket)) {
        if (numbers.insert(NumberOf(*datagram)).second) continue;
        throw std::runtime_error("a datagram came twice");
    }
    return {std::to_string(numbers.size())};
}

Words SendUpTo(Host& host, const Words& words) {
    NamedSocket& named = host.Find(words[1]);
    const unsigned long long place = std::stoull(words[2]);
    Buffer buffer;
    while (named.sent < place) {
        const int count = Buffer::RoomFor(place - named.sent);
        Fill(buffer, count, named.sent);
        named.sent += static_cast<unsigned int>(named.socket->Send(buffer.bytes, count));
    }
    return {};
}

Words ReceiveUpTo(Host& host, const Words& words) {
    ReceiveThrough(host.Find(words[1]), std::stoull(words[2]));
    return {};
}

Words ReceiveUntilFailure(Host& host, const Words& words) {
    ReceiveThrough(host.Find(words[1]), Endless);
    return {};
}

}  // namespace Network
