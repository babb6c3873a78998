// Exceptions cross the module's boundary: this program and the module, each built with hidden
// symbols, agree on their types.
#include <VelBase/ExceptionImpl.h>
#include <VelBase/Message.h>
#include <VelLog/FileSink.h>
#include <VelNet/SocketAddress.h>
#include <loopback/LoopbackTest.h>

#include <exception>
#include <string>
#include <vector>

namespace Loopback {
namespace {

class Exceptions : public LoopbackTest {};

using SupportException = VelBase::ExceptionImpl<VelBase::Message>;

constexpr const char* ImpossiblePath = "/no such folder/\xC3\xA9.log";

void FailInTheLibrary() {
    VelNet::SocketAddress::ConvertDottedStringToOctets("x");
}

void FailInTheSupportLayer() {
    const VelLog::FileSink sink(ImpossiblePath);
}

const std::u16string LibraryText =
    u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not an "
    u"Internet Protocol dotted address: x";

// The reason after it is the system's.
const std::u16string SupportText = u"Cannot open the log file /no such folder/\u00E9.log: ";

TEST_F(Exceptions, TheLibrarysIsCaughtByItself) {
    try {
        FailInTheLibrary();
        FAIL() << "nothing was thrown";
    } catch (const VelNet::Exception& exception) {
        EXPECT_EQ(Text(exception.GetMessage()), LibraryText);
        EXPECT_EQ(exception.GetErrorCode(), VelNet::SOCKET_ERR_UNKNOWN);
    }
}

// The base holds nothing of it.
TEST_F(Exceptions, TheLibrarysIsCaughtByItsBase) {
    try {
        FailInTheLibrary();
        FAIL() << "nothing was thrown";
    } catch (const VelBase::Message& message) {
        EXPECT_EQ(Text(message.GetMessage()), u"");
        EXPECT_EQ(message.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
        EXPECT_EQ(message.GetID(), 0);
        const auto& whole = static_cast<const VelNet::Exception&>(message);
        EXPECT_EQ(Text(whole.GetMessage()), LibraryText);
    }
}

TEST_F(Exceptions, TheLibrarysIsNotTakenForTheSupportLayers) {
    EXPECT_THROW(
        {
            try {
                FailInTheLibrary();
            } catch (const SupportException&) {
                ADD_FAILURE() << "caught as another type";
            }
        },
        VelNet::Exception);
}

TEST_F(Exceptions, TheSupportLayersIsCaughtByItself) {
    try {
        FailInTheSupportLayer();
        FAIL() << "nothing was thrown";
    } catch (const SupportException& exception) {
        const std::u16string text = Text(exception.GetMessage());
        EXPECT_EQ(text.substr(0, SupportText.size()), SupportText);
        EXPECT_GT(text.size(), SupportText.size());
        EXPECT_NE(exception.GetID(), 0);
    }
}

TEST_F(Exceptions, TheSupportLayersIsCaughtByItsBase) {
    try {
        FailInTheSupportLayer();
        FAIL() << "nothing was thrown";
    } catch (const VelBase::Message& message) {
        EXPECT_EQ(Text(message.GetMessage()).substr(0, SupportText.size()), SupportText);
        EXPECT_EQ(message.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    }
}

TEST_F(Exceptions, TheSupportLayersIsNotTakenForTheLibrarys) {
    EXPECT_THROW(
        {
            try {
                FailInTheSupportLayer();
            } catch (const VelNet::Exception&) {
                ADD_FAILURE() << "caught as another type";
            }
        },
        SupportException);
}

TEST_F(Exceptions, ThisProgramThrowsTheSameTypes) {
    const std::u16string text = u"text";
    const std::vector<unsigned short> units(text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_EQ(
        FailureOf([&] { throw VelNet::Exception(units.data(), VelNet::SOCKET_ERR_CONNREFUSED); }),
        (Failure{text, 10061}));
    VelBase::Message message;
    message.SetMessage(units.data());
    EXPECT_THROW(throw SupportException(message), VelBase::Message);
}

TEST_F(Exceptions, OneThatIsKeptOutlivesItsHandler) {
    std::exception_ptr kept;
    try {
        FailInTheLibrary();
    } catch (...) {
        kept = std::current_exception();
    }
    EXPECT_EQ(FailureOf([&kept] { std::rethrow_exception(kept); }), (Failure{LibraryText, -1}));
}

}  // namespace
}  // namespace Loopback
