// The library's errors with their symbols and texts.
#pragma once

#include <VelNet/SocketError.h>

#include <array>
#include <system_error>

namespace VelCompanion {

// One error code of the library: its symbol as VelNet/SocketError.h writes it, the text that
// failures have for it, and the standard library's condition that means the same.
struct CatalogueEntry {
    VelNet::SOCKET_ERR code;  // as VelNet::Exception has it
    const char* symbol;       // "SOCKET_ERR_CONNREFUSED" for instance
    const char* text;         // in English
    std::errc condition;      // NoCondition if the standard library has none
};

// The condition of an error that the standard library does not know: the value that means success.
inline constexpr std::errc NoCondition{};

// All codes that the library uses, in ascending order.
// clang-format off
inline constexpr std::array<CatalogueEntry, 57> ErrorCatalogue{{
    {VelNet::SOCKET_ERR_UNKNOWN,              "SOCKET_ERR_UNKNOWN",         "Unknown error",                                   NoCondition},
    {VelNet::SOCKET_ERR_NOT_PERMITTED,        "SOCKET_ERR_NOT_PERMITTED",   "Operation not permitted",                         std::errc::operation_not_permitted},
    {VelNet::SOCKET_ERR_READ_ONLY,            "SOCKET_ERR_READ_ONLY",       "Read only file system",                           std::errc::read_only_file_system},
    {VelNet::SOCKET_ERR_NO_ENTRY,             "SOCKET_ERR_NO_ENTRY",        "No such file or directory",                       std::errc::no_such_file_or_directory},
    {VelNet::SOCKET_ERR_NO_SPACE,             "SOCKET_ERR_NO_SPACE",        "Not enough space",                                std::errc::not_enough_memory},
    {VelNet::SOCKET_ERR_NOT_DIRECTORY,        "SOCKET_ERR_NOT_DIRECTORY",   "Not a directory",                                 std::errc::not_a_directory},
    {VelNet::SOCKET_ERR_SUCCESS,              "SOCKET_ERR_SUCCESS",         "The function succeeded",                          NoCondition},
    {VelNet::SOCKET_ERR_INTR,                 "SOCKET_ERR_INTR",            "Interrupted function call",                       std::errc::interrupted},
    {VelNet::SOCKET_ERR_BADF,                 "SOCKET_ERR_BADF",            "Bad file descriptor",                             std::errc::bad_file_descriptor},
    {VelNet::SOCKET_ERR_ACCES,                "SOCKET_ERR_ACCES",           "Permission denied",                               std::errc::permission_denied},
    {VelNet::SOCKET_ERR_FAULT,                "SOCKET_ERR_FAULT",           "Bad address",                                     std::errc::bad_address},
    {VelNet::SOCKET_ERR_INVAL,                "SOCKET_ERR_INVAL",           "Invalid argument",                                std::errc::invalid_argument},
    {VelNet::SOCKET_ERR_MFILE,                "SOCKET_ERR_MFILE",           "Too many open files",                             std::errc::too_many_files_open},
    {VelNet::SOCKET_ERR_WOULDBLOCK,           "SOCKET_ERR_WOULDBLOCK",      "Resource temporarily unavailable",                std::errc::operation_would_block},
    {VelNet::SOCKET_ERR_INPROGRESS,           "SOCKET_ERR_INPROGRESS",      "Operation now in progress",                       std::errc::operation_in_progress},
    {VelNet::SOCKET_ERR_ALREADY,              "SOCKET_ERR_ALREADY",         "Operation already in progress",                   std::errc::connection_already_in_progress},
    {VelNet::SOCKET_ERR_NOTSOCK,              "SOCKET_ERR_NOTSOCK",         "Socket operation on nonsocket",                   std::errc::not_a_socket},
    {VelNet::SOCKET_ERR_DESTADDRREQ,          "SOCKET_ERR_DESTADDRREQ",     "Destination address requested",                   std::errc::destination_address_required},
    {VelNet::SOCKET_ERR_MSGSIZE,              "SOCKET_ERR_MSGSIZE",         "Message too long",                                std::errc::message_size},
    {VelNet::SOCKET_ERR_PROTOTYPE,            "SOCKET_ERR_PROTOTYPE",       "Protocol wrong type for socket",                  std::errc::wrong_protocol_type},
    {VelNet::SOCKET_ERR_NOPROTOOPT,           "SOCKET_ERR_NOPROTOOPT",      "Bad protocol option",                             std::errc::no_protocol_option},
    {VelNet::SOCKET_ERR_PROTONOSUPPORT,       "SOCKET_ERR_PROTONOSUPPORT",  "Protocol not supported",                          std::errc::protocol_not_supported},
    {VelNet::SOCKET_ERR_SOCKTNOSUPPORT,       "SOCKET_ERR_SOCKTNOSUPPORT",  "Socket type not supported",                       NoCondition},
    {VelNet::SOCKET_ERR_OPNOTSUPP,            "SOCKET_ERR_OPNOTSUPP",       "Operation not supported",                         std::errc::operation_not_supported},
    {VelNet::SOCKET_ERR_PFNOSUPPORT,          "SOCKET_ERR_PFNOSUPPORT",     "Protocol family not supported",                   NoCondition},
    {VelNet::SOCKET_ERR_AFNOSUPPORT,          "SOCKET_ERR_AFNOSUPPORT",     "Address family not supported by protocol family", std::errc::address_family_not_supported},
    {VelNet::SOCKET_ERR_ADDRINUSE,            "SOCKET_ERR_ADDRINUSE",       "Address already in use",                          std::errc::address_in_use},
    {VelNet::SOCKET_ERR_ADDRNOTAVAIL,         "SOCKET_ERR_ADDRNOTAVAIL",    "Cannot assign requested address",                 std::errc::address_not_available},
    {VelNet::SOCKET_ERR_NETDOWN,              "SOCKET_ERR_NETDOWN",         "Network is down",                                 std::errc::network_down},
    {VelNet::SOCKET_ERR_NETUNREACH,           "SOCKET_ERR_NETUNREACH",      "Network is unreachable",                          std::errc::network_unreachable},
    {VelNet::SOCKET_ERR_NETRESET,             "SOCKET_ERR_NETRESET",        "Network dropped connection on reset",             std::errc::network_reset},
    {VelNet::SOCKET_ERR_CONNABORTED,          "SOCKET_ERR_CONNABORTED",     "Software caused connection abort",                std::errc::connection_aborted},
    {VelNet::SOCKET_ERR_CONNRESET,            "SOCKET_ERR_CONNRESET",       "Connection reset by peer",                        std::errc::connection_reset},
    {VelNet::SOCKET_ERR_NOBUFS,               "SOCKET_ERR_NOBUFS",          "No buffer space available",                       std::errc::no_buffer_space},
    {VelNet::SOCKET_ERR_ISCONN,               "SOCKET_ERR_ISCONN",          "Socket is already connected",                     std::errc::already_connected},
    {VelNet::SOCKET_ERR_NOTCONN,              "SOCKET_ERR_NOTCONN",         "Socket is not connected",                         std::errc::not_connected},
    {VelNet::SOCKET_ERR_SHUTDOWN,             "SOCKET_ERR_SHUTDOWN",        "Cannot send after socket shutdown",               NoCondition},
    {VelNet::SOCKET_ERR_TOOMANYREFS,          "SOCKET_ERR_TOOMANYREFS",     "Too many references; cannot splice",              NoCondition},
    {VelNet::SOCKET_ERR_TIMEDOUT,             "SOCKET_ERR_TIMEDOUT",        "Connection timed out",                            std::errc::timed_out},
    {VelNet::SOCKET_ERR_CONNREFUSED,          "SOCKET_ERR_CONNREFUSED",     "Connection refused",                              std::errc::connection_refused},
    {VelNet::SOCKET_ERR_LOOP,                 "SOCKET_ERR_LOOP",            "Too many levels of symbolic links",               std::errc::too_many_symbolic_link_levels},
    {VelNet::SOCKET_ERR_NAMETOOLONG,          "SOCKET_ERR_NAMETOOLONG",     "File name too long",                              std::errc::filename_too_long},
    {VelNet::SOCKET_ERR_HOSTDOWN,             "SOCKET_ERR_HOSTDOWN",        "Host is down",                                    NoCondition},
    {VelNet::SOCKET_ERR_HOSTUNREACH,          "SOCKET_ERR_HOSTUNREACH",     "No route to host",                                std::errc::host_unreachable},
    {VelNet::SOCKET_ERR_NOTEMPTY,             "SOCKET_ERR_NOTEMPTY",        "Directory not empty",                             std::errc::directory_not_empty},
    {VelNet::SOCKET_ERR_PROCLIM,              "SOCKET_ERR_PROCLIM",         "Too many processes",                              NoCondition},
    {VelNet::SOCKET_ERR_USERS,                "SOCKET_ERR_USERS",           "Too many users",                                  NoCondition},
    {VelNet::SOCKET_ERR_DQUOT,                "SOCKET_ERR_DQUOT",           "Disk quota exceeded",                             NoCondition},
    {VelNet::SOCKET_ERR_STALE,                "SOCKET_ERR_STALE",           "Stale NFS file handle",                           NoCondition},
    {VelNet::SOCKET_ERR_REMOTE,               "SOCKET_ERR_REMOTE",          "Too many levels of remote in path",               NoCondition},
    {VelNet::SOCKET_ERR_SYSNOTREADY,          "SOCKET_ERR_SYSNOTREADY",     "Network subsystem is unavailable",                NoCondition},
    {VelNet::SOCKET_ERR_VERNOTSUPPORTED,      "SOCKET_ERR_VERNOTSUPPORTED", "WINSOCK.DLL version out of range",                NoCondition},
    {VelNet::SOCKET_ERR_NOTINITIALISED,       "SOCKET_ERR_NOTINITIALISED",  "Successful WSAStartup() not yet performed",       NoCondition},
    {VelNet::SOCKET_ERR_HOST_NOT_FOUND,       "SOCKET_ERR_HOST_NOT_FOUND",  "host not found",                                  NoCondition},
    {VelNet::SOCKET_ERR_TRY_AGAIN,            "SOCKET_ERR_TRY_AGAIN",       "Nonauthoritative host not found",                 NoCondition},
    {VelNet::SOCKET_ERR_NO_RECOVERY,          "SOCKET_ERR_NO_RECOVERY",     "This is a nonrecoverable error",                  NoCondition},
    {VelNet::SOCKET_ERR_NO_DATA,              "SOCKET_ERR_NO_DATA",         "Valid name, no data record of requested type",    NoCondition},
}};
// clang-format on

// Returns the entry of a code; the one of SOCKET_ERR_UNKNOWN for a number that is no code of the
// library.
constexpr const CatalogueEntry& EntryOf(int code) noexcept {
    for (const CatalogueEntry& entry : ErrorCatalogue) {
        if (entry.code == code) return entry;
    }
    return ErrorCatalogue[0];
}
static_assert(ErrorCatalogue[0].code == VelNet::SOCKET_ERR_UNKNOWN);

// Returns the symbol of a code, "SOCKET_ERR_CONNREFUSED" for instance, as a static string;
// "SOCKET_ERR_UNKNOWN" for a number that is no code of the library.
constexpr const char* SymbolOf(int code) noexcept {
    return EntryOf(code).symbol;
}

}  // namespace VelCompanion
