// The ground that tests of the extended socket stand on. As for classic sockets, the layer is up
// and every router is on; and every call of the system that succeeds spoils the last error, so that
// a number which is not read at once is wrong.
#pragma once

#include <Socket/SocketXtImpl.h>

#include <functional>
#include <string>
#include <vector>

#include "SocketTrials.h"

namespace SocketTests {

inline constexpr int Disturbance = 4242;

// The texts of MakeAddressedXt.
inline constexpr char LocalText[] = "here.example";
inline constexpr char LocalService[] = "4000";
inline constexpr char RemoteText[] = "there.example";
inline constexpr char RemoteService[] = "http";

inline constexpr char ThisMachine[] = "SCRIPTED-HOST";

// All that an extended socket remembers.
struct XtFields {
    Winsock::Handle handle;
    SocketState state;
    std::string localHost;
    std::string localPort;
    std::string remoteHost;
    std::string remotePort;
    int socketType;
    int protocol;
    SocketXt::ADDR_FAMILY family;

    bool operator==(const XtFields&) const = default;
};
XtFields FieldsOf(const SocketXtImpl& socket);
XtFields FieldsOf(const SocketXt& socket);
XtFields FieldsOf(const VelBase::ReturnPtrI<SocketXt>& socket);
void PrintTo(const XtFields& fields, std::ostream* stream);

// Where the fields stand in the object, in the order above.
std::vector<const void*> FieldAddressesOf(const SocketXtImpl& socket);

// Gives the socket the four texts above.
void StoreTexts(SocketXtImpl& socket);

const SocketXtImpl& ImplementationOf(const SocketXt& socket);

// A failure of the extended socket: the parts of its text up to the number.
struct XtFailure {
    std::string function;  // "VelNet::SocketXtImpl::Bind"
    std::string description;
    std::string call;  // "::bind"
    std::string first = {};
    std::string second = {};

    // What stands before ", errno = ", the space included.
    std::string Head() const;
    Caught With(int error) const { return FailureOf(Head(), error); }
    Record RecordWith(int error) const { return FailureRecord(With(error).text); }
};

// The transcript without the conversions of texts; each record is "LogMessage" alone.
Lines SystemCalls();

// How an operation fails, whatever the number is.
struct FailingXt {
    std::function<void(int)> failWith;  // scripts the failure with the number
    std::function<void()> operation;
    XtFailure failure;
    Lines calls;                 // as SystemCalls has them, up to the record
    Lines callsAfterwards = {};  // once the failure has been logged
    std::function<std::string()> memory = [] { return std::string(); };  // stays the same
    bool isThrown = true;
};

// Runs the operation with each of the numbers, first with "Error" alone on, then with all off.
// Compares the text, the code, the calls and their order, the records and the memory.
void ExpectEachXtFailure(const FailingXt& failing,
                         const std::vector<int>& numbers = ErrorNumbers());

std::function<std::string()> MemoryOf(const SocketXtImpl& socket);

// The same with the texts that the caller has in his variables.
std::function<std::string()> MemoryOf(const SocketXtImpl& socket, const VelBase::ReturnString& host,
                                      const VelBase::ReturnString& port);

// Records as an extended socket writes them: texts all, and the count a number.
Record XtConnectionRecord(const std::string& event, const std::string& localHost,
                          const std::string& localPort, const std::string& remoteHost,
                          const std::string& remotePort);
Record XtTransferRecord(const std::string& event, int count, const std::string& localHost,
                        const std::string& localPort, const std::string& remoteHost,
                        const std::string& remotePort);
Record XtTransferRecordWithData(const std::string& event, int count, const std::string& localHost,
                                const std::string& localPort, const std::string& remoteHost,
                                const std::string& remotePort, const std::string& data);

// Addresses of a host as they are resolved and attempted, of which that many, from the first on,
// are refused.
struct AddressSequence {
    std::vector<ListedAddress> addresses;
    Lines texts;  // "10.0.0.1:80, 16" and "[2001:DB8:0:0:0:0:0:2]:80, 28"
    std::size_t refusals;

    bool Succeeds() const { return refusals < addresses.size(); }
    std::size_t Attempts() const { return Succeeds() ? refusals + 1 : refusals; }
    // Of an attempt from 0 on, each another one.
    static int ErrorOf(std::size_t attempt) { return 10048 + static_cast<int>(attempt); }
    int LastError() const { return ErrorOf(Attempts() - 1); }
    // The call of each attempt: the beginning, the address, the end.
    Lines Calls(const std::string& beginning, const std::string& end) const;
    // Scripts the resolution and the attempts of this call of the system.
    void Script(NumberAnswers attempts) const;
};
// One to three addresses of both families in every order, with every number of refusals.
std::vector<AddressSequence> AllAddressSequences();

// Runs the operation once for each request of memory it makes, with that one failing, each time
// after the script. Checks that whatever runs out of memory leaves the ledger as it was, and
// returns how many requests failed.
std::size_t ExhaustMemory(
    const std::function<void()>& script, const std::function<void()>& operation,
    const std::function<void(const Starved&)>& check = [](const Starved&) {});

// The lists of addresses that are open may stay so.
void ForgetOpenAddressLists();

class XtTest : public SocketTest {
protected:
    void SetUp() override;

    // A socket of any class derived from SocketXtImpl, with a handle of its own.
    template <class Implementation = SocketXtImpl>
    static VelBase::ReturnPtrI<Implementation> MakeXt(
        SocketState state = STATE_CREATED, int type = Winsock::TypeStream,
        int protocol = Winsock::ProtocolTcp, SocketXt::ADDR_FAMILY family = SocketXt::FAMILY_IPV4) {
        return {new Implementation(OpenHandle(), state, type, protocol, family)};
    }

    template <class Implementation = SocketXtImpl>
    static VelBase::ReturnPtrI<Implementation> MakeDatagramXt(
        SocketXt::ADDR_FAMILY family = SocketXt::FAMILY_IPV4) {
        return MakeXt<Implementation>(STATE_CREATED, Winsock::TypeDatagram, Winsock::ProtocolUdp,
                                      family);
    }

    // A connected socket with the four texts above.
    template <class Implementation = SocketXtImpl>
    static VelBase::ReturnPtrI<Implementation> MakeAddressedXt() {
        auto socket = MakeXt<Implementation>(STATE_CONNECTED);
        StoreTexts(*socket);
        return socket;
    }

    static VelBase::ReturnPtrI<SocketXtImpl> MakeClosedXt() {
        return {new SocketXtImpl(Winsock::InvalidSocket, STATE_CLOSED, Winsock::TypeStream,
                                 Winsock::ProtocolTcp, SocketXt::FAMILY_IPV4)};
    }
};

}  // namespace SocketTests
