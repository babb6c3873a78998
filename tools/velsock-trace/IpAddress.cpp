#include <algorithm>
#include <charconv>

#include "Endpoint.h"

namespace VelSockTrace {

namespace {

template <class Number>
bool TakeGroup(std::string_view& text, int base, std::size_t mostDigits, Number& group) noexcept {
    const char* const first = text.data();
    const char* const last = first + std::min(text.size(), mostDigits);
    const auto [end, error] = std::from_chars(first, last, group, base);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - first));
    return true;
}

bool TakeCharacter(std::string_view& text, char character) noexcept {
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

bool ReadDotted(std::string_view text, unsigned char* bytes) noexcept {
    for (int index = 0; index < 4; ++index) {
        if (index > 0 && !TakeCharacter(text, '.')) return false;
        if (!TakeGroup(text, 10, 3, bytes[index])) return false;
    }
    return text.empty();
}

// The groups of an address, and where "::" stands among them.
class Groups {
public:
    bool Read(std::string_view text) noexcept {
        if (text.starts_with("::")) {
            gap_ = 0;
            text.remove_prefix(2);
        }
        while (!text.empty()) {
            if (!TakeOne(text)) return false;
        }
        return gap_ < 0 ? count_ == 16 : count_ <= 14;
    }

    std::array<unsigned char, 16> Bytes() const noexcept {
        std::array<unsigned char, 16> bytes{};
        const std::size_t head = gap_ < 0 ? count_ : static_cast<std::size_t>(gap_);
        std::copy_n(bytes_.begin(), head, bytes.begin());
        std::copy(bytes_.begin() + static_cast<std::ptrdiff_t>(head),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(count_),
                  bytes.end() - static_cast<std::ptrdiff_t>(count_ - head));
        return bytes;
    }

private:
    bool TakeOne(std::string_view& text) noexcept {
        if (text.find('.') < text.find(':')) return TakeDotted(text);
        std::uint16_t group = 0;
        if (count_ > 14 || !TakeGroup(text, 16, 4, group)) return false;
        bytes_[count_++] = static_cast<unsigned char>(group >> 8U);
        bytes_[count_++] = static_cast<unsigned char>(group & 0xFFU);
        return text.empty() || TakeSeparator(text);
    }

    // An IPv4 address at the end.
    bool TakeDotted(std::string_view& text) noexcept {
        if (count_ > 12 || !ReadDotted(text, bytes_.data() + count_)) return false;
        count_ += 4;
        text = {};
        return true;
    }

    bool TakeSeparator(std::string_view& text) noexcept {
        if (!TakeCharacter(text, ':')) return false;
        if (!TakeCharacter(text, ':')) return !text.empty();
        if (gap_ >= 0) return false;
        gap_ = static_cast<int>(count_);
        return true;
    }

    std::array<unsigned char, 16> bytes_{};
    std::size_t count_ = 0;
    int gap_ = -1;
};

}  // namespace

std::optional<IpAddress> ReadIpAddress(std::string_view text) noexcept {
    IpAddress address;
    if (text.find(':') == std::string_view::npos) {
        address.version = 4;
        if (!ReadDotted(text, address.bytes.data())) return {};
        return address;
    }
    Groups groups;
    if (!groups.Read(text.substr(0, text.find('%')))) return {};
    address.version = 6;
    address.bytes = groups.Bytes();
    return address;
}

bool IsLoopback(const IpAddress& address) noexcept {
    if (address.version == 4) return address.bytes[0] == 127;
    return address.version == 6 && address.bytes.back() == 1 &&
           std::all_of(address.bytes.begin(), address.bytes.end() - 1,
                       [](unsigned char byte) { return byte == 0; });
}

}  // namespace VelSockTrace
