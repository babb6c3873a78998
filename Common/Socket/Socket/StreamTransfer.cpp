// Sending and receiving of both families: nearly the bare system call. Whatever follows a transfer
// that has failed or is traced is out of line.
#include "Platform/RarelyRead.h"
#include "Socket/SocketImpl.h"
#include "Socket/SocketLayerState.h"
#include "Socket/SocketXtImpl.h"

namespace VelNet {

int SocketImpl::Receive(char* buffer, int length) {
    const RarelyRead<SocketImpl*> self = this;
    const RarelyRead<char*> data = buffer;
    const int received = Winsock::recv(handle_, buffer, length, 0);
    if (received <= 0) [[unlikely]] {
        return self->FailedReceive(received);
    }
    if (!IsAnyPacketTraceEnabled()) [[likely]]
        return received;
    return self->TraceTransfer(ReceivedFormats, data, received);
}

int SocketImpl::Send(const char* buffer, int length) {
    const RarelyRead<SocketImpl*> self = this;
    const RarelyRead<const char*> data = buffer;
    const int sent = Winsock::send(handle_, buffer, length, 0);
    if (sent == Winsock::SocketError) [[unlikely]] {
        return self->FailedSend();
    }
    if (!IsAnyPacketTraceEnabled()) [[likely]]
        return sent;
    return self->TraceTransfer(SentFormats, data, sent);
}

int SocketXtImpl::Receive(char* buffer, int length) {
    const RarelyRead<SocketXtImpl*> self = this;
    const RarelyRead<char*> data = buffer;
    const int received = Winsock::recv(handle_, buffer, length, 0);
    if (received == 0 || received == Winsock::SocketError) [[unlikely]] {
        return self->FailedReceive(received);
    }
    if (!IsAnyPacketTraceEnabled()) [[likely]]
        return received;
    return self->TraceTransfer(ReceivedFormats, data, received);
}

int SocketXtImpl::Send(const char* buffer, int length) {
    const RarelyRead<SocketXtImpl*> self = this;
    const RarelyRead<const char*> data = buffer;
    const int sent = Winsock::send(handle_, buffer, length, 0);
    if (sent == Winsock::SocketError) [[unlikely]] {
        return self->FailedSend();
    }
    if (!IsAnyPacketTraceEnabled()) [[likely]]
        return sent;
    return self->TraceTransfer(SentFormats, data, sent);
}

}  // namespace VelNet
