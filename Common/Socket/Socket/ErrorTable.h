// The fixed table of the library's errors.
#pragma once

#include "VelBase/WideLiteral.h"
#include "VelNet/SocketError.h"

namespace VelNet {

// One error: its numbers on five families of systems, the Windows Sockets number that it is found
// by, and the code and text that it is reported with. Of the five numbers, -1 means that the
// condition does not exist there and -2 that it has no equivalent. Nothing reads them.
struct ErrorTableRow {
    int bsdErrno;
    int aixErrno;
    int hpuxErrno;
    int solarisErrno;
    int linuxErrno;
    int winsockKey;
    SOCKET_ERR code;
    const unsigned short* text;
};

// The first row with the key counts. The last row ends the table and stands for all numbers that
// are not in it.
inline constexpr int ErrorTableEndKey = -1;

using VelBase::operator""_wide;

// clang-format off
inline constexpr ErrorTableRow ErrorTable[] = {
//   BSD, AIX, HP-UX, Solaris, Linux, key, code, text
    // Required (ErrorTableLookUp.SuccessIsKnownAsTenThousandOnly): keyed 10000, not 0.
    {  0,   0,   0,   0,   0, 10000, SOCKET_ERR_SUCCESS,         "The function succeeded"_wide},
    { 13,  13,  13,  13,  13, 10013, SOCKET_ERR_ACCES,           "Permission denied"_wide},
    { 48,  67, 226, 125,  98, 10048, SOCKET_ERR_ADDRINUSE,       "Address already in use"_wide},
    { 49,  68, 227, 126,  99, 10049, SOCKET_ERR_ADDRNOTAVAIL,    "Cannot assign requested address"_wide},
    { 47,  66, 225, 124,  97, 10047, SOCKET_ERR_AFNOSUPPORT,     "Address family not supported by protocol family"_wide},
    { 37,  56, 244, 149, 114, 10037, SOCKET_ERR_ALREADY,         "Operation already in progress"_wide},
    {  9,   9,   9,   9,   9, 10009, SOCKET_ERR_BADF,            "Bad file descriptor"_wide},
    { 53,  72, 231, 130, 103, 10053, SOCKET_ERR_CONNABORTED,     "Software caused connection abort"_wide},
    { 61,  79, 239, 146, 111, 10061, SOCKET_ERR_CONNREFUSED,     "Connection refused"_wide},
    { 54,  73, 232, 131, 104, 10054, SOCKET_ERR_CONNRESET,       "Connection reset by peer"_wide},
    { 39,  58, 217,  96,  89, 10039, SOCKET_ERR_DESTADDRREQ,     "Destination address requested"_wide},
    { 69,  88,  69,  49, 122, 10069, SOCKET_ERR_DQUOT,           "Disk quota exceeded"_wide},
    { 14,  14,  14,  14,  14, 10014, SOCKET_ERR_FAULT,           "Bad address"_wide},
    { 64,  80, 241, 147, 112, 10064, SOCKET_ERR_HOSTDOWN,        "Host is down"_wide},
    { 65,  81, 242, 148, 113, 10065, SOCKET_ERR_HOSTUNREACH,     "No route to host"_wide},
    { 36,  55, 245, 150, 115, 10036, SOCKET_ERR_INPROGRESS,      "Operation now in progress"_wide},
    {  4,   4,   4,   4,   4, 10004, SOCKET_ERR_INTR,            "Interrupted function call"_wide},
    { 22,  22,  22,  22,  22, 10022, SOCKET_ERR_INVAL,           "Invalid argument"_wide},
    { 56,  75, 234, 133, 106, 10056, SOCKET_ERR_ISCONN,          "Socket is already connected"_wide},
    { 62,  85, 249,  90,  40, 10062, SOCKET_ERR_LOOP,            "Too many levels of symbolic links"_wide},
    { 24,  24,  24,  24,  24, 10024, SOCKET_ERR_MFILE,           "Too many open files"_wide},
    { 40,  59, 218,  97,  90, 10040, SOCKET_ERR_MSGSIZE,         "Message too long"_wide},
    { 63,  86, 248,  78,  36, 10063, SOCKET_ERR_NAMETOOLONG,     "File name too long"_wide},
    { 50,  69, 228, 127, 100, 10050, SOCKET_ERR_NETDOWN,         "Network is down"_wide},
    { 52,  71, 230, 129, 102, 10052, SOCKET_ERR_NETRESET,        "Network dropped connection on reset"_wide},
    { 51,  70, 229, 128, 101, 10051, SOCKET_ERR_NETUNREACH,      "Network is unreachable"_wide},
    { 55,  74, 233, 132, 105, 10055, SOCKET_ERR_NOBUFS,          "No buffer space available"_wide},
    { 42,  61, 220,  99,  92, 10042, SOCKET_ERR_NOPROTOOPT,      "Bad protocol option"_wide},
    { 57,  76, 235, 134, 107, 10057, SOCKET_ERR_NOTCONN,         "Socket is not connected"_wide},
    { 66,  87, 247,  93,  39, 10066, SOCKET_ERR_NOTEMPTY,        "Directory not empty"_wide},
    { 38,  57, 216,  95,  88, 10038, SOCKET_ERR_NOTSOCK,         "Socket operation on nonsocket"_wide},
    { 45,  64, 223, 122,  95, 10045, SOCKET_ERR_OPNOTSUPP,       "Operation not supported"_wide},
    { 46,  65, 224, 123,  96, 10046, SOCKET_ERR_PFNOSUPPORT,     "Protocol family not supported"_wide},
    { 67,  83,  -1,  -1,  -1, 10067, SOCKET_ERR_PROCLIM,         "Too many processes"_wide},
    // Required (ErrorTableLookUp.NumbersWithoutTheOffsetAreTheOnesThatAreKnown): keyed without the
    // usual offset of 10000.
    { 43,  62, 221, 120,  93,    43, SOCKET_ERR_PROTONOSUPPORT,  "Protocol not supported"_wide},
    { 41,  60, 219,  98,  91, 10041, SOCKET_ERR_PROTOTYPE,       "Protocol wrong type for socket"_wide},
    { 71,  93,  71,  66,  66, 10071, SOCKET_ERR_REMOTE,          "Too many levels of remote in path"_wide},
    { 58,  77, 236, 143, 108, 10058, SOCKET_ERR_SHUTDOWN,        "Cannot send after socket shutdown"_wide},
    // Required (ErrorTableLookUp.NumbersWithoutTheOffsetAreTheOnesThatAreKnown): like 43.
    { 44,  63, 222, 121,  94,    44, SOCKET_ERR_SOCKTNOSUPPORT,  "Socket type not supported"_wide},
    { 70,  52,  70, 151, 116, 10070, SOCKET_ERR_STALE,           "Stale NFS file handle"_wide},
    { 60,  78, 238, 145, 110, 10060, SOCKET_ERR_TIMEDOUT,        "Connection timed out"_wide},
    { 59, 115, 237, 144, 109, 10059, SOCKET_ERR_TOOMANYREFS,     "Too many references; cannot splice"_wide},
    { 68,  84,  68,  94,  87, 10068, SOCKET_ERR_USERS,           "Too many users"_wide},
    { 35,  54, 246,  11,  11, 10035, SOCKET_ERR_WOULDBLOCK,      "Resource temporarily unavailable"_wide},
    { -2,  -2,  -2,  -2,  -2, 11001, SOCKET_ERR_HOST_NOT_FOUND,  "host not found"_wide},
    { -2,  -2,  -2,  -2,  -2, 10093, SOCKET_ERR_NOTINITIALISED,  "Successful WSAStartup() not yet performed"_wide},
    { 96, 122,  51,  61,  61, 11004, SOCKET_ERR_NO_DATA,         "Valid name, no data record of requested type"_wide},
    {104,  -2,  -2,  59,  -2, 11003, SOCKET_ERR_NO_RECOVERY,     "This is a nonrecoverable error"_wide},
    { -2,  46,  -2,  -2,  -2, 10091, SOCKET_ERR_SYSNOTREADY,     "Network subsystem is unavailable"_wide},
    { 35,  11,  11,  11,  11, 11002, SOCKET_ERR_TRY_AGAIN,       "Nonauthoritative host not found"_wide},
    // Required (ErrorTableLookUp.NumbersWithoutTheOffsetAreTheOnesThatAreKnown): like 43.
    { -2,  -2,  -2,  -2,  -2,    92, SOCKET_ERR_VERNOTSUPPORTED, "WINSOCK.DLL version out of range"_wide},
    // Required (ErrorTableLookUp.MinusTwoGivesTheFirstOfItsFiveRows): five rows share the key -2; a
    // look-up finds only the first.
    {  1,   1,   1,   1,   1,    -2, SOCKET_ERR_NOT_PERMITTED,   "Operation not permitted"_wide},
    { 30,  30,  30,  30,  30,    -2, SOCKET_ERR_READ_ONLY,       "Read only file system"_wide},
    {  2,   2,   2,   2,   2,    -2, SOCKET_ERR_NO_ENTRY,        "No such file or directory"_wide},
    { 12,  12,  12,  12,  12,    -2, SOCKET_ERR_NO_SPACE,        "Not enough space"_wide},
    { 20,  20,  20,  20,  20,    -2, SOCKET_ERR_NOT_DIRECTORY,   "Not a directory"_wide},
    { -1,  -1,  -1,  -1,  -1,    -1, SOCKET_ERR_UNKNOWN,         "Unknown error"_wide},
};
// clang-format on

}  // namespace VelNet
