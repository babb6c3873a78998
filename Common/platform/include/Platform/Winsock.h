// The seam to the system's sockets: the calls of Windows Sockets 2 that the library makes, under
// their own names.
//
// All numbers are Winsock's, whatever system is below: families, levels, options, error numbers and
// structure layouts. Constants and structures have their own names, because the systems' headers
// define the usual ones as macros. Exactly one implementation is linked: posix, windows, or the
// scripted one of the tests.
//
// A failing call returns SocketError, InvalidSocket or null and sets the calling thread's last
// error (WSAGetLastError); a successful one sets it to 0. Without WSAStartup, socket calls fail
// with 10093. A handle that is not an open socket fails with 10038. No call fails because of a
// signal, and none raises one.
#pragma once

#include <cstddef>

namespace Winsock {

using Handle = unsigned long long;

inline constexpr Handle InvalidSocket = ~0ULL;
inline constexpr int SocketError = -1;
inline constexpr unsigned int NoAddress =
    0xFFFFFFFFU;  // inet_addr's result for a string that is not an address

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

// Joining and leaving a group have the same numbers at both families' levels.
inline constexpr int OptionAddMembership = 12;
inline constexpr int OptionDropMembership = 13;

inline constexpr unsigned int CommandNonBlocking = 0x8004667EU;
inline constexpr unsigned int CommandBytesAvailable = 0x4004667FU;

// Flags of getnameinfo: numeric host, numeric service, and the service's name for datagrams.
inline constexpr int NumericHost = 2;
inline constexpr int NumericService = 8;
inline constexpr int DatagramService = 16;

// The error numbers that the library compares with. All others are only passed on.
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

// A buffer for a socket address of any family.
struct alignas(8) AddressStorage {
    unsigned short family;
    unsigned char bytes[126];
};

// What WSAStartup reports about the system's sockets.
struct StartupData {
    unsigned short version;
    unsigned short highestVersion;
    unsigned short maximumSockets;
    unsigned short maximumDatagram;
    char* vendorInformation;
    char description[257];
    char systemStatus[129];
};

// A host: its official name, its aliases and its addresses; both lists end with null. Owned by the
// calling thread's socket layer and valid until that thread's next name call.
struct HostEntry {
    char* name;
    char** aliases;
    short addressType;
    short addressLength;
    char** addresses;
};

// One address of a list that getaddrinfo returns. In a hint only flags, family, type and protocol
// are used.
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

// The group to join or leave, and the interface; an interface of zeros is the default one.
struct alignas(4) MembershipIpv4 {
    unsigned char group[4];
    unsigned char interfaceAddress[4];
};
struct alignas(4) MembershipIpv6 {
    unsigned char group[16];
    unsigned int interfaceIndex;
};

// The handles that select waits for, or found ready.
struct HandleSet {
    static constexpr unsigned int Room = 64;

    unsigned int count;
    Handle handles[Room];
};

// The longest time that select waits.
struct TimeValue {
    int seconds;
    int microseconds;
};

static_assert(sizeof(AddressInfo) == 48 && sizeof(MembershipIpv4) == 8 &&
              sizeof(MembershipIpv6) == 20 && sizeof(HandleSet) == 520 && sizeof(TimeValue) == 8);
static_assert(sizeof(AddressIpv4) == 16 && sizeof(AddressIpv6) == 28 &&
              sizeof(AddressStorage) == 128);
static_assert(sizeof(StartupData) == 408 && sizeof(HostEntry) == 32);

// Starts Winsock for the process, or counts another start. The requested version has the major
// number in its low byte. Returns 0 or the error number; does not set the last error.
int WSAStartup(unsigned short version, StartupData* data);

// Undoes one WSAStartup. The last one closes all sockets that are still open.
int WSACleanup();

// Returns the calling thread's last error.
int WSAGetLastError() noexcept;

Handle socket(int family, int type, int protocol);
int closesocket(Handle handle);

// Address lengths are in bytes. A length above that of the family's address is accepted, one below
// is refused.
int bind(Handle handle, const void* address, int length);
int listen(Handle handle, int backlog);
int connect(Handle handle, const void* address, int length);
Handle accept(Handle handle, void* address, int* length);
int getsockname(Handle handle, void* address, int* length);
int getpeername(Handle handle, void* address, int* length);

// Transfer bytes to and from the peer; lengths and results are in bytes.
int send(Handle handle, const char* buffer, int length, int flags);
int recv(Handle handle, char* buffer, int length, int flags);

// Transfer one datagram. A datagram that is longer than the buffer is cut off, and the call fails
// with 10040. On a connected stream recvfrom does not write the address and its length.
int sendto(Handle handle, const char* buffer, int length, int flags, const void* address,
           int addressLength);
int recvfrom(Handle handle, char* buffer, int length, int flags, void* address, int* addressLength);

// Waits until a handle is ready or the time has elapsed, without limit if the time is null. Returns
// how many handles are ready and leaves these in the sets, in their order. A null set counts as
// empty; the first argument is ignored.
int select(int ignored, HandleSet* read, HandleSet* write, HandleSet* except,
           const TimeValue* timeout);

// Timeouts are 4-byte values in milliseconds; 0 means no limit.
int setsockopt(Handle handle, int level, int option, const char* value, int length);
int ioctlsocket(Handle handle, unsigned int command, unsigned int* argument);

HostEntry* gethostbyname(const char* name);
HostEntry* gethostbyaddr(const char* address, int length, int family);
int gethostname(char* name, int length);

// Resolves a host and a service, each given as a name or a number; the caller frees the list. On
// failure returns the error number, which is also the last error, and stores null.
int getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                AddressInfo** result);
void freeaddrinfo(AddressInfo* list);

// Returns the host and service strings of an address. The result is 0 or the error number, which is
// also the last error. Buffer sizes are in bytes and include the terminator.
int getnameinfo(const void* address, int addressLength, char* host, unsigned int hostRoom,
                char* service, unsigned int serviceRoom, int flags);

// Returns the address of a dotted string as it stands in memory, first number at the lowest
// address, or NoAddress for any other string. Needs no WSAStartup; leaves the last error unchanged,
// except for null.
unsigned int inet_addr(const char* text);

}  // namespace Winsock
