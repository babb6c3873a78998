// The example that resolves names, as a process of its own.
#include <examples/ExampleTest.h>

#include <regex>

namespace Examples {
namespace {

class ResolverExample : public ExampleTest {};

TEST_F(ResolverExample, PrintsEachNameAndGoesOnAfterOneWithoutAddress) {
    Program resolver("caching-resolver", {"localhost", "no such name", "localhost"});
    const std::regex known("localhost 127\\.0\\.0\\.1 \\([0-9]+\\.[0-9] us\\)");
    const std::regex unknown("no such name has no address \\(code 1100[0-9]\\)");
    for (const std::regex* const expected : {&known, &unknown, &known}) {
        const std::string line = resolver.ReadLine();
        EXPECT_TRUE(std::regex_match(line, *expected)) << line;
    }
    EXPECT_EQ(resolver.ReadRest(), "");
    EXPECT_EQ(resolver.Wait(), 0);
}

}  // namespace
}  // namespace Examples
