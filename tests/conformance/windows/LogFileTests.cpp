// The log file, looked at with the system's own means.
#include <windows.h>
// Behind it.
#include <aclapi.h>

#include <Platform/System.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "conformance/WineAnswers.h"
#include "support/TemporaryFolder.h"

namespace Conformance {
namespace {

struct LocalMemory {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

class LogFile : public testing::Test {
protected:
    static System::LogFile Open(const std::filesystem::path& path) {
        const auto utf8 = path.u8string();
        unsigned int error = 4711;
        const System::LogFile file =
            System::OpenLogFile(std::string(utf8.begin(), utf8.end()).c_str(), error);
        EXPECT_NE(file, System::NoLogFile);
        EXPECT_EQ(error, 0U);
        return file;
    }
    System::LogFile Open() const { return Open(path_); }
    static unsigned int ErrorOf(const std::string& path) {
        unsigned int error = 0;
        EXPECT_EQ(System::OpenLogFile(path.c_str(), error), System::NoLogFile);
        return error;
    }
    std::string Contents() const { return Support::ContentsOf(path_); }
    static bool Write(System::LogFile file, const std::string& text) {
        return System::WriteLogFile(file, text.data(), text.size()) == text.size();
    }

    const Support::TemporaryFolder temporary_;
    const std::filesystem::path directory_ = temporary_.Path();
    const std::filesystem::path path_ = directory_ / L"lo\u00E9\u4E2Dg";
};

HANDLE HandleOf(System::LogFile file) {
    return reinterpret_cast<HANDLE>(file);
}

TEST_F(LogFile, IsAppendedTo) {
    std::ofstream(path_, std::ios::binary) << "before\n";
    const System::LogFile first = Open();
    const System::LogFile second = Open();
    EXPECT_TRUE(Write(first, "one\n"));
    EXPECT_TRUE(Write(second, "two\n"));
    EXPECT_TRUE(Write(first, "three\n"));
    System::CloseLogFile(first);
    System::CloseLogFile(second);
    EXPECT_EQ(Contents(), "before\none\ntwo\nthree\n");
}

TEST_F(LogFile, CanBeWrittenByItsOwnerAgain) {
    System::CloseLogFile(Open());
    const System::LogFile file = Open();
    EXPECT_TRUE(Write(file, "again"));
    System::CloseLogFile(file);
    EXPECT_EQ(Contents(), "again");
}

std::vector<unsigned char> Everyone() {
    std::vector<unsigned char> sid(SECURITY_MAX_SID_SIZE);
    DWORD size = SECURITY_MAX_SID_SIZE;
    EXPECT_NE(::CreateWellKnownSid(WinWorldSid, nullptr, sid.data(), &size), 0);
    return sid;
}

bool HasRights(ACL& list, PSID user) {
    bool has = false;
    for (DWORD index = 0; index < list.AceCount; ++index) {
        void* entry = nullptr;
        EXPECT_NE(::GetAce(&list, index, &entry), 0);
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        has = has || (allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                      ::EqualSid(&allowed->SidStart, user) != 0);
    }
    return has;
}

TEST_F(LogFile, IsItsOwnersOnly) {
    System::CloseLogFile(Open());
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    constexpr SECURITY_INFORMATION wanted = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    ASSERT_EQ(::GetNamedSecurityInfoW(path_.c_str(), SE_FILE_OBJECT, wanted, &owner, nullptr, &list,
                                      nullptr, &descriptor),
              static_cast<DWORD>(ERROR_SUCCESS));
    const std::unique_ptr<void, LocalMemory> holder(descriptor);
    ASSERT_NE(list, nullptr);
    if (!WineGivesNoAnswer("the whole access list of a file")) {
        EXPECT_EQ(list->AceCount, 1);
    }
    EXPECT_TRUE(HasRights(*list, owner));
    EXPECT_FALSE(HasRights(*list, Everyone().data()));
}

TEST_F(LogFile, IsNotInheritedByPrograms) {
    const System::LogFile file = Open();
    DWORD flags = HANDLE_FLAG_INHERIT;
    ASSERT_NE(::GetHandleInformation(HandleOf(file), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
    System::CloseLogFile(file);
}

TEST_F(LogFile, CanBeRenamedAndDeletedWhileItIsWritten) {
    const System::LogFile file = Open();
    EXPECT_NE(::DeleteFileW(path_.c_str()), 0);
    EXPECT_TRUE(Write(file, "text"));
    System::CloseLogFile(file);
}

TEST_F(LogFile, ThatCannotBeOpenedTellsWhy) {
    EXPECT_EQ(ErrorOf((directory_ / "no" / "log").string()), unsigned{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(ErrorOf(directory_.string()), unsigned{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf("\xFF"), unsigned{ERROR_NO_UNICODE_TRANSLATION});
}

TEST_F(LogFile, ThatIsNoneRefusesRecords) {
    EXPECT_FALSE(Write(System::NoLogFile, "text"));
    System::CloseLogFile(System::NoLogFile);
}

TEST_F(LogFile, TellsWhetherItEndsWithinALine) {
    const System::LogFile file = Open();
    EXPECT_FALSE(System::EndsWithinLine(file));
    for (const char* const text : {"record\n", "\n"}) {
        Write(file, text);
        EXPECT_FALSE(System::EndsWithinLine(file));
        Write(file, "half");
        EXPECT_TRUE(System::EndsWithinLine(file));
    }
    System::CloseLogFile(file);
    EXPECT_EQ(Contents(), "record\nhalf\nhalf");
    EXPECT_FALSE(System::EndsWithinLine(System::NoLogFile));
}

TEST_F(LogFile, StandardErrorIsTheProcesssAndStaysOpen) {
    const HANDLE former = ::GetStdHandle(STD_ERROR_HANDLE);
    const System::LogFile file = Open();
    ::SetStdHandle(STD_ERROR_HANDLE, HandleOf(file));
    System::CloseLogFile(System::StandardError());
    EXPECT_TRUE(Write(System::StandardError(), "text"));
    ::SetStdHandle(STD_ERROR_HANDLE, former);
    System::CloseLogFile(file);
    EXPECT_EQ(Contents(), "text");
}

TEST_F(LogFile, APipeWithoutAReaderRefusesRecords) {
    HANDLE output = nullptr;
    HANDLE input = nullptr;
    ASSERT_NE(::CreatePipe(&output, &input, nullptr, 0), 0);
    ::CloseHandle(output);
    EXPECT_FALSE(Write(reinterpret_cast<System::LogFile>(input), "text"));
    ::CloseHandle(input);
}

}  // namespace
}  // namespace Conformance
