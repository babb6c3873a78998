// Datagrams over a socket of either family.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Arguments.h"

namespace VelSockCat {

struct Datagram {
    std::string_view bytes;  // in the buffer that was given
    std::string senderHost;  // empty when the socket does not tell
    std::string senderPort;
};

// Both operations throw Failure with what TransferFailure makes of the library's.
class DatagramSocket {
public:
    // More than the longest datagram has.
    static constexpr int Room = 65536;

    DatagramSocket() = default;
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;
    virtual ~DatagramSocket() = default;

    // To where the command line says.
    virtual void Send(std::string_view bytes) = 0;

    // Waits for one; the buffer has Room bytes.
    virtual Datagram Receive(char* buffer) = 0;
};

// A socket as the command needs it: ready to send, or bound and announced on standard error. Throws
// Failure with NameNotResolvable or NotConnected, and what the library throws.
std::unique_ptr<DatagramSocket> OpenClassicDatagrams(const Arguments& arguments);
std::unique_ptr<DatagramSocket> OpenExtendedDatagrams(const Arguments& arguments);

}  // namespace VelSockCat
