// Failures of the library in the terms of other programs: one text, an std::error_code, and
// answers to the questions that are asked most.
#pragma once

#include <VelBase/Message.h>
#include <VelBase/TextConversions.h>
#include <VelCompanion/ErrorCatalogue.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketError.h>

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace VelCompanion {

namespace Detail {

inline constexpr std::size_t NoPlace = static_cast<std::size_t>(-1);

inline std::string Utf8(const unsigned short* text) {
    return VelBase::WideCharToUTF8(text, false).c_str();
}

inline std::string Utf8(const unsigned short* text, std::size_t length) {
    std::vector<unsigned short> part(text, text + length);
    part.push_back(0);
    return Utf8(part.data());
}

// All that is searched for is ASCII.
inline bool StartsWith(const unsigned short* text, std::string_view start) noexcept {
    for (const char character : start) {
        if (*text++ != static_cast<unsigned char>(character)) return false;
    }
    return true;
}

inline bool Contains(const unsigned short* text, std::string_view part) noexcept {
    for (; *text != 0; ++text) {
        if (StartsWith(text, part)) return true;
    }
    return false;
}

// Where the character stands that is the number of the system's error: after the last lead-in, as
// what comes before it may be a host's name that looks like one. NoPlace if there is none.
inline std::size_t PlaceOfNumber(const unsigned short* text) noexcept {
    constexpr std::string_view leadIn = "errno = ";
    std::size_t place = NoPlace;
    for (std::size_t index = 0; text[index] != 0; ++index) {
        if (StartsWith(text + index, leadIn)) place = index + leadIn.size();
    }
    return place == NoPlace || text[place] == 0 ? NoPlace : place;
}

// A negative number has been cut to its low 16 bits like every other one.
inline int NumberFrom(unsigned short unit) noexcept {
    return unit > 0x7FFF ? unit - 0x10000 : unit;
}

inline std::string NumberAndSymbol(int number, int code) {
    return std::to_string(number) + " (" + SymbolOf(code) + ")";
}

}  // namespace Detail

// Returns the failure as one UTF-8 text: the library's own, with the number of the system's error
// in digits and the code's symbol where the library has one odd character:
//   VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:4000,
//   errno = 10061 (SOCKET_ERR_CONNREFUSED) Connection refused
// (without the line break). Text without such a number stays as it is, with the code and its symbol
// added at the end if the code says more than SOCKET_ERR_UNKNOWN.
//
// Throws: std::bad_alloc
[[nodiscard]] inline std::string Describe(const VelNet::Exception& failure) {
    const unsigned short* const text = failure.GetMessage();
    const int code = failure.GetErrorCode();
    const std::size_t place = Detail::PlaceOfNumber(text);
    if (place != Detail::NoPlace) {
        const int number = Detail::NumberFrom(text[place]);
        return Detail::Utf8(text, place) + Detail::NumberAndSymbol(number, code) +
               Detail::Utf8(text + place + 1);
    }
    if (code == VelNet::SOCKET_ERR_UNKNOWN) return Detail::Utf8(text);
    return Detail::Utf8(text) + ", " + Detail::NumberAndSymbol(code, code);
}

// Returns the text of a failure of the support libraries (VelBase::ExceptionImpl) in UTF-8, with
// its identifier in digits if that is not 0. Given a VelNet::Exception as its base class, returns
// an empty text, since everything stands in the derived class: catch that one first, or use
// DescribeCurrentException.
//
// Throws: std::bad_alloc
[[nodiscard]] inline std::string Describe(const VelBase::Message& failure) {
    std::string text = Detail::Utf8(failure.GetMessage());
    if (failure.GetID() == 0) return text;
    return text + " (" + std::to_string(failure.GetID()) + ")";
}

// Returns the text of the exception that is being handled, whichever the library or the standard
// library has thrown; "unknown exception" for any other. For a handler of everything:
//   catch (...) { std::cerr << VelCompanion::DescribeCurrentException() << '\n'; }
// Returns the empty text if no exception is being handled.
//
// Throws: std::bad_alloc
[[nodiscard]] inline std::string DescribeCurrentException() {
    if (!std::current_exception()) return {};
    try {
        throw;
    } catch (const VelNet::Exception& failure) {
        return Describe(failure);
    } catch (const VelBase::Message& failure) {
        return Describe(failure);
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "unknown exception";
    }
}

// The category of the library's errors: its values are those of VelNet::SOCKET_ERR, its messages
// number, symbol and text. A code with a condition in ErrorCatalogue is equivalent to it:
//   if (code == std::errc::connection_refused) ...
class ErrorCategory final : public std::error_category {
public:
    // The namespace of the library.
    const char* name() const noexcept override { return "VelNet"; }

    // Throws: std::bad_alloc
    std::string message(int code) const override {
        return Detail::NumberAndSymbol(code, code) + " " + EntryOf(code).text;
    }

    // The standard library's condition that means the same, or else one of this category.
    std::error_condition default_error_condition(int code) const noexcept override {
        const std::errc condition = EntryOf(code).condition;
        if (condition == NoCondition) return {code, *this};
        return std::make_error_condition(condition);
    }
};

// Returns the one object of the category. May be called from any thread.
[[nodiscard]] inline const std::error_category& SocketCategory() noexcept {
    static const ErrorCategory category;
    return category;
}

// Returns the code of a failure as an error code of SocketCategory. It is never false, since no
// code of the library is 0.
[[nodiscard]] inline std::error_code ErrorCodeOf(VelNet::SOCKET_ERR code) noexcept {
    return {static_cast<int>(code), SocketCategory()};
}
[[nodiscard]] inline std::error_code ErrorCodeOf(const VelNet::Exception& failure) noexcept {
    return ErrorCodeOf(failure.GetErrorCode());
}

// Returns whether Socket::Receive has failed with this because the peer has ended the stream in
// good order. On a datagram socket, and with a length of 0, it fails in the same way without an
// end: an empty datagram came, or nothing was asked for.
[[nodiscard]] inline bool IsEndOfStream(const VelNet::Exception& failure) {
    return failure.GetErrorCode() == VelNet::SOCKET_ERR_UNKNOWN &&
           Detail::Contains(failure.GetMessage(), "because the connection has been closed");
}

// Returns whether the time for an operation ran out: a receive or send timeout, a peer that does
// not answer, or the limit of one of the companion's operations.
[[nodiscard]] inline bool IsTimeout(const VelNet::Exception& failure) noexcept {
    return failure.GetErrorCode() == VelNet::SOCKET_ERR_TIMEDOUT;
}

// Returns whether an operation on a non-blocking socket could not be done at once.
[[nodiscard]] inline bool WouldBlock(const VelNet::Exception& failure) noexcept {
    return failure.GetErrorCode() == VelNet::SOCKET_ERR_WOULDBLOCK;
}

}  // namespace VelCompanion
