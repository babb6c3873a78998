// The seam to the system's sockets: the calls of Windows Sockets 2 that the library makes, under
// their own names.
//
// Everything here speaks Winsock's language, whatever system is below: its families, levels,
// options, error numbers and structure layouts. Constants and structures have names of their own,
// because the systems' headers turn the usual ones into macros. Exactly one implementation is
// linked: posix, windows, or the scripted one of the tests.
//
// Failing calls return SocketError, InvalidSocket or null and leave the reason in WSAGetLastError
// of the calling thread; succeeding calls leave 0 there. Socket calls of a process that has not
// called WSAStartup fail with 10093. A handle that is no open socket fails with 10038. No call ever
// fails because of a signal, and none raises one.
#pragma once

namespace Winsock {

using Handle = unsigned long long;

inline constexpr Handle InvalidSocket = ~0ULL;
inline constexpr int SocketError = -1;
inline constexpr unsigned int NoAddress =
    0xFFFFFFFFU;  // what inet_addr answers to a text that is none

inline constexpr int FamilyIpv4 = 2;
inline constexpr int FamilyIpv6 = 23;
inline constexpr int TypeStream = 1;
inline constexpr int TypeDatagram = 2;
inline constexpr int ProtocolTcp = 6;
inline constexpr int ProtocolUdp = 17;

inline constexpr int LevelSocket = 0xFFFF;
inline constexpr int OptionReuseAddress = 4;
inline constexpr int OptionSendTimeout = 0x1005;
inline constexpr int OptionReceiveTimeout = 0x1006;

inline constexpr unsigned int CommandNonBlocking = 0x8004667EU;
inline constexpr unsigned int CommandBytesAvailable = 0x4004667FU;

// The error numbers that the library tests for by name. All others pass through it as numbers.
inline constexpr int ErrorWouldBlock = 10035;

// An IPv4 socket address. The port is in network byte order: its first byte is the higher one.
struct alignas(4) AddressIpv4 {
    unsigned short family;
    unsigned char port[2];
    unsigned char address[4];
    unsigned char zero[8];
};

// An IPv6 socket address. Port and flow information are in network byte order.
struct alignas(4) AddressIpv6 {
    unsigned short family;
    unsigned char port[2];
    unsigned int flowInformation;
    unsigned char address[16];
    unsigned int scope;
};

// Room for a socket address of any family.
struct alignas(8) AddressStorage {
    unsigned short family;
    unsigned char bytes[126];
};

// What WSAStartup tells about the system's sockets.
struct StartupData {
    unsigned short version;
    unsigned short highestVersion;
    unsigned short maximumSockets;
    unsigned short maximumDatagram;
    char* vendorInformation;
    char description[257];
    char systemStatus[129];
};

// A host: its official name, its other names, and its addresses, both lists ended by null. It
// belongs to the calling thread's socket layer and holds until that thread's next name call.
struct HostEntry {
    char* name;
    char** aliases;
    short addressType;
    short addressLength;
    char** addresses;
};

static_assert(sizeof(AddressIpv4) == 16 && sizeof(AddressIpv6) == 28 &&
              sizeof(AddressStorage) == 128);
static_assert(sizeof(StartupData) == 408 && sizeof(HostEntry) == 32);

// Starts Winsock for the process, or counts one start more. The requested version has the major
// number in its low byte. Returns 0 or the error number; the last error is not set.
int WSAStartup(unsigned short version, StartupData* data);

// Takes back one WSAStartup. The last one closes every socket that is still open.
int WSACleanup();

// The number of the calling thread's last failure.
int WSAGetLastError() noexcept;

Handle socket(int family, int type, int protocol);
int closesocket(Handle handle);

// Address lengths are in bytes; a longer length than the family needs is accepted, a shorter one is
// not.
int bind(Handle handle, const void* address, int length);
int listen(Handle handle, int backlog);
int connect(Handle handle, const void* address, int length);
Handle accept(Handle handle, void* address, int* length);
int getsockname(Handle handle, void* address, int* length);
int getpeername(Handle handle, void* address, int* length);

// One transfer each; lengths and results in bytes.
int send(Handle handle, const char* buffer, int length, int flags);
int recv(Handle handle, char* buffer, int length, int flags);

// Time-outs are 4-byte values in milliseconds, 0 for none.
int setsockopt(Handle handle, int level, int option, const char* value, int length);
int ioctlsocket(Handle handle, unsigned int command, unsigned int* argument);

HostEntry* gethostbyname(const char* name);
HostEntry* gethostbyaddr(const char* address, int length, int family);
int gethostname(char* name, int length);

// The address of a dotted text as it stands in memory, first number at the lowest address;
// NoAddress for a text that is none. Needs no WSAStartup and leaves the last error alone, except
// for null.
unsigned int inet_addr(const char* text);

}  // namespace Winsock
