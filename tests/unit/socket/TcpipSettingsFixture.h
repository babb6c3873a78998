// The ground that tests of the machine's DNS settings stand on: a registry in either of its two
// layouts, and every way in which reading it can fail.
#pragma once

#include <VelRegistry/KeyException.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "SocketTrials.h"

namespace SocketTests {

inline constexpr char ParametersPath[] = "System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
inline constexpr char InterfacesPath[] =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces";

using Values = std::vector<std::pair<std::string, std::u16string>>;

// Adds an interface of the newer layout, after those that are there.
void AddInterface(const std::string& name, const Values& values = {});
// Adds values of the older layout, whose key is there then even without any.
void AddParameters(const Values& values = {});

// The settings of the next calls are read in the older layout.
void ReadOlderLayout(int calls = 1);

VelRegistry::KeyException KeyFailure(const std::u16string& text);

// An operation that reads settings, and how it begins its failures.
struct SettingsReader {
    std::function<void()> operation;
    std::u16string label;  // up to and with the point behind FAIL
    bool isOlderLayout = false;
};

std::u16string SettingsFailure(const SettingsReader& reader, const std::u16string& reason);

// Makes each registry operation of the reader fail in turn, with a KeyException of its own text
// each; expects the failure that tells it, logged while "Error" is on, and no key left open. The
// test has written no record before. Returns how many operations there were.
std::size_t ExpectEachKeyExceptionIsTold(const SettingsReader& reader);

// Makes each registry operation of the reader throw something else in turn; expects that to pass as
// it is, unlogged, and no key left open.
std::size_t ExpectWhatElseIsThrownPasses(const SettingsReader& reader);

// Fails each request of memory in turn; expects std::bad_alloc, and neither memory nor key left.
std::size_t ExpectExhaustedMemoryPasses(const SettingsReader& reader);

// The keys that are open, as in the ledger.
std::vector<std::string> OpenKeys();

class TcpipSettingsTest : public SocketTest {
protected:
    // Also checks that no socket error was asked for and that no key is open.
    void TearDown() override;

    // The names of the interfaces in the order in which they were opened.
    static std::vector<std::string> OpenedInterfaces();

    bool mayAskForSocketErrors_ = false;
};

}  // namespace SocketTests
