// A settings tree that a test fills: it takes the place of the machine's.
#pragma once

#include <filesystem>
#include <string>

namespace Conformance {

class SettingsTree {
public:
    SettingsTree();
    ~SettingsTree();
    SettingsTree(const SettingsTree&) = delete;
    SettingsTree& operator=(const SettingsTree&) = delete;

    const std::filesystem::path& Root() const { return root_; }
    // Below the root; folders on the way are made.
    void Write(const std::string& path, const std::string& contents) const;
    void Link(const std::string& path, const std::string& target) const;
    void MakePipe(const std::string& path) const;
    void MakeSocket(const std::string& path) const;

private:
    std::filesystem::path root_;
};

}  // namespace Conformance
