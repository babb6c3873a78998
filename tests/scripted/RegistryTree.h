// The registry of a test: empty until the test puts keys and values there.
//
//   RegistryTree().Value("SYSTEM\\Tcpip\\Parameters", "Domain",
//   u"example.org").Key("SYSTEM\\Empty");
//
// Adding a key adds all keys above it. Sub-keys are listed in the order in which they were added. A
// failure comes from the queues of On: On::ReadValue().Passes(2).Fails(5) fails the third call.
#pragma once

#include <string>

namespace Scripted {

class RegistryTree {
public:
    // Adds to the tree of this hive; 3 is the local machine's.
    explicit RegistryTree(int hive = 3) : hive_(hive) {}

    RegistryTree& Key(const std::string& path);
    RegistryTree& Value(const std::string& path, const std::string& name, std::u16string text);

private:
    int hive_;
};

// Of the whole tree; keys, none of which may be open, are numbered from 1 again.
void ForgetRegistry();

}  // namespace Scripted
