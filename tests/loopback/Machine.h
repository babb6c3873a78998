// The machine as a test needs it: its name, its network, its settings. What is changed here holds
// for the test alone and is undone at the end of the scope; where the system does not allow that,
// nothing is changed and the scope says so. posix/ and windows/ hold an implementation for each
// system.
#pragma once

#include <string>
#include <vector>

namespace Machine {

// This computer has another name, for this thread and those that it starts.
//
// Linux: a host name of the thread's own. Windows keeps one name for all programs and has no such
// thing; under Wine, where the whole system is the tests' own, its name is changed.
class Name {
public:
    explicit Name(const std::string& name);
    ~Name();
    Name(const Name&) = delete;
    Name& operator=(const Name&) = delete;

    bool IsSet() const { return isSet_; }

private:
    bool isSet_;
    std::string former_;
};

// A network that ends on this machine and carries datagrams from one to many, for this thread and
// those that it starts. Sockets belong to the network in which they were made.
//
// Windows has no such thing; there the machine's own network is one when the machine has no other
// than the loopback interface.
class OwnNetwork {
public:
    OwnNetwork();
    ~OwnNetwork();
    OwnNetwork(const OwnNetwork&) = delete;
    OwnNetwork& operator=(const OwnNetwork&) = delete;

    bool IsUp() const { return isUp_; }

private:
    bool isUp_;
    int former_;
};

// Settings of this machine that a test writes: values below keys of the local machine's hive. The
// keys must not exist before.
//
// Linux: a settings tree at its usual place, which this thread and those that it starts see, and
// nothing else of what the folder holds in which the tree lies. Windows: the registry, under Wine
// alone, where the whole system is the tests' own.
class Settings {
public:
    Settings();
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    bool AreWritable() const { return areWritable_; }

    // A key by its path with backslashes, and those above it.
    void MakeKey(const std::string& path);
    // A value of a key that need not exist; the value may.
    void Write(const std::string& path, const std::string& name, const std::string& text);

private:
    bool areWritable_;
    std::string place_;
    std::vector<std::string> made_;
};

}  // namespace Machine
