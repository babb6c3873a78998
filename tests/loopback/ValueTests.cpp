// Values and counted objects on both sides of the module's boundary: what one side made the other
// copies, counts and ends.
#include <VelBase/ReturnPtrI.h>
#include <VelBase/TextConversions.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelSynch/ReferenceCountedImpl.h>
#include <gtest/gtest.h>
#include <support/Text.h>

#include <string>
#include <utility>
#include <vector>

namespace Loopback {
namespace {

using Support::Text;

TEST(Values, TextsAreConvertedAndCopied) {
    const std::string utf8 = "caf\xC3\xA9 \xF0\x9F\x98\x80";
    const VelBase::ReturnWString wide = VelBase::UTF8ToWideChar(utf8.c_str(), false);
    EXPECT_EQ(Text(wide.c_str()), u"caf\u00E9 \U0001F600");

    VelBase::ReturnWString copy = wide;
    EXPECT_NE(copy.c_str(), wide.c_str());
    const VelBase::ReturnWString moved = std::move(copy);
    VelBase::ReturnString back;
    back = VelBase::WideCharToUTF8(moved.c_str(), false);
    EXPECT_EQ(back.c_str(), utf8);
}

TEST(Values, AnEndpointIsCopiedDeeply) {
    VelNet::SocketAddress address({10, 1, 2, 3}, 65536 + 80);
    const VelNet::SocketAddress copy = address;
    address = VelNet::SocketAddress();
    EXPECT_EQ(copy.GetOctets(), VelNet::Octets(10, 1, 2, 3));
    EXPECT_EQ(copy.GetPort(), 80);
    EXPECT_EQ(address.GetOctets(), VelNet::Octets());
    EXPECT_EQ(address.GetPort(), 0);
}

TEST(Values, AListOfAddressesKeepsWhatItIsGiven) {
    const VelBase::ReturnPtrI<VelNet::OctetsCollection> list(VelNet::CreateOctetsCollection());
    list->Add({10, 1, 2, 3});
    list->Add({10, 1, 2, 3});
    const VelBase::ReturnPtrI<VelNet::OctetsCollection> other(VelNet::CreateOctetsCollection());
    other->Add({10, 9, 8, 7});
    other->AddCollection(*list);
    ASSERT_EQ(other->GetCount(), 3U);
    EXPECT_EQ(std::string(other->GetOctets(0).GetAddressString().c_str()), "10.9.8.7");
    EXPECT_EQ(std::string(other->GetOctets(2).GetAddressString().c_str()), "10.1.2.3");
}

// A counted object of this program's, ended by the module.
class Counted : public VelSynch::ReferenceCountedImpl<int> {
public:
    explicit Counted(std::vector<int>& events) : events_(events) {}
    ~Counted() override { events_.push_back(GetReferenceCount()); }
    void ReferenceCountIsAboutToReachZero() const override {
        events_.push_back(GetReferenceCount());
    }

private:
    std::vector<int>& events_;
};

TEST(Values, TheLastReferenceEndsAnObjectOfThisProgram) {
    std::vector<int> events;
    {
        VelBase::ReturnPtrI<Counted> one(new Counted(events));
        const VelBase::ReturnPtrI<Counted> other(one.Get());
        EXPECT_EQ(other->GetReferenceCount(), 2);
        one = VelBase::ReturnPtrI<Counted>();
        EXPECT_EQ(other->GetReferenceCount(), 1);
        EXPECT_EQ(events, std::vector<int>{});
    }
    EXPECT_EQ(events, (std::vector<int>{1, 0}));
}

}  // namespace
}  // namespace Loopback
