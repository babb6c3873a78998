// The ground that tests of the shipped module stand on: it is used through its public headers, and
// what it asks of the system goes to the scripted platform.
//
//   TEST_F(Listening, IsForTwo) {
//       const auto socket = NewSocket();
//       EXPECT_EQ(socket->Listen(), 0);
//       EXPECT_EQ(Transcript(), (Lines{"listen(1001, 2)"}));
//   }
//
// Every call of the system that succeeds spoils the last error, and so does each request of memory:
// a number which is not read at once is wrong. WSASetLastError is not recorded.
#pragma once

#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>
#include <loopback/Failure.h>
#include <loopback/LoopbackTest.h>
#include <loopback/RecordingSink.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scripted/ScriptedPlatform.h"
#include "support/windows/ImportTable.h"

namespace ModuleTests {

using namespace Scripted;
using namespace VelNet;
using Loopback::Failure;
using Loopback::FailureOf;
using Loopback::Record;
using Loopback::Records;
using SocketPtr = VelBase::ReturnPtrI<Socket>;
using SocketXtPtr = VelBase::ReturnPtrI<SocketXt>;

inline constexpr int Disturbance = 4242;

// What no operation throws that ends well.
const Failure& NoFailure();

// The failure whose text begins so (ASCII) and ends with the number, with the number's code.
Failure FailureWith(std::string_view head, int error);

// How a failure text of the extended socket begins. The addresses are empty or "first : second".
std::string XtHead(const std::string& operation, const std::string& description,
                   const std::string& call, const std::string& addresses);

// The error numbers but these.
std::vector<int> ErrorNumbersWithout(std::initializer_list<int> excluded);

Octets OctetsOf(const std::string& dotted);
std::string TextOf(const SocketAddress& endpoint);  // "10.1.2.3:80"

// How an operation fails, whatever the number is.
struct Failing {
    std::function<void(int)> failWith;  // scripts the failure with the number
    std::function<void()> operation;
    std::string head;  // of the failure's text
    Lines calls;       // of the system, the question for the number among them
    bool isThrown = true;
    bool isLogged = true;
};

class ModuleTest : public PlatformTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // The records since the last time.
    Records TakeRecords() { return sink_.Take(); }

    // Runs the operation with each of the numbers, first with all routers off, then with "Error"
    // on. Compares text, code, calls and records.
    void ExpectEachFailure(const Failing& failing,
                           const std::vector<int>& numbers = ErrorNumbers());

private:
    void ExpectFailure(const Failing& failing, int number, bool isErrorOn);

    Loopback::RecordingSink sink_;
    std::optional<Module::PatchedImports> imports_;
};

// The layer is up, and the transcript begins after that.
class LayerTest : public ModuleTest {
protected:
    void SetUp() override;
    void TearDown() override;

    // A socket of the classic kind, or of the extended one, whose making left no trace.
    static SocketPtr NewSocket(Socket::SOCKET_TYPE type = Socket::SOCKET_STREAM);
    static SocketXtPtr NewSocketXt(Socket::SOCKET_TYPE type = Socket::SOCKET_STREAM);

private:
    std::optional<SocketInitialization> layer_;
};

}  // namespace ModuleTests
