// The Winsock error numbers that the POSIX floor uses by name.
#pragma once

namespace WinsockError {

inline constexpr int NotEnoughMemory = 8;
inline constexpr int InsufficientBuffer = 122;
inline constexpr int Interrupted = 10004;
inline constexpr int Access = 10013;
inline constexpr int Fault = 10014;
inline constexpr int Invalid = 10022;
inline constexpr int TooManyOpen = 10024;
inline constexpr int WouldBlock = 10035;
inline constexpr int InProgress = 10036;
inline constexpr int Already = 10037;
inline constexpr int NotSocket = 10038;
inline constexpr int DestinationRequired = 10039;
inline constexpr int MessageSize = 10040;
inline constexpr int WrongProtocolType = 10041;
inline constexpr int NoProtocolOption = 10042;
inline constexpr int ProtocolNotSupported = 10043;
inline constexpr int SocketTypeNotSupported = 10044;
inline constexpr int OperationNotSupported = 10045;
inline constexpr int ProtocolFamilyNotSupported = 10046;
inline constexpr int AddressFamilyNotSupported = 10047;
inline constexpr int AddressInUse = 10048;
inline constexpr int AddressNotAvailable = 10049;
inline constexpr int NetworkDown = 10050;
inline constexpr int NetworkUnreachable = 10051;
inline constexpr int NetworkReset = 10052;
inline constexpr int ConnectionAborted = 10053;
inline constexpr int ConnectionReset = 10054;
inline constexpr int NoBuffers = 10055;
inline constexpr int IsConnected = 10056;
inline constexpr int NotConnected = 10057;
inline constexpr int ShutDown = 10058;
inline constexpr int TooManyReferences = 10059;
inline constexpr int TimedOut = 10060;
inline constexpr int ConnectionRefused = 10061;
inline constexpr int Loop = 10062;
inline constexpr int NameTooLong = 10063;
inline constexpr int HostDown = 10064;
inline constexpr int HostUnreachable = 10065;
inline constexpr int NotEmpty = 10066;
inline constexpr int TooManyUsers = 10068;
inline constexpr int QuotaExceeded = 10069;
inline constexpr int Stale = 10070;
inline constexpr int Remote = 10071;
inline constexpr int SystemNotReady = 10091;
inline constexpr int VersionNotSupported = 10092;
inline constexpr int NotStarted = 10093;
inline constexpr int ServiceNotFound = 10109;
inline constexpr int HostNotFound = 11001;
inline constexpr int TryAgain = 11002;
inline constexpr int NoRecovery = 11003;
inline constexpr int NoData = 11004;

}  // namespace WinsockError
