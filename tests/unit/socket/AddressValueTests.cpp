// Address as a value: copies, comparison, what its getters return.
#include <VelNet/Address.h>

#include <utility>

#include "AddressFields.h"
#include "SocketTrials.h"

namespace SocketTests {
namespace {

class AddressValues : public SocketTest {
protected:
    // An address of this name; leaves no trace in the transcript.
    static Address Named(const char* name, const Octets& octets, unsigned short port) {
        On::Gethostbyaddr().Returns({}, name);
        const Address address(octets, port);
        ClearTranscript();
        return address;
    }

    static Address Server() { return Named("server.example", Octets(10, 1, 2, 3), 80); }
    static Address Other() { return Named("other.example", Octets(10, 9, 8, 7), 443); }
};

const AddressFields ServerFields = {"10.1.2.3", "server.example", 80, true, "10.1.2.3"};
const AddressFields OtherFields = {"10.9.8.7", "other.example", 443, true, "10.9.8.7"};
const AddressFields CopiedDefaultFields = {"", "", 0, true, "0.0.0.0"};

TEST_F(AddressValues, CopyHasAllOfTheSourceAndAsksNothing) {
    const Address source = Server();
    const Address copy(source);
    EXPECT_EQ(FieldsOf(copy), ServerFields);
    EXPECT_EQ(FieldsOf(source), ServerFields);
    EXPECT_EQ(Transcript(), Lines());
}

// Required: whatever the source's flag.
TEST_F(AddressValues, CopyOfADefaultOneCountsAsInitialized) {
    const Address source;
    const Address copy(source);
    EXPECT_EQ(FieldsOf(copy), CopiedDefaultFields);
    EXPECT_FALSE(source.IsInitialized());
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressValues, AssignmentCopiesAllOfTheSourceAndAsksNothing) {
    const Address source = Server();
    Address target = Other();
    target = source;
    EXPECT_EQ(FieldsOf(target), ServerFields);
    EXPECT_EQ(FieldsOf(source), ServerFields);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressValues, AssignmentInitializesADefaultOne) {
    Address target;
    target = Server();
    EXPECT_EQ(FieldsOf(target), ServerFields);
}

// Required: whatever the source's flag.
TEST_F(AddressValues, AssignedDefaultOneCountsAsInitialized) {
    Address target = Server();
    target = Address();
    EXPECT_EQ(FieldsOf(target), CopiedDefaultFields);
    Address another;
    another = Address();
    EXPECT_EQ(FieldsOf(another), CopiedDefaultFields);
}

TEST_F(AddressValues, AssignmentReturnsTheTarget) {
    const Address source = Server();
    Address target;
    EXPECT_EQ(&(target = source), &target);
}

TEST_F(AddressValues, SelfAssignmentKeepsTheValue) {
    Address address = Server();
    const Address& itself = address;
    EXPECT_EQ(&(address = itself), &address);
    EXPECT_EQ(FieldsOf(address), ServerFields);
}

TEST_F(AddressValues, SelfAssignmentIsAnAssignmentAndInitializes) {
    Address address;
    const Address& itself = address;
    address = itself;
    EXPECT_EQ(FieldsOf(address), CopiedDefaultFields);
}

TEST_F(AddressValues, CopiesAreIndependent) {
    Address source = Server();
    const Address copy = source;
    Address assigned;
    assigned = source;
    source = Other();
    EXPECT_EQ(FieldsOf(copy), ServerFields);
    EXPECT_EQ(FieldsOf(assigned), ServerFields);
    EXPECT_EQ(FieldsOf(source), OtherFields);
}

TEST_F(AddressValues, CopyOutlivesItsSource) {
    std::optional<Address> source = Server();
    const Address copy = *source;
    source.reset();
    EXPECT_EQ(FieldsOf(copy), ServerFields);
}

TEST_F(AddressValues, MovingCopies) {
    Address source = Server();
    const Address made = std::move(source);
    EXPECT_EQ(FieldsOf(made), ServerFields);
    EXPECT_EQ(FieldsOf(source), ServerFields);
}

TEST_F(AddressValues, EqualWhenPortAndDottedFormAre) {
    const Address server = Server();
    const struct {
        Address address;
        bool isEqual;
    } cases[] = {
        {Server(), true},
        {Named("alias.example", Octets(10, 1, 2, 3), 80), true},
        {Named("server.example", Octets(10, 1, 2, 3), 81), false},
        {Named("server.example", Octets(10, 1, 2, 4), 80), false},
        {Named("server.example", Octets(11, 1, 2, 3), 80), false},
        {Named("server.example", Octets(10, 12, 0, 3), 80), false},
        {Address(), false},
    };
    for (const auto& [address, isEqual] : cases) {
        SCOPED_TRACE(testing::PrintToString(FieldsOf(address)));
        EXPECT_EQ(server == address, isEqual);
        EXPECT_EQ(address == server, isEqual);
        EXPECT_EQ(server != address, !isEqual);
        EXPECT_EQ(address != server, !isEqual);
    }
}

TEST_F(AddressValues, DefaultOnesAreEqual) {
    const Address one;
    const Address other;
    EXPECT_TRUE(one == other);
    EXPECT_FALSE(one != other);
    EXPECT_FALSE(one.IsInitialized());
    EXPECT_FALSE(other.IsInitialized());
}

TEST_F(AddressValues, FlagTakesNoPartInComparison) {
    const Address one;
    const Address copy(one);
    EXPECT_TRUE(one == copy);
    EXPECT_TRUE(copy == one);
}

// The texts are compared, and a default one has none.
TEST_F(AddressValues, DefaultOneDiffersFromTheZeroAddress) {
    EXPECT_FALSE(Address() == Named("", Octets(0, 0, 0, 0), 0));
    EXPECT_TRUE(Address() != Named("", Octets(0, 0, 0, 0), 0));
}

TEST_F(AddressValues, GettersAndComparisonAskNothing) {
    const Address address = Server();
    const Address other = Other();
    FieldsOf(address);
    EXPECT_FALSE(address == other);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressValues, ReturnedOctetsAreACopy) {
    const Address address = Server();
    Octets octets = address.GetOctets();
    octets = Octets(9, 9, 9, 9);
    EXPECT_EQ(FieldsOf(address), ServerFields);
}

TEST_F(AddressValues, ReturnedTextsAreTheCallers) {
    std::optional<Address> address = Server();
    const VelBase::ReturnString ip = address->GetIpAddress();
    const VelBase::ReturnString machine = address->GetMachineName();
    address.reset();
    EXPECT_STREQ(ip.c_str(), "10.1.2.3");
    EXPECT_STREQ(machine.c_str(), "server.example");
}

TEST_F(AddressValues, ExhaustedMemoryFailsCopiesAndLeavesNothing) {
    const std::string longName(100, 'n');
    const Address source = Named(longName.c_str(), Octets(10, 1, 2, 3), 80);
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { const Address copy(source); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 2U);
}

TEST_F(AddressValues, ExhaustedMemoryFailsAssignmentAndLeavesAnAddress) {
    const std::string longName(100, 'n');
    const Address source = Named(longName.c_str(), Octets(10, 1, 2, 3), 80);
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        Address target;
        exhausted = RunsOutOfMemory(n, [&] { target = source; });
        const AddressFields whole = FieldsOf(source);
        if (!exhausted) {
            EXPECT_EQ(FieldsOf(target), whole);
        }
        target = source;
        EXPECT_EQ(FieldsOf(target), whole);
    }
    EXPECT_GT(n, 2U);
}

TEST_F(AddressValues, ExhaustedMemoryFailsGettersAndLeavesNothing) {
    const Address address = Server();
    const Allocations::Mark mark;
    EXPECT_TRUE(RunsOutOfMemory(1, [&] { address.GetIpAddress(); }));
    EXPECT_TRUE(RunsOutOfMemory(1, [&] { address.GetMachineName(); }));
    EXPECT_TRUE(RunsOutOfMemory(1, [&] { address.GetOctets(); }));
    EXPECT_FALSE(RunsOutOfMemory(1, [&] {
        EXPECT_EQ(address.GetPort(), 80);
        EXPECT_TRUE(address.IsInitialized());
    }));
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

}  // namespace
}  // namespace SocketTests
