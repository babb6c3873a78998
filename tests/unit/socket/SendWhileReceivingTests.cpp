// One thread sends while another receives on the same socket, with every record written.
#include <thread>

#include "XtFixture.h"

namespace SocketTests {
namespace {

constexpr int Transfers = 200;

// The records that one thread wrote, in its order.
std::vector<Record> RecordsOf(std::thread::id thread) {
    std::vector<Record> records;
    for (const LoggedMessage& message : LoggedMessages())
        if (message.thread == thread)
            records.push_back({message.category, message.format, message.arguments});
    return records;
}

std::vector<Record> Repeated(const std::vector<Record>& ofOneTransfer) {
    std::vector<Record> records;
    for (int transfer = 0; transfer < Transfers; ++transfer)
        records.insert(records.end(), ofOneTransfer.begin(), ofOneTransfer.end());
    return records;
}

// The records that sending "abc" and receiving "xyz" must leave.
void ExpectRecordsOfEachThread(Socket& socket, const std::vector<Record>& sent,
                               const std::vector<Record>& received) {
    for (int transfer = 0; transfer < Transfers; ++transfer)
        On::Recv().Delivers("xyz");

    std::thread receiver([&] {
        char buffer[3];
        for (int transfer = 0; transfer < Transfers; ++transfer)
            socket.Receive(buffer, sizeof buffer);
    });
    const std::thread::id receiverId = receiver.get_id();
    for (int transfer = 0; transfer < Transfers; ++transfer)
        socket.Send("abc", 3);
    receiver.join();

    EXPECT_EQ(RecordsOf(std::this_thread::get_id()), Repeated(sent));
    EXPECT_EQ(RecordsOf(receiverId), Repeated(received));
    EXPECT_EQ(LoggedMessages().size(), 4U * Transfers);
}

class SendWhileReceiving : public SocketTest {};
class SendWhileReceivingXt : public XtTest {};

TEST_F(SendWhileReceiving, EachThreadWritesItsOwnRecordsWhole) {
    ExpectRecordsOfEachThread(
        *MakeConnectedSocket(),
        {TransferRecord("Sent", 3), TransferRecordWithData("Sent", 3, "616263")},
        {TransferRecord("Received", 3), TransferRecordWithData("Received", 3, "78797A")});
}

TEST_F(SendWhileReceivingXt, EachThreadWritesItsOwnRecordsWhole) {
    const auto plain = [](const std::string& event) {
        return XtTransferRecord(event, 3, LocalText, LocalService, RemoteText, RemoteService);
    };
    const auto withData = [](const std::string& event, const std::string& data) {
        return XtTransferRecordWithData(event, 3, LocalText, LocalService, RemoteText,
                                        RemoteService, data);
    };
    ExpectRecordsOfEachThread(*MakeAddressedXt(), {plain("Sent"), withData("Sent", "616263")},
                              {plain("Received"), withData("Received", "78797A")});
}

}  // namespace
}  // namespace SocketTests
