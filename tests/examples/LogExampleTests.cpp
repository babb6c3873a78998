// The example that logs to a file, as a process of its own.
#include <examples/ExampleTest.h>
#include <support/TemporaryFolder.h>

namespace Examples {
namespace {

class LogExample : public ExampleTest {
protected:
    const Support::TemporaryFolder folder_;
};

TEST_F(LogExample, WritesRecordsOfEachCategoryToTheFile) {
    const auto path = folder_.Path() / "records";
    Program program("log-to-file", {path.string()});
    EXPECT_EQ(program.ReadRest(), "");
    EXPECT_EQ(program.Wait(), 0);
    const std::string records = Support::ContentsOf(path);
    for (const char* const part :
         {"Network/Error: ", "Network/Connection Trace: ", "Network/Packet Trace: ",
          "Network/Verbose Packet Trace: ", "Connected", "68656C6C6F", "has been closed"})
        EXPECT_NE(records.find(part), std::string::npos) << part << " is not in\n" << records;
}

TEST_F(LogExample, SaysWhyAFileCannotBeOpened) {
    Program program("log-to-file", {(folder_.Path() / "no folder" / "records").string()});
    EXPECT_NE(program.ReadLine().find("records"), std::string::npos);
    EXPECT_EQ(program.Wait(), 1);
}

TEST_F(LogExample, ATextDecidesWhatIsLoggedAndWhere) {
    const auto path = folder_.Path() / "records";
    Program program("configured-log",
                    {"Network/Packet Trace=on,file:" + path.string() + ";format=logfmt"});
    EXPECT_EQ(program.ReadRest(), "hello\n");
    EXPECT_EQ(program.Wait(), 0);
    const std::string records = Support::ContentsOf(path);
    EXPECT_EQ(records.substr(0, 5), "time=");
    for (const char* const part : {" connection=1 ", " connection=2 ", "category=\"Packet Trace\""})
        EXPECT_NE(records.find(part), std::string::npos) << part << " is not in\n" << records;
    EXPECT_EQ(records.find("category=\"Connection Trace\""), std::string::npos) << records;
}

TEST_F(LogExample, AMistakeInTheTextIsToldWithItsPlace) {
    Program program("configured-log", {"Network/Error=maybe"});
    EXPECT_EQ(program.ReadLine(),
              "log configuration \"Network/Error=maybe\", character 15: \"maybe\" is neither "
              "\"on\" nor \"off\"");
    EXPECT_EQ(program.Wait(), 2);
}

}  // namespace
}  // namespace Examples
