// Sending all of something and receiving until something is complete, over a stream.
//
// For sockets of either family, blocking or not. A blocking socket waits as it always does, at most
// as long as its own timeouts allow for each call of the system; a non-blocking one is waited for
// (VelCompanion/Waiting.h says which threads may do that at a time). A limit is for the whole
// operation, however many calls that takes, so that a peer that sends a byte now and then cannot
// prolong it.
#pragma once

#include <VelCompanion/Errors.h>
#include <VelCompanion/Waiting.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace VelCompanion {

namespace Detail {

inline void Await(VelNet::Socket& socket, int event, const Deadline& deadline,
                  const char* operation) {
    if (!Wait(socket, event, deadline)) throw TimeIsOver(operation, deadline);
}

// For the library, 0 and the largest number are no limit.
inline unsigned int SendTimeoutOf(const Deadline& deadline) noexcept {
    constexpr Milliseconds least(1);
    constexpr Milliseconds most(4294967294);
    return unsigned(std::clamp(deadline.Left(), least, most).count());
}

// The library takes lengths as int.
inline int LengthOf(std::size_t length) noexcept {
    constexpr int most = (std::numeric_limits<int>::max)();
    return length < std::size_t(most) ? int(length) : most;
}

// Receives at least one byte. Waits first if there is a limit: a receive call that fails writes a
// record.
inline std::size_t Receive(VelNet::Socket& socket, char* buffer, std::size_t length,
                           const Deadline& deadline, const char* operation) {
    if (deadline.HasLimit()) Await(socket, VelNet::EVENT_READ, deadline, operation);
    for (;;) {
        try {
            return std::size_t(socket.Receive(buffer, LengthOf(length)));
        } catch (const VelNet::Exception& failure) {
            if (!WouldBlock(failure)) throw;
        }
        Await(socket, VelNet::EVENT_READ, deadline, operation);
    }
}

// Appends what comes, at most as many bytes as are named and never more than a block: the string
// grows with what has arrived, not with what is expected.
inline void ReceiveInto(std::string& text, VelNet::Socket& socket, std::size_t most,
                        const Deadline& deadline, const char* operation) {
    char block[4096];
    const std::size_t room = most < sizeof block ? most : sizeof block;
    text.append(block, Receive(socket, block, room, deadline, operation));
}

// The line that ends there, taken out of what has come, without its end.
inline std::string TakeLine(std::string& come, std::size_t end) {
    const bool hasReturn = end > 0 && come[end - 1] == '\r';
    std::string line = come.substr(0, hasReturn ? end - 1 : end);
    come.erase(0, end + 1);
    return line;
}

[[noreturn]] inline void ThrowLineTooLong(std::size_t longest) {
    throw std::length_error("VelCompanion::ReceiveLine: a line is longer than " +
                            std::to_string(longest) + " bytes");
}

}  // namespace Detail

// Sends all bytes, in as many calls as it takes. Nothing is sent for an empty text. After a failure
// it is not known how many bytes the peer receives. Waits without limit for a peer that does not
// read, unless the socket blocks and has a send timeout.
//
// Throws: what Socket::Send throws; what WaitToSend throws, if the socket is non-blocking
inline void SendAll(VelNet::Socket& socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const int sent = socket.Send(bytes.data(), Detail::LengthOf(bytes.size()));
        if (sent == 0) Detail::Wait(socket, VelNet::EVENT_WRITE, Deadline(NoLimit));
        bytes.remove_prefix(std::size_t(sent));
    }
}

// Does the same within a limit. A blocking socket's send timeout is set for that and stays set.
//
// Throws: also SOCKET_ERR_TIMEDOUT   the peer did not take the bytes within the limit
//              std::invalid_argument the limit is negative
inline void SendAll(VelNet::Socket& socket, std::string_view bytes, Milliseconds limit) {
    if (limit == NoLimit) return SendAll(socket, bytes);
    const Deadline deadline(limit);
    while (!bytes.empty()) {
        socket.SetSendTimeout(Detail::SendTimeoutOf(deadline));
        const int sent = socket.Send(bytes.data(), Detail::LengthOf(bytes.size()));
        if (sent == 0) Detail::Await(socket, VelNet::EVENT_WRITE, deadline, "SendAll");
        bytes.remove_prefix(std::size_t(sent));
        if (!bytes.empty() && deadline.IsOver()) throw Detail::TimeIsOver("SendAll", deadline);
    }
}

// Receives once, up to length bytes, and returns how many there were; 0 if the peer has ended the
// stream in good order.
//
// Throws: what Socket::Receive throws, except for that end
//         SOCKET_ERR_TIMEDOUT    nothing came within the limit
//         std::invalid_argument  the length is 0, for which there is no telling the two apart; or
//                                the limit is negative
[[nodiscard]] inline std::size_t ReceiveSome(VelNet::Socket& socket, char* buffer,
                                             std::size_t length, Milliseconds limit = NoLimit) {
    if (length == 0) throw std::invalid_argument("VelCompanion::ReceiveSome: the length is 0");
    try {
        return Detail::Receive(socket, buffer, length, Deadline(limit), "ReceiveSome");
    } catch (const VelNet::Exception& failure) {
        if (!IsEndOfStream(failure)) throw;
        return 0;
    }
}

// Receives until the buffer holds exactly length bytes. After a failure the buffer holds the bytes
// that came, but it is not known how many.
//
// Throws: what Socket::Receive throws; an end of the stream before the last byte is a failure
//         (IsEndOfStream)
//         SOCKET_ERR_TIMEDOUT    not all bytes came within the limit
//         std::invalid_argument  the limit is negative
inline void ReceiveExactly(VelNet::Socket& socket, char* buffer, std::size_t length,
                           Milliseconds limit = NoLimit) {
    const Deadline deadline(limit);
    for (std::size_t done = 0; done < length;)
        done += Detail::Receive(socket, buffer + done, length - done, deadline, "ReceiveExactly");
}

// Does the same and returns the bytes. The memory grows with what arrives: a count that a peer has
// announced costs nothing until it sends as much. What there may be at most is for the caller to
// check.
//
// Throws: also std::bad_alloc, std::length_error (no string is that long)
[[nodiscard]] inline std::string ReceiveExactly(VelNet::Socket& socket, std::size_t count,
                                                Milliseconds limit = NoLimit) {
    const Deadline deadline(limit);
    std::string bytes;
    while (bytes.size() < count)
        Detail::ReceiveInto(bytes, socket, count - bytes.size(), deadline, "ReceiveExactly");
    return bytes;
}

// Returns the next line, without the line feed that ends it and a carriage return before that, or
// nothing if the peer has ended the stream in good order after a whole line.
//
// come holds what has been received and not returned yet: empty before the first call, and the same
// string for every call that reads from that socket; nothing else may receive from it meanwhile. It
// never holds more than a line of the longest length and a block of 4 KiB. A failure leaves it as
// it is, so that after SOCKET_ERR_TIMEDOUT the same call goes on.
//
// Throws: what Socket::Receive throws; an end of the stream within a line is a failure
//         (IsEndOfStream), and the line's beginning is in come
//         SOCKET_ERR_TIMEDOUT    no line was complete within the limit
//         std::length_error      the line is longer than the longest, in bytes without its end
//         std::invalid_argument  the limit is negative
//         std::bad_alloc
[[nodiscard]] inline std::optional<std::string> ReceiveLine(VelNet::Socket& socket,
                                                            std::string& come, std::size_t longest,
                                                            Milliseconds limit = NoLimit) {
    const Deadline deadline(limit);
    try {
        for (std::size_t searched = 0;;) {
            const std::size_t end = come.find('\n', searched);
            const std::size_t length = end == std::string::npos ? come.size() : end;
            const bool hasReturn = length > 0 && come[length - 1] == '\r';
            if (length - std::size_t(hasReturn) > longest) Detail::ThrowLineTooLong(longest);
            if (end != std::string::npos) return Detail::TakeLine(come, end);
            searched = come.size();
            Detail::ReceiveInto(come, socket, come.max_size(), deadline, "ReceiveLine");
        }
    } catch (const VelNet::Exception& failure) {
        if (!come.empty() || !IsEndOfStream(failure)) throw;
        return std::nullopt;
    }
}

}  // namespace VelCompanion
