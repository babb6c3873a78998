// What the tests' own calls of Winsock share.
#pragma once

// winsock2.h comes before everything that may include windows.h.
#include <winsock2.h>

#include <stdexcept>
#include <string>

namespace Support {

[[noreturn]] inline void Fail(const char* what, unsigned long error) {
    throw std::runtime_error(std::string(what) + ": " + std::to_string(error));
}

// Of a call of Winsock's.
inline void Require(bool done, const char* what) {
    if (!done) Fail(what, static_cast<unsigned long>(::WSAGetLastError()));
}

// Handles fit into 32 bits on every Windows.
inline SOCKET SocketOf(int descriptor) {
    return static_cast<SOCKET>(descriptor);
}

template <class Value>
bool SetOption(SOCKET socket, int option, const Value& value) {
    const auto* const bytes = static_cast<const char*>(static_cast<const void*>(&value));
    return ::setsockopt(socket, SOL_SOCKET, option, bytes, sizeof value) == 0;
}

// What a test does past the library must leave no trace in the last error of the thread under test.
class LastErrorKept {
public:
    LastErrorKept() : error_(::WSAGetLastError()) {}
    ~LastErrorKept() { ::WSASetLastError(error_); }
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;

private:
    int error_;
};

}  // namespace Support
