// Implements SocketCollection.
#pragma once

#include "Socket/OwnSocket.h"
#include "VelBase/InterfaceHolder.h"
#include "VelNet/SocketCollection.h"

#include <list>

namespace VelNet {

class SocketCollectionImpl final : public virtual SocketCollection {
public:
    SocketCollectionImpl() = default;
    SocketCollectionImpl(const SocketCollectionImpl&) = delete;
    SocketCollectionImpl& operator=(const SocketCollectionImpl&) = delete;

    void Add(Socket* socket, int event) override;
    void Remove(Socket* socket, int event) override;
    unsigned int GetCount() const override;
    VelBase::ReturnPtrI<Socket> GetSocket(unsigned int index) const override;
    int GetEvent(unsigned int index) const override;
    unsigned int Find(Socket* socket, int event) const override;
    SocketCollection* Select(unsigned int seconds) override;
    void Destroy() override;

private:
    struct Entry {
        Entry(Socket* registered, int awaited)
            : socket(registered), event(awaited), own(dynamic_cast<const OwnSocket*>(registered)) {}

        // InvalidSocket for an implementation that is not this library's.
        Winsock::Handle Handle() const noexcept {
            return own != nullptr ? own->Handle() : Winsock::InvalidSocket;
        }

        // Compares with the entry's own socket.
        bool Matches(const Socket& other, int awaited) const {
            return socket->IsSameSocket(other) && event == awaited;
        }

        VelBase::InterfaceHolder<Socket> socket;
        int event;
        const OwnSocket* own;  // the same object
    };

    const Entry& EntryAt(unsigned int index) const;
    // Appends the entry of a readable socket once for each event that its status stands for and
    // that it waits for.
    void AddIfReadable(const Entry& entry);

    std::list<Entry> entries_;
};

}  // namespace VelNet
