// One thread sends while another receives on the same socket, with every record
// written.
#include <thread>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr int Transfers = 200;

class SendWhileReceiving : public SocketTest {
protected:
    // The records that one thread wrote, in its order.
    static std::vector<Record> RecordsOf(std::thread::id thread) {
        std::vector<Record> records;
        for (const LoggedMessage& message : LoggedMessages())
            if (message.thread == thread)
                records.push_back({message.category, message.format, message.arguments});
        return records;
    }

    static std::vector<Record> Repeated(const std::string& event, const std::string& data) {
        std::vector<Record> records;
        for (int transfer = 0; transfer < Transfers; ++transfer) {
            records.push_back(TransferRecord(event, 3));
            records.push_back(TransferRecordWithData(event, 3, data));
        }
        return records;
    }
};

TEST_F(SendWhileReceiving, EachThreadWritesItsOwnRecordsWhole) {
    const auto socket = MakeConnectedSocket();
    for (int transfer = 0; transfer < Transfers; ++transfer)
        On::Recv().Delivers("xyz");

    std::thread receiver([&] {
        char buffer[3];
        for (int transfer = 0; transfer < Transfers; ++transfer)
            socket->Receive(buffer, sizeof buffer);
    });
    const std::thread::id receiverId = receiver.get_id();
    for (int transfer = 0; transfer < Transfers; ++transfer)
        socket->Send("abc", 3);
    receiver.join();

    EXPECT_EQ(RecordsOf(std::this_thread::get_id()), Repeated("Sent", "616263"));
    EXPECT_EQ(RecordsOf(receiverId), Repeated("Received", "78797A"));
    EXPECT_EQ(LoggedMessages().size(), 4U * Transfers);
}

}  // namespace
}  // namespace SocketTests
