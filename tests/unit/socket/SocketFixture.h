// The ground that tests of sockets stand on: the layer is up, every router is on, and nothing has
// been recorded yet.
//
//   class Sending : public SocketTest {};
//
//   TEST_F(Sending, ResetPeerIsTold) {
//       const auto socket = MakeConnectedSocket();
//       const SocketFields before = FieldsOf(*socket);
//       On::Send().Fails(10054);
//       const Caught caught = Catch([&] { socket->Send("abc", 3); });
//       EXPECT_EQ(caught, FailureOf("VelNet::SocketImpl::Send() - FAIL. [...]", 10054));
//       ExpectRecords({FailureRecord(caught.text)});
//       EXPECT_EQ(FieldsOf(*socket), before);
//   }
#pragma once

#include <Socket/SocketImpl.h>
#include <Socket/SocketLayerState.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>

#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "scripted/RecordingServices.h"
#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace SocketTests {

using namespace Scripted;
using namespace VelNet;

inline constexpr char ErrorCategory[] = "Error";
inline constexpr char ConnectionCategory[] = "Connection Trace";
inline constexpr char PacketCategory[] = "Packet Trace";
inline constexpr char VerboseCategory[] = "Verbose Packet Trace";

// The endpoints of MakeConnectedSocket.
inline constexpr char LocalHost[] = "10.1.2.3";
inline constexpr unsigned short LocalPort = 50123;
inline constexpr char RemoteHost[] = "10.1.2.9";
inline constexpr unsigned short RemotePort = 80;

inline constexpr SocketState AllStates[] = {STATE_CLOSED, STATE_CREATED, STATE_BOUND,
                                            STATE_LISTENING, STATE_CONNECTED};
// The states of a socket that holds a handle.
inline constexpr SocketState OpenStates[] = {STATE_CREATED, STATE_BOUND, STATE_LISTENING,
                                             STATE_CONNECTED};

// All that a socket remembers. Addresses as "10.1.2.3:80".
struct SocketFields {
    Winsock::Handle handle;
    SocketState state;
    std::string local;
    std::string remote;

    bool operator==(const SocketFields&) const = default;
};
SocketFields FieldsOf(const SocketImpl& socket);
void PrintTo(const SocketFields& fields, std::ostream* stream);

// Gives the socket the endpoints above, whatever its state.
void StoreEndpoints(SocketImpl& socket);

// Where the fields stand in the object, in the order above.
std::vector<const void*> FieldAddressesOf(const SocketImpl& socket);

// What a socket remembers that is closed, or was never anything else.
SocketFields ClosedFields();

std::string EndpointText(const SocketAddress& endpoint);
Octets OctetsOf(const std::string& dotted);

// What came out of a call: a failure's text and code, or nothing. Anything but VelNet::Exception
// passes through.
struct Caught {
    bool thrown = false;
    std::u16string text = {};
    int code = 0;

    bool operator==(const Caught&) const = default;
};
void PrintTo(const Caught& caught, std::ostream* stream);

// Whoever is thrown holds everything itself.
void ExpectEmptyBase(const VelBase::Message& base);

template <class Operation>
Caught Catch(Operation operation) {
    try {
        operation();
    } catch (const Exception& exception) {
        ExpectEmptyBase(exception);
        return {true, Text(exception.GetMessage()), exception.GetErrorCode()};
    }
    return {};
}

// The usual failure text: what stands before ", errno = " (ASCII), the number as one unit, the
// error's text. The unit of a number whose low 16 bits are 0 ends it.
std::u16string FailureText(std::string_view labelAndDescription, int error);
// The failure with that text and the number's code.
Caught FailureOf(std::string_view labelAndDescription, int error);

LoggedArgument WideArgument(std::u16string text);
LoggedArgument NarrowArgument(std::string text);
LoggedArgument IntegerArgument(int number);

// A record as it is expected: where it goes, what it was made from.
struct Record {
    std::string category;
    std::string format;
    std::vector<LoggedArgument> arguments;

    bool operator==(const Record&) const = default;
};
void PrintTo(const Record& record, std::ostream* stream);

Record FailureRecord(std::u16string text);

// Compares all records since the test began, in their order: category, format and arguments with
// their kinds as expected; the router is "Network", the format appears again in double quotes,
// and source, function and line are null, null and 0.
void ExpectRecords(const std::vector<Record>& expected);

// The arguments of a record with these endpoints as a classic socket feeds them.
std::vector<LoggedArgument> EndpointArguments(const std::string& local, int localPort,
                                              const std::string& remote, int remotePort);

// The line that a record leaves in the transcript.
std::string LogLine(const std::string& category, const std::u16string& text);

// Which routers are on.
struct Routers {
    bool error = false;
    bool connection = false;
    bool packet = false;
    bool verbose = false;
};
void Switch(const Routers& routers);
std::vector<Routers> AllCombinationsOfRouters();

// The handles that are open, as in the ledger: "socket 1001".
std::vector<std::string> OpenSockets();

using Support::FailEveryAllocation;
using Support::RunsOutOfMemory;
using Support::Starved;

// Runs the operation with its n-th allocation failing, and drops a VelNet::Exception.
template <class Operation>
Starved Starve(std::size_t n, Operation operation) {
    return Support::Starve(n, [&] {
        try {
            operation();
        } catch (const Exception&) {
            return;
        }
    });
}

class SocketTest : public PlatformTest {
protected:
    void SetUp() override;
    // Also checks that the layer is as it was, and that it goes down cleanly.
    void TearDown() override;

    // Ends the layer before the test's end.
    void BringLayerDown();

    // A handle of the scripted system: 1001, 1002, …
    static Winsock::Handle OpenHandle();

    // A socket of any class derived from SocketImpl, with a handle of its own and without
    // addresses. Making one leaves no trace in the transcript, except by its handle's number.
    template <class Implementation = SocketImpl>
    static VelBase::ReturnPtrI<Implementation> MakeSocket(SocketState state = STATE_CREATED) {
        return {new Implementation(OpenHandle(), state)};
    }

    // A connected socket which has stored LocalHost, LocalPort, RemoteHost and RemotePort.
    template <class Implementation = SocketImpl>
    static VelBase::ReturnPtrI<Implementation> MakeConnectedSocket() {
        auto socket = MakeSocket<Implementation>();
        StoreAddresses(*socket);
        return socket;
    }

    // A socket without handle, which has been closed or was never open.
    static VelBase::ReturnPtrI<SocketImpl> MakeClosedSocket() { return {new SocketImpl}; }

    // Connects the socket to the endpoints above. Writes no record, clears the transcript, and
    // leaves the connection router on.
    static void StoreAddresses(SocketImpl& socket);

private:
    std::optional<SocketInitialization> initialization_;
};

}  // namespace SocketTests
