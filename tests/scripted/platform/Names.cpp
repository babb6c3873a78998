// The name calls of the seam.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <stdexcept>

#include "Call.h"
#include "scripted/AddressBytes.h"

namespace Scripted {

namespace {

constexpr std::size_t Room = 65536;
constexpr int Poison = 0xDD;

// A thread's host entry, and the memory that it points to: the same for each call, so that whoever
// keeps a pointer beyond the next name call reads what he deserves.
class HostMemory {
public:
    Winsock::HostEntry* Current() { return filled_ ? &entry_ : nullptr; }

    void Spoil() {
        std::fill(bytes_.begin(), bytes_.end(), static_cast<char>(Poison));
        std::memset(pointers_.data(), Poison, pointers_.size() * sizeof(char*));
        std::memset(&entry_, Poison, sizeof entry_);
        filled_ = false;
    }

    Winsock::HostEntry* Fill(const HostAnswer& host) {
        usedBytes_ = 0;
        pointers_.resize(std::max(pointers_.size(), host.addresses.size() + 2));
        pointers_[0] = nullptr;
        for (std::size_t index = 0; index < host.addresses.size(); ++index)
            pointers_[index + 1] = Place(host.addresses[index]);
        pointers_[host.addresses.size() + 1] = nullptr;
        entry_.name = host.name ? Place(*host.name + '\0') : nullptr;
        entry_.aliases = &pointers_[0];
        entry_.addressType = host.addressType;
        entry_.addressLength = host.addressLength;
        entry_.addresses = host.nullAddressList ? nullptr : &pointers_[1];
        filled_ = true;
        return &entry_;
    }

private:
    char* Place(const std::string& content) {
        char* const place = bytes_.data() + usedBytes_;
        usedBytes_ += content.size();
        if (usedBytes_ > Room) throw std::length_error("the scripted host entry is too large");
        std::copy(content.begin(), content.end(), place);
        return place;
    }

    bool filled_ = false;
    std::size_t usedBytes_ = 0;
    std::vector<char> bytes_ = std::vector<char>(Room);
    std::vector<char*> pointers_ =
        std::vector<char*>(2);  // a null for the aliases, then the addresses and their null
    Winsock::HostEntry entry_{};
};

HostMemory& ThreadsHostMemory() {
    const Allocations::Uncounted uncounted;
    thread_local HostMemory memory;
    return memory;
}

Winsock::HostEntry* FinishWithHost(Call& call, const Answer& answer) {
    HostMemory& memory = ThreadsHostMemory();
    memory.Spoil();
    call.Finish();
    if (call.IsFailure()) return nullptr;
    if (!call.IsUsual()) return memory.Fill(answer.host);
    return memory.Fill({.addresses = {AddressBytes("10.0.0.1")}});
}

std::string HostAddressText(const char* address, int length, int family) {
    if (address == nullptr || family != Winsock::FamilyIpv4 || length != 4)
        return HexBytes(address, address == nullptr ? 0 : length);
    std::string text;
    for (int index = 0; index < length; ++index)
        text += std::to_string(static_cast<unsigned char>(address[index])) + '.';
    text.pop_back();
    return text;
}

// The address that four decimal numbers spell, or NoAddress.
unsigned int AddressOfText(const char* text) {
    std::array<unsigned char, 4> numbers{};
    const char* position = text;
    const char* const end = text + std::strlen(text);
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        if (index != 0 && (position == end || *position++ != '.')) return Winsock::NoAddress;
        const auto [rest, failure] = std::from_chars(position, end, numbers[index]);
        if (failure != std::errc()) return Winsock::NoAddress;
        position = rest;
    }
    unsigned int address = 0;
    std::memcpy(&address, numbers.data(), numbers.size());
    return position == end ? address : Winsock::NoAddress;
}

}  // namespace

Winsock::HostEntry* CurrentHostEntry() {
    return ThreadsHostMemory().Current();
}

}  // namespace Scripted

namespace Winsock {

using Scripted::Answer;
using Scripted::Call;

HostEntry* gethostbyname(const char* name) {
    Call call("gethostbyname");
    const Answer& answer = call.Quoted(name).Play();
    return Scripted::FinishWithHost(call, answer);
}

HostEntry* gethostbyaddr(const char* address, int length, int family) {
    Call call("gethostbyaddr");
    call.Bytes(address, length, Scripted::HostAddressText(address, length, family));
    const Answer& answer = call.Number(length).Number(family).Play();
    return Scripted::FinishWithHost(call, answer);
}

int gethostname(char* name, int length) {
    Call call("gethostname");
    const Answer& answer = call.Number(length).Pointer(name).Play();
    if (call.IsFailure()) return static_cast<int>(call.Finish());
    const std::string host = call.IsUsual() ? "scripted-host" : answer.bytes;
    if (static_cast<long long>(host.size()) >= length) return static_cast<int>(call.Fail(10014));
    std::memcpy(name, host.c_str(), host.size() + 1);
    call.Succeed();
    return 0;
}

unsigned int inet_addr(const char* text) {
    Call call("inet_addr");
    const Answer& answer = call.Quoted(text).Play();
    if (call.IsUsual()) return text == nullptr ? NoAddress : Scripted::AddressOfText(text);
    return call.IsFailure() ? NoAddress : static_cast<unsigned int>(answer.result);
}

}  // namespace Winsock
