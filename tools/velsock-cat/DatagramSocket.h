// Sends and receives datagrams through either socket class.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Arguments.h"

namespace VelSockCat {

struct Datagram {
    std::string_view bytes;  // in the caller's buffer
    std::string senderHost;  // empty if the socket does not report it
    std::string senderPort;
};

// All operations throw Failure from TransferFailure.
class DatagramSocket {
public:
    // Larger than the longest datagram.
    static constexpr int Room = 65536;

    DatagramSocket() = default;
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;
    virtual ~DatagramSocket() = default;

    // Sends to the address on the command line.
    virtual void Send(std::string_view bytes) = 0;

    // Sends to the sender of a datagram. That an earlier one has not arrived there is no failure.
    virtual void Answer(const Datagram& datagram, std::string_view bytes);

    // Waits for a datagram; the buffer has Room bytes.
    virtual Datagram Receive(char* buffer) = 0;
};

// Opens a socket for the command: ready to send, or bound and announced on standard error. Throws
// Failure with NameNotResolvable or NotConnected, and what the library throws.
std::unique_ptr<DatagramSocket> OpenClassicDatagrams(const Arguments& arguments);
std::unique_ptr<DatagramSocket> OpenExtendedDatagrams(const Arguments& arguments);

}  // namespace VelSockCat
