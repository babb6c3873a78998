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

#include <cstddef>

namespace Winsock {

using Handle = unsigned long long;

inline constexpr Handle InvalidSocket = ~0ULL;
inline constexpr int SocketError = -1;
inline constexpr unsigned int NoAddress =
    0xFFFFFFFFU;  // what inet_addr answers to a text that is none

inline constexpr int FamilyUnspecified = 0;
inline constexpr int FamilyIpv4 = 2;
inline constexpr int FamilyIpv6 = 23;
inline constexpr int TypeStream = 1;
inline constexpr int TypeDatagram = 2;
inline constexpr int ProtocolTcp = 6;
inline constexpr int ProtocolUdp = 17;

inline constexpr int LevelSocket = 0xFFFF;
inline constexpr int LevelIpv4 = 0;
inline constexpr int LevelIpv6 = 41;
inline constexpr int OptionReuseAddress = 4;
inline constexpr int OptionBroadcast = 0x20;
inline constexpr int OptionSendTimeout = 0x1005;
inline constexpr int OptionReceiveTimeout = 0x1006;

// Joining and leaving a group have the same numbers at the levels of both families.
inline constexpr int OptionAddMembership = 12;
inline constexpr int OptionDropMembership = 13;

inline constexpr unsigned int CommandNonBlocking = 0x8004667EU;
inline constexpr unsigned int CommandBytesAvailable = 0x4004667FU;

// What getnameinfo is to answer with: numbers for the host, numbers for the service, and the
// service as datagrams have it.
inline constexpr int NumericHost = 2;
inline constexpr int NumericService = 8;
inline constexpr int DatagramService = 16;

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

// One address of a list that getaddrinfo has made. As a hint, only flags, family, type and protocol
// count.
struct AddressInfo {
    int flags;
    int family;
    int type;
    int protocol;
    std::size_t addressLength;
    char* canonicalName;
    void* address;
    AddressInfo* next;
};

// Which group to join or leave, on which interface; an interface of zeroes is the default one.
struct alignas(4) MembershipIpv4 {
    unsigned char group[4];
    unsigned char interfaceAddress[4];
};
struct alignas(4) MembershipIpv6 {
    unsigned char group[16];
    unsigned int interfaceIndex;
};

// The handles that select watches, or found ready.
struct HandleSet {
    static constexpr unsigned int Room = 64;

    unsigned int count;
    Handle handles[Room];
};

// How long select waits at most.
struct TimeValue {
    int seconds;
    int microseconds;
};

static_assert(sizeof(AddressInfo) == 48 && sizeof(MembershipIpv4) == 8 &&
              sizeof(MembershipIpv6) == 20 && sizeof(HandleSet) == 520 && sizeof(TimeValue) == 8);
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

// One datagram each. What a call has no room for is lost, and the call fails with 10040. recvfrom
// on a connected stream leaves the address and its length alone.
int sendto(Handle handle, const char* buffer, int length, int flags, const void* address,
           int addressLength);
int recvfrom(Handle handle, char* buffer, int length, int flags, void* address, int* addressLength);

// Waits until a handle is ready or the time is over; a null time waits for ever. Returns how many
// handles are ready and leaves those in the sets, in their order. Null sets count as empty; the
// first argument is ignored.
int select(int ignored, HandleSet* read, HandleSet* write, HandleSet* except,
           const TimeValue* timeout);

// Time-outs are 4-byte values in milliseconds, 0 for none.
int setsockopt(Handle handle, int level, int option, const char* value, int length);
int ioctlsocket(Handle handle, unsigned int command, unsigned int* argument);

HostEntry* gethostbyname(const char* name);
HostEntry* gethostbyaddr(const char* address, int length, int family);
int gethostname(char* name, int length);

// The addresses of a host and service, both given as names or numbers; the caller gives the list
// back. Fails by returning the error number, which is the last error as well, and stores null.
int getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                AddressInfo** result);
void freeaddrinfo(AddressInfo* list);

// The texts of an address; returns 0 or the error number, which is the last error as well. Rooms in
// bytes, terminators included.
int getnameinfo(const void* address, int addressLength, char* host, unsigned int hostRoom,
                char* service, unsigned int serviceRoom, int flags);

// The address of a dotted text as it stands in memory, first number at the lowest address;
// NoAddress for a text that is none. Needs no WSAStartup and leaves the last error alone, except
// for null.
unsigned int inet_addr(const char* text);

}  // namespace Winsock
