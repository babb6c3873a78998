// Settings that the system does not let be opened, listed or read.
#include <cerrno>
#include <filesystem>
#include <string>

#include "ResolverScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

const std::u16string Interfaces =
    u"System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces";

using SettingsFault = ResolverKeys;

long OpenDescriptors() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// Fails the opening of one file by its path.
Hook FailsToOpen(const std::string& path, int error) {
    return [path, error](const Call& call) {
        for (const std::size_t place : {0U, 1U}) {
            const bool isPath = call.Argument(place) > 0xFFFFF;  // and no descriptor, nor flags
            if (isPath && path == call.Pointer<const char>(place)) return call.Fail(error);
        }
        return call.Make();
    };
}

TEST_F(SettingsFault, OfTheRootIsAnErrorUnlessThatSaysThatNoneIsThere) {
    tree_.Write("HKLM/K/Value", "text");
    for (const int error : {EACCES, EMFILE, EIO, ELOOP, ENOMEM}) {
        const FailingCall fails(SystemCall::Open, error);
        EXPECT_EQ(Open(u"K"), nullptr);
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    for (const int error : {ENOENT, ENOTDIR, ENXIO}) {
        const FailingCall fails(SystemCall::Open, error);
        EXPECT_EQ(Open(u"K"), nullptr);
        EXPECT_EQ(error_, 0U);
    }
}

TEST_F(SettingsFault, OfAListingLeavesNoDescriptorOpen) {
    tree_.Write("HKLM/K/Sub/Value", "text");
    const Key key = Open(u"K");
    const long before = OpenDescriptors();
    {
        const FailingCall fails(SystemCall::Fdopendir, ENOMEM);
        EXPECT_EQ(SubKeys(key), std::vector<std::u16string>{});
        EXPECT_EQ(error_, static_cast<unsigned int>(ENOMEM));
    }
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(SubKeys(key), std::vector<std::u16string>{u"Sub"});
}

// The tree speaks for the machine; what cannot be read in it is not what the resolver is told.
TEST_F(SettingsFault, OfTheTreesInterfacesIsNotMadeUpForByTheResolvers) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\n");
    tree_.Write("HKLM/System/CurrentControlSet/Services/Tcpip/Parameters/Value", "text");
    tree_.Link("HKLM/System/CurrentControlSet/Services/Tcpip/Parameters/Interfaces", "Interfaces");
    EXPECT_EQ(Open(Interfaces), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
}

TEST_F(SettingsFault, OfTheResolversFileIsAnErrorUnlessItIsMissing) {
    files_.Write("domain example.org\n");
    for (const int error : {EACCES, EMFILE, EIO}) {
        const HookedCall open(SystemCall::Open, FailsToOpen(files_.Settings(), error));
        const HookedCall openat(SystemCall::Openat, FailsToOpen(files_.Settings(), error));
        EXPECT_EQ(Open(Interfaces), nullptr);
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    const HookedCall open(SystemCall::Open, FailsToOpen(files_.Settings(), ENOENT));
    const HookedCall openat(SystemCall::Openat, FailsToOpen(files_.Settings(), ENOENT));
    EXPECT_EQ(Told(), u"none none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(SettingsFault, OfReadingTheResolversFileIsAnError) {
    files_.Write("domain example.org\n");
    for (const unsigned int first : {1U, 2U}) {
        const FailingCall fails(SystemCall::Read, EIO, {.first = first});
        EXPECT_EQ(Open(Interfaces), nullptr);
        EXPECT_EQ(error_, static_cast<unsigned int>(EIO));
    }
}

TEST_F(SettingsFault, OfAValueIsAnErrorUnlessThatSaysThatNoneIsThere) {
    tree_.Write("HKLM/K/Value", "text");
    const Key key = Open(u"K");
    for (const int error : {EPERM, EACCES, EMFILE, EIO}) {
        const FailingCall fails(SystemCall::Read, error, {.count = 100});
        EXPECT_EQ(Read(key, u"Value"), u"none");
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    for (const int error : {EACCES, EIO, ESTALE}) {
        const FailingCall beneath(SystemCall::Syscall, error);
        EXPECT_EQ(Read(key, u"Value"), u"none");
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    for (const int error : {EPERM, EACCES, EIO}) {
        const FailingCall beneath(SystemCall::Syscall, error);
        const FailingCall plain(SystemCall::Openat, error);
        EXPECT_EQ(Read(key, u"Value"), u"none");
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    EXPECT_EQ(Read(key, std::u16string(300, u'n')), u"none");
    EXPECT_EQ(error_, 0U);
}

// Whatever is no file is none, and an error number that was there before says nothing of it.
TEST_F(SettingsFault, FromBeforeIsNone) {
    tree_.Write("HKLM/K/Value", "text");
    tree_.Write("HKLM/K/Sub/Value", "text");
    const Key key = Open(u"K");
    for (const int earlier : {EIO, EMFILE, EINTR}) {
        errno = earlier;
        EXPECT_EQ(Read(key, u"Sub"), u"none");
        EXPECT_EQ(error_, 0U) << earlier;
        errno = earlier;
        EXPECT_EQ(Read(key, u"Value"), u"[text]");
        EXPECT_EQ(error_, 0U) << earlier;
    }
}

// Whether the tree has the parameters is asked once more before the resolver's are taken.
TEST_F(SettingsFault, OfTheTreesParametersIsNotMadeUpForByTheResolvers) {
    files_.Write("domain example.org\n");
    const FailingCall fails(SystemCall::Open, EIO, {.first = 2, .count = 1});
    EXPECT_EQ(Open(Interfaces), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(EIO));
}

TEST_F(SettingsFault, OfASignalIsNone) {
    files_.Write("domain example.org\n");
    tree_.Write("HKLM/K/Value", "text");
    const FailingCall fails(SystemCall::Read, EINTR, {.count = 3});
    EXPECT_EQ(Told(), u"[example.org] none");
    const FailingCall again(SystemCall::Read, EINTR, {.count = 3});
    EXPECT_EQ(Read(Open(u"K"), u"Value"), u"[text]");
}

TEST_F(SettingsFault, OfAValueThatIsTooLongBeginsBehindAMebibyte) {
    constexpr std::size_t most = 1U << 20U;
    tree_.Write("HKLM/K/Longest", std::string(most, 'x'));
    tree_.Write("HKLM/K/TooLong", std::string(most + 1, 'x'));
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"Longest"), InBrackets(std::u16string(most, u'x')));
    EXPECT_EQ(Read(key, u"TooLong"), u"none");
    EXPECT_EQ(error_, static_cast<unsigned int>(EFBIG));
}

}  // namespace
}  // namespace Conformance
