#include "ErrorTableExpectations.h"

#include <algorithm>

namespace FoundationTests {

// clang-format off
const std::array<ExpectedErrorRow, ErrorRowCount> ExpectedErrorTable = {{
//  BSD, AIX, HP-UX, Solaris, Linux, key, code, text
    {  0,   0,   0,   0,   0,  10000,  10000, u"The function succeeded"},
    { 13,  13,  13,  13,  13,  10013,  10013, u"Permission denied"},
    { 48,  67, 226, 125,  98,  10048,  10048, u"Address already in use"},
    { 49,  68, 227, 126,  99,  10049,  10049, u"Cannot assign requested address"},
    { 47,  66, 225, 124,  97,  10047,  10047, u"Address family not supported by protocol family"},
    { 37,  56, 244, 149, 114,  10037,  10037, u"Operation already in progress"},
    {  9,   9,   9,   9,   9,  10009,  10009, u"Bad file descriptor"},
    { 53,  72, 231, 130, 103,  10053,  10053, u"Software caused connection abort"},
    { 61,  79, 239, 146, 111,  10061,  10061, u"Connection refused"},
    { 54,  73, 232, 131, 104,  10054,  10054, u"Connection reset by peer"},
    { 39,  58, 217,  96,  89,  10039,  10039, u"Destination address requested"},
    { 69,  88,  69,  49, 122,  10069,  10069, u"Disk quota exceeded"},
    { 14,  14,  14,  14,  14,  10014,  10014, u"Bad address"},
    { 64,  80, 241, 147, 112,  10064,  10064, u"Host is down"},
    { 65,  81, 242, 148, 113,  10065,  10065, u"No route to host"},
    { 36,  55, 245, 150, 115,  10036,  10036, u"Operation now in progress"},
    {  4,   4,   4,   4,   4,  10004,  10004, u"Interrupted function call"},
    { 22,  22,  22,  22,  22,  10022,  10022, u"Invalid argument"},
    { 56,  75, 234, 133, 106,  10056,  10056, u"Socket is already connected"},
    { 62,  85, 249,  90,  40,  10062,  10062, u"Too many levels of symbolic links"},
    { 24,  24,  24,  24,  24,  10024,  10024, u"Too many open files"},
    { 40,  59, 218,  97,  90,  10040,  10040, u"Message too long"},
    { 63,  86, 248,  78,  36,  10063,  10063, u"File name too long"},
    { 50,  69, 228, 127, 100,  10050,  10050, u"Network is down"},
    { 52,  71, 230, 129, 102,  10052,  10052, u"Network dropped connection on reset"},
    { 51,  70, 229, 128, 101,  10051,  10051, u"Network is unreachable"},
    { 55,  74, 233, 132, 105,  10055,  10055, u"No buffer space available"},
    { 42,  61, 220,  99,  92,  10042,  10042, u"Bad protocol option"},
    { 57,  76, 235, 134, 107,  10057,  10057, u"Socket is not connected"},
    { 66,  87, 247,  93,  39,  10066,  10066, u"Directory not empty"},
    { 38,  57, 216,  95,  88,  10038,  10038, u"Socket operation on nonsocket"},
    { 45,  64, 223, 122,  95,  10045,  10045, u"Operation not supported"},
    { 46,  65, 224, 123,  96,  10046,  10046, u"Protocol family not supported"},
    { 67,  83,  -1,  -1,  -1,  10067,  10067, u"Too many processes"},
    { 43,  62, 221, 120,  93,     43,  10043, u"Protocol not supported"},
    { 41,  60, 219,  98,  91,  10041,  10041, u"Protocol wrong type for socket"},
    { 71,  93,  71,  66,  66,  10071,  10071, u"Too many levels of remote in path"},
    { 58,  77, 236, 143, 108,  10058,  10058, u"Cannot send after socket shutdown"},
    { 44,  63, 222, 121,  94,     44,  10044, u"Socket type not supported"},
    { 70,  52,  70, 151, 116,  10070,  10070, u"Stale NFS file handle"},
    { 60,  78, 238, 145, 110,  10060,  10060, u"Connection timed out"},
    { 59, 115, 237, 144, 109,  10059,  10059, u"Too many references; cannot splice"},
    { 68,  84,  68,  94,  87,  10068,  10068, u"Too many users"},
    { 35,  54, 246,  11,  11,  10035,  10035, u"Resource temporarily unavailable"},
    { -2,  -2,  -2,  -2,  -2,  11001,  11001, u"host not found"},
    { -2,  -2,  -2,  -2,  -2,  10093,  10093, u"Successful WSAStartup() not yet performed"},
    { 96, 122,  51,  61,  61,  11004,  11004, u"Valid name, no data record of requested type"},
    {104,  -2,  -2,  59,  -2,  11003,  11003, u"This is a nonrecoverable error"},
    { -2,  46,  -2,  -2,  -2,  10091,  10091, u"Network subsystem is unavailable"},
    { 35,  11,  11,  11,  11,  11002,  11002, u"Nonauthoritative host not found"},
    { -2,  -2,  -2,  -2,  -2,     92,  10092, u"WINSOCK.DLL version out of range"},
    {  1,   1,   1,   1,   1,     -2,      1, u"Operation not permitted"},
    { 30,  30,  30,  30,  30,     -2,      2, u"Read only file system"},
    {  2,   2,   2,   2,   2,     -2,      3, u"No such file or directory"},
    { 12,  12,  12,  12,  12,     -2,      4, u"Not enough space"},
    { 20,  20,  20,  20,  20,     -2,      5, u"Not a directory"},
    { -1,  -1,  -1,  -1,  -1,     -1,     -1, u"Unknown error"},
}};
// clang-format on

const ExpectedErrorRow& ExpectedRow(int error) {
    const auto end = ExpectedErrorTable.begin() + TerminatingRow;
    return *std::find_if(ExpectedErrorTable.begin(), end,
                         [&](const ExpectedErrorRow& row) { return row.key == error; });
}

std::u16string ExpectedFailureText(std::string_view head, int error) {
    const std::u16string start = std::u16string(head.begin(), head.end()) + u", errno = ";
    const auto unit = static_cast<char16_t>(static_cast<unsigned int>(error) % 0x10000U);
    if (unit == 0) return start;
    return start + unit + u' ' + std::u16string(ExpectedRow(error).text);
}

}  // namespace FoundationTests
