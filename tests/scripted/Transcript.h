// What the code under test did: one list of events for the whole process, in order.
//
// Every call of the platform seam is one event. Their texts (numbers in decimal unless written 0x…,
// always in capitals and without leading zeros except for the version word):
//
//   WSAStartup(0x0202)   WSACleanup()   WSAGetLastError()
//   socket(2, 1, 6)   closesocket(1001)   listen(1001, 5)
//   bind(1001, 10.0.0.1:80, 16)   connect(1001, 10.0.0.1:80, 16)      length as passed
//   accept(1001, 16)   getsockname(1001, 16)   getpeername(1001, 16)
//                                        room as passed; null when null
//   send(1001, "abc", 3, 0)   recv(1001, 512, 0)                       length, flags
//   sendto(1001, "abc", 3, 0, 10.0.0.1:80, 16)                         … address, length as passed
//   recvfrom(1001, 512, 0, 128)                                        … room for the address
//   select(1003, {1001, 1002}, {1001}, null, {2, 0})
//                                        read, write, except; seconds and microseconds
//   setsockopt(1001, 0xFFFF, 0x1006, 5000, 4)
//                                        value: decimal when 4 bytes long, else hex bytes
//   ioctlsocket(1001, 0x8004667E, 1)   ioctlsocket(1001, 0x4004667F)   value only for the former
//   gethostbyname("host")   gethostbyaddr(10.0.0.1, 4, 2)   gethostname(256)
//   getaddrinfo("host", "80", {0, 0, 1, 6})
//                                        hints: flags, family, type, protocol; the test fails when
//                                        another is not zero
//   freeaddrinfo(1)                      the list's number, 0 for anything else
//   getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)     length as passed, rooms, flags
//   inet_addr("10.0.0.1")
//   Sleep(0)   ComputerName()   GetVersionExW(276)   ErrorDescription(10061)
//   WideFromCodePage("abc", 3)   CodePageFromWide("abc", 3)
//   OpenLogFile("path")   WriteLogFile(5, "bytes")   CloseLogFile(5)
//   OpenKey(3, "SYSTEM\Sub")   OpenSubKey(1, "name")   CloseKey(1)
//   ReadValue(1, "name")   ReadValue(1, "name", null)   SubKeyNames(1)     keys numbered from 1
//
// Texts stand in double quotes; a byte below 0x20 or above 0x7E is written \xNN, a unit \uNNNN;
// quotes and backslashes stand as they are; a null text is null. ~0 as a handle is INVALID. An IPv6
// address is written [2001:DB8:0:0:0:0:0:1]:80, with %3 before the bracket for the scope 3. An
// address of another family, a shorter one than its family needs and an IPv6 one with flow
// information is its bytes in hex. Of sendto the event holds the data's bytes, of getaddrinfo the
// host's, of GetVersionExW the record as it was passed.
// SaveErrorNumbers, RestoreErrorNumbers and StandardError are not recorded. RecordingServices.h
// adds the events of the support services.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace Scripted {

// Of a transcript, or of a ledger.
using Lines = std::vector<std::string>;

struct Event {
    std::string call;                // "send"
    std::string text;                // the line of the transcript
    std::vector<long long> numbers;  // the numeric arguments in their order, handles included
    std::string bytes;               // what the pointer argument held: address, buffer, value, name
    const void* pointer = nullptr;   // the pointer argument itself (of recv, accept, … too)
    std::thread::id thread;
};

// The lines of all events since the test began or the transcript was last cleared.
Lines Transcript();
// Without the events of the calls named.
Lines TranscriptWithout(const std::vector<std::string>& calls);

std::vector<Event> Events();
std::vector<Event> EventsOf(const std::string& call);
int CountOf(const std::string& call);
// The latest event of the call; an empty one, and a failure of the test, when there was none.
Event LastEventOf(const std::string& call);

// Forgets the events. Scripted answers, ledger and observers stay.
void ClearTranscript();

// The observer runs inside each call of the name, after the event was recorded and before the call
// takes effect, answers or throws. It may look at anything, use the seam itself, and throw (not
// from WSAGetLastError, CloseKey, OpenLogFile, WriteLogFile, CloseLogFile, nor from what ends an
// object). Its allocations are neither counted nor failed. The last error is set after it.
void Observe(const std::string& call, std::function<void(const Event&)> observer);
// The same for every call.
void ObserveAll(std::function<void(const Event&)> observer);

// The ledger holds what is open: "socket 1001", "start-up", "address list 1", "registry key 1",
// "log file 5", and the services' "VelSynch", "VelRegistry", "VelLog" and "router Network, Error".
// What was closed without being open stands there too: "surplus start-up" and the like (a socket
// excepted). A call that gives something back counts as such even when it is scripted to fail. An
// accepted or created socket counts when the call succeeds, a start-up when it returns 0.
Lines Ledger();

// Takes one entry out, for a test in which it must stay open. Fails the test when it is not there.
void ForgetInLedger(const std::string& entry);

// The calling thread's last error. Every seam call that succeeds overwrites it with the disturbance
// (0 unless set here), so code that reads it late reads the wrong number. WSAGetLastError,
// WSAStartup and inet_addr leave it alone.
int LastError();
void SetLastError(int error);
void DisturbLastErrorWith(int error);

}  // namespace Scripted
