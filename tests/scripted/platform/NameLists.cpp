// The name calls of the seam that know every family.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>

#include "Addresses.h"
#include "Call.h"

namespace Scripted {

namespace {

constexpr unsigned char Poison = 0xDD;

// The addresses that one getaddrinfo has answered. A list is spoilt when it is given back and kept,
// so that whoever reads it then reads what he deserves.
class AddressList {
public:
    AddressList(int number, const std::vector<ListedAddress>& addresses,
                const Winsock::AddressInfo& hints)
        : number_(number) {
        for (const ListedAddress& address : addresses)
            Add(address, hints);
        for (std::size_t index = 1; index < nodes_.size(); ++index)
            nodes_[index - 1].next = &nodes_[index];
    }

    int Number() const { return number_; }
    bool IsOpen() const { return open_; }
    Winsock::AddressInfo* First() { return nodes_.empty() ? nullptr : &nodes_.front(); }

    void Close() {
        open_ = false;
        for (std::vector<unsigned char>& bytes : addresses_)
            std::fill(bytes.begin(), bytes.end(), Poison);
        for (Winsock::AddressInfo& node : nodes_)
            std::memset(&node, Poison, sizeof node);
    }

private:
    void Add(const ListedAddress& address, const Winsock::AddressInfo& hints) {
        std::vector<unsigned char>& bytes =
            addresses_.emplace_back(address.bytes.begin(), address.bytes.end());
        nodes_.push_back({.flags = 0,
                          .family = address.family,
                          .type = address.type.value_or(hints.type),
                          .protocol = address.protocol.value_or(hints.protocol),
                          .addressLength = bytes.size(),
                          .canonicalName = nullptr,
                          .address = bytes.data(),
                          .next = nullptr});
    }

    int number_;
    bool open_ = true;
    std::deque<std::vector<unsigned char>> addresses_;
    std::deque<Winsock::AddressInfo> nodes_;
};

std::vector<std::unique_ptr<AddressList>> lists;

const bool forgotten = AtReset([] {
    const auto lock = LockState();
    lists.clear();
});

std::string LedgerEntry(int number) {
    return "address list " + std::to_string(number);
}

// The lowest that no open list has.
int FreshNumber() {
    const auto isTaken = [](int number) {
        return std::any_of(lists.begin(), lists.end(), [&](const auto& list) {
            return list->IsOpen() && list->Number() == number;
        });
    };
    int number = 1;
    while (isTaken(number))
        ++number;
    return number;
}

std::string QuotedOrNull(const char* text) {
    return text == nullptr ? "null" : QuotedBytes(text, std::strlen(text));
}

void AddHints(Call& call, const Winsock::AddressInfo* hints) {
    if (hints == nullptr) {
        call.Plain("null");
        return;
    }
    EXPECT_TRUE(hints->addressLength == 0 && hints->canonicalName == nullptr &&
                hints->address == nullptr && hints->next == nullptr)
        << "a hint holds more than flags, family, type and protocol";
    call.Open().Number(hints->flags).Number(hints->family);
    call.Number(hints->type).Number(hints->protocol).Close();
}

std::vector<ListedAddress> UsualAddresses(const char* service) {
    const int port = service == nullptr ? 0 : std::atoi(service);
    return {{Winsock::FamilyIpv4, "10.0.0.1", static_cast<unsigned short>(port)}};
}

// An empty list is null and has no number, as there is nothing to give back.
Winsock::AddressInfo* HandOut(const std::vector<ListedAddress>& addresses,
                              const Winsock::AddressInfo* hints) {
    if (addresses.empty()) return nullptr;
    const Winsock::AddressInfo none{};
    AddressList* list = nullptr;
    {
        const auto lock = LockState();
        list = lists
                   .emplace_back(std::make_unique<AddressList>(FreshNumber(), addresses,
                                                               hints == nullptr ? none : *hints))
                   .get();
    }
    OpenInLedger(LedgerEntry(list->Number()));
    return list->First();
}

// The list that begins there, or null.
AddressList* ListAt(const Winsock::AddressInfo* first) {
    const auto lock = LockState();
    const auto found = std::find_if(lists.begin(), lists.end(),
                                    [&](const auto& list) { return list->First() == first; });
    return found == lists.end() ? nullptr : found->get();
}

void GiveBack(AddressList* list) {
    const int number = list == nullptr ? 0 : list->Number();
    if (list == nullptr || !list->IsOpen())
        OpenInLedger("surplus " + LedgerEntry(number));
    else
        CloseInLedger(LedgerEntry(number));
    const auto lock = LockState();
    if (list != nullptr) list->Close();
}

// False where the text has no room. A null room asks for nothing.
bool CopyText(const std::string& text, char* place, unsigned int room) {
    if (place == nullptr || room == 0) return true;
    if (text.size() >= room) return false;
    std::memcpy(place, text.c_str(), text.size() + 1);
    return true;
}

}  // namespace

}  // namespace Scripted

namespace Winsock {

using Scripted::Answer;
using Scripted::Call;

int getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                AddressInfo** result) {
    Call call("getaddrinfo");
    call.Quoted(host).Plain(Scripted::QuotedOrNull(service));
    Scripted::AddHints(call, hints);
    const Answer& answer = call.Play();
    *result = nullptr;
    if (call.IsFailure()) return static_cast<int>(call.Fail(answer.error, answer.result));
    *result = Scripted::HandOut(
        call.IsUsual() ? Scripted::UsualAddresses(service) : answer.addresses, hints);
    call.Succeed();
    return 0;
}

void freeaddrinfo(AddressInfo* first) {
    Call call("freeaddrinfo");
    Scripted::AddressList* const list = Scripted::ListAt(first);
    if (first == nullptr)
        call.Plain("null");
    else
        call.Number(list == nullptr ? 0 : list->Number());
    call.Pointer(first).Play();
    if (first != nullptr) Scripted::GiveBack(list);
    call.Finish();
}

int getnameinfo(const void* address, int addressLength, char* host, unsigned int hostRoom,
                char* service, unsigned int serviceRoom, int flags) {
    Call call("getnameinfo");
    call.Bytes(address, addressLength, Scripted::AddressText(address, addressLength));
    call.Number(addressLength).Number(hostRoom).Number(serviceRoom).Number(flags);
    const Answer& answer = call.Play();
    if (call.IsFailure()) return static_cast<int>(call.Fail(answer.error, answer.result));
    const std::string hostText =
        call.IsUsual() ? Scripted::AddressHost(address, addressLength) : answer.bytes;
    const std::string serviceText =
        call.IsUsual() ? Scripted::AddressPort(address, addressLength) : answer.service;
    if (call.IsUsual() && hostText.empty()) return static_cast<int>(call.Fail(10047, 10047));
    if (!Scripted::CopyText(hostText, host, hostRoom) ||
        !Scripted::CopyText(serviceText, service, serviceRoom))
        return static_cast<int>(call.Fail(122, 122));
    call.Succeed();
    return 0;
}

}  // namespace Winsock
