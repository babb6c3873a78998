// What the scripted platform answers.
//
// Each call has a queue; On::Send().Returns(2).Fails(10054) appends to the queue of send. One
// answer serves one call. With its queue empty a call does the usual thing:
//
//   socket, accept    a fresh handle: 1001, 1002, …; accept's peer is 0.0.0.0:0
//   closesocket       0, or 10038 for a handle that is not open
//   send              takes all bytes
//   recv              fails the test, and with 10060
//   sendto            takes all bytes
//   recvfrom          fails the test, and with 10060
//   select            0 ready, and the sets are emptied
//   getsockname, getpeername   0.0.0.0:0
//   ioctlsocket       0; no bytes available
//   gethostbyname     "host.example" with the address 10.0.0.1; gethostbyaddr the same
//   getaddrinfo       a list of one IPv4 address: 10.0.0.1, with the service's number as the port
//   getnameinfo       the texts of an IPv4 or IPv6 address as the transcript writes them, in
//                     numbers; else it fails with 10047. Texts without room fail with 122.
//   GetVersionExW     major version 10; fails with 122 when the record's size is not 276
//   gethostname       "scripted-host"; ComputerName u"SCRIPTED-HOST"
//   inet_addr         the address of four decimal numbers from 0 to 255, else NoAddress
//   ErrorDescription  u"Description of 5."
//   code page         Latin-1: each byte is one unit; a unit above 0xFF becomes '?'
//   log files, keys   in memory, see below and RegistryTree.h
//   all others        succeed with 0; WSAStartup reports 2.2 and 2.2
//
// Handles need not be open to be used.
#pragma once

#include <Platform/Winsock.h>

#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Scripted {

// A host as a name call reports it, wrong in any way that a test wants. The entry itself belongs to
// the calling thread and is overwritten with 0xDD bytes by that thread's next name call.
struct HostAnswer {
    std::optional<std::string> name = "host.example";  // without: a null name
    std::vector<std::string> addresses = {};           // raw bytes each, see AddressBytes
    short addressType = 2;
    short addressLength = 4;
    bool nullAddressList = false;
};

// The entry that the calling thread's last name call returned, or null.
Winsock::HostEntry* CurrentHostEntry();

// One entry of a list of addresses, wrong in any way that a test wants. A list has the lowest
// number from 1 on that no open list has; freeaddrinfo overwrites all that it holds with 0xDD
// bytes.
struct ListedAddress {
    // "10.0.0.1" or "2001:DB8::1", as the family says.
    ListedAddress(int familyOfAddress, const std::string& text, unsigned short port);
    // Any bytes as the address, of any family and length.
    ListedAddress(int familyOfEntry, std::string rawBytes);

    int family;
    std::string bytes;
    std::optional<int> type = {};  // without: the hint's
    std::optional<int> protocol = {};
};

// One entry of a queue. Tests make these through On.
struct Answer {
    enum class Kind { Usual, Result, Failure, Exception };

    Kind kind = Kind::Usual;
    long long result = 0;  // of a failure: 0 for what the call returns then
    int error = 0;
    std::exception_ptr exception = nullptr;
    std::string bytes = {};
    std::u16string text = {};
    HostAnswer host = {};
    std::vector<ListedAddress> addresses = {};
    std::optional<std::string> address = {};
    std::string service = {};
    std::vector<Winsock::Handle> readable = {}, writable = {}, exceptional = {};
    unsigned short version = 0x0202;
    unsigned short highestVersion = 0x0202;
};

void QueueAnswer(const std::string& call, Answer answer);

// What can be queued for any call. Fails sets the last error (or hands out the number where the
// call has a parameter for it) and returns what the call returns on failure.
template <class Self>
class Answers {
public:
    explicit Answers(std::string call) : call_(std::move(call)) {}

    // The usual result, this many times.
    Self& Passes(int times = 1) {
        for (int time = 0; time < times; ++time)
            Queue({});
        return Own();
    }
    Self& Fails(int error) { return Queue({.kind = Answer::Kind::Failure, .error = error}); }
    template <class Thrown>
    Self& Throws(Thrown thrown) {
        return Queue({.kind = Answer::Kind::Exception,
                      .exception = std::make_exception_ptr(std::move(thrown))});
    }

protected:
    Self& Queue(Answer answer) {
        QueueAnswer(call_, std::move(answer));
        return Own();
    }

private:
    Self& Own() { return static_cast<Self&>(*this); }

    std::string call_;
};

class PlainAnswers : public Answers<PlainAnswers> {
public:
    using Answers::Answers;
};

class NumberAnswers : public Answers<NumberAnswers> {
public:
    using Answers::Answers;
    NumberAnswers& Returns(long long result);
};

class StartupAnswers : public Answers<StartupAnswers> {
public:
    using Answers::Answers;
    StartupAnswers& Returns(int code, unsigned short version = 0x0202,
                            unsigned short highestVersion = 0x0202);
};

class AddressAnswers : public Answers<AddressAnswers> {
public:
    using Answers::Answers;
    AddressAnswers& Returns(const std::string& dotted, unsigned short port);
    // Any bytes as the address; the length reported is theirs, what has no room is cut off.
    AddressAnswers& ReturnsRaw(std::string address);
};

class AcceptAnswers : public Answers<AcceptAnswers> {
public:
    using Answers::Answers;
    AcceptAnswers& Returns(Winsock::Handle handle, const std::string& dotted, unsigned short port);
    AcceptAnswers& ReturnsRaw(Winsock::Handle handle, std::string address);
};

class ReceiveAnswers : public Answers<ReceiveAnswers> {
public:
    using Answers::Answers;
    // Fills the buffer and returns the number of bytes; they must fit.
    ReceiveAnswers& Delivers(std::string bytes);
    // Returns the number and leaves the buffer alone.
    ReceiveAnswers& Returns(int result);
};

class DatagramAnswers : public Answers<DatagramAnswers> {
public:
    using Answers::Answers;
    // Fills the buffer and returns the number of bytes; they must fit.
    DatagramAnswers& Delivers(std::string bytes, const std::string& dotted, unsigned short port);
    // Any bytes as the sender's address; the length reported is theirs, what has no room is cut
    // off.
    DatagramAnswers& DeliversFrom(std::string bytes, std::string address);
    // Leaves the address and its length alone.
    DatagramAnswers& Delivers(std::string bytes);
    // Returns the number and leaves everything alone.
    DatagramAnswers& Returns(int result);
};

class SelectAnswers : public Answers<SelectAnswers> {
public:
    using Answers::Answers;
    // Leaves these in the sets and returns how many they are.
    SelectAnswers& Ready(std::vector<Winsock::Handle> readable,
                         std::vector<Winsock::Handle> writable = {},
                         std::vector<Winsock::Handle> exceptional = {});
    // The same with another number.
    SelectAnswers& Returns(int result, std::vector<Winsock::Handle> readable = {},
                           std::vector<Winsock::Handle> writable = {},
                           std::vector<Winsock::Handle> exceptional = {});
};

// Calls that return the error number as well as leave it behind.
template <class Self>
class NumberedFailures : public Answers<Self> {
public:
    using Answers<Self>::Answers;
    // Returns the number and leaves it as the last error.
    Self& Fails(int error) { return FailsReturning(error, error); }
    // Returns one number and leaves another.
    Self& FailsReturning(int result, int lastError) {
        return this->Queue({.kind = Answer::Kind::Failure, .result = result, .error = lastError});
    }
};

class AddressListAnswers : public NumberedFailures<AddressListAnswers> {
public:
    using NumberedFailures::NumberedFailures;
    AddressListAnswers& Returns(std::vector<ListedAddress> addresses);
    // Succeeds with null for the list.
    AddressListAnswers& ReturnsEmpty();
};

class NameAnswers : public NumberedFailures<NameAnswers> {
public:
    using NumberedFailures::NumberedFailures;
    NameAnswers& Returns(std::string host, std::string service);
};

class IoctlAnswers : public Answers<IoctlAnswers> {
public:
    using Answers::Answers;
    // Succeeds; with the bytes-available command that many are available.
    IoctlAnswers& Returns(unsigned int bytesAvailable = 0);
};

class HostAnswers : public Answers<HostAnswers> {
public:
    using Answers::Answers;
    HostAnswers& Returns(const std::vector<std::string>& dotted,
                         const std::string& name = "host.example");
    HostAnswers& ReturnsRaw(HostAnswer host);
};

class BytesAnswers : public Answers<BytesAnswers> {
public:
    using Answers::Answers;
    BytesAnswers& Returns(std::string bytes);
};

class WideAnswers : public Answers<WideAnswers> {
public:
    using Answers::Answers;
    WideAnswers& Returns(std::u16string text);
};

namespace On {

inline StartupAnswers WSAStartup() {
    return StartupAnswers("WSAStartup");
}
inline NumberAnswers WSACleanup() {
    return NumberAnswers("WSACleanup");
}
inline NumberAnswers Socket() {
    return NumberAnswers("socket");
}
inline NumberAnswers Closesocket() {
    return NumberAnswers("closesocket");
}
inline NumberAnswers Bind() {
    return NumberAnswers("bind");
}
inline NumberAnswers Listen() {
    return NumberAnswers("listen");
}
inline NumberAnswers Connect() {
    return NumberAnswers("connect");
}
inline AcceptAnswers Accept() {
    return AcceptAnswers("accept");
}
inline AddressAnswers Getsockname() {
    return AddressAnswers("getsockname");
}
inline AddressAnswers Getpeername() {
    return AddressAnswers("getpeername");
}
inline NumberAnswers Send() {
    return NumberAnswers("send");
}
inline ReceiveAnswers Recv() {
    return ReceiveAnswers("recv");
}
inline NumberAnswers Sendto() {
    return NumberAnswers("sendto");
}
inline DatagramAnswers Recvfrom() {
    return DatagramAnswers("recvfrom");
}
inline SelectAnswers Select() {
    return SelectAnswers("select");
}
inline NumberAnswers Setsockopt() {
    return NumberAnswers("setsockopt");
}
inline IoctlAnswers Ioctlsocket() {
    return IoctlAnswers("ioctlsocket");
}
inline HostAnswers Gethostbyname() {
    return HostAnswers("gethostbyname");
}
inline HostAnswers Gethostbyaddr() {
    return HostAnswers("gethostbyaddr");
}
inline BytesAnswers Gethostname() {
    return BytesAnswers("gethostname");
}
inline AddressListAnswers Getaddrinfo() {
    return AddressListAnswers("getaddrinfo");
}
inline PlainAnswers Freeaddrinfo() {
    return PlainAnswers("freeaddrinfo");
}
inline NameAnswers Getnameinfo() {
    return NameAnswers("getnameinfo");
}
inline NumberAnswers InetAddr() {
    return NumberAnswers("inet_addr");
}

inline PlainAnswers Sleep() {
    return PlainAnswers("Sleep");
}
inline WideAnswers ComputerName() {
    return WideAnswers("ComputerName");
}
// Returns(major) makes that the major version.
inline NumberAnswers GetVersionExW() {
    return NumberAnswers("GetVersionExW");
}
inline WideAnswers ErrorDescription() {
    return WideAnswers("ErrorDescription");
}
inline WideAnswers WideFromCodePage() {
    return WideAnswers("WideFromCodePage");
}
inline BytesAnswers CodePageFromWide() {
    return BytesAnswers("CodePageFromWide");
}
inline PlainAnswers OpenLogFile() {
    return PlainAnswers("OpenLogFile");
}
// Returns that many, and that many bytes of the record are in the file.
inline NumberAnswers WriteLogFile() {
    return NumberAnswers("WriteLogFile");
}

inline PlainAnswers OpenKey() {
    return PlainAnswers("OpenKey");
}
inline PlainAnswers OpenSubKey() {
    return PlainAnswers("OpenSubKey");
}
inline PlainAnswers ReadValue() {
    return PlainAnswers("ReadValue");
}
inline PlainAnswers SubKeyNames() {
    return PlainAnswers("SubKeyNames");
}

}  // namespace On

// "recv" once for each answer that is still queued for recv, and so on.
std::vector<std::string> UnusedAnswers();
// Drops them, for code under test that may end before it asks.
void ForgetAnswers();

// What was written to the log file of that path, or to standard error.
std::string LogFileContents(const std::string& path);
std::string StandardErrorContents();

}  // namespace Scripted
