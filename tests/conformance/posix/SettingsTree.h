// A settings tree that a test fills: it takes the place of the machine's.
#pragma once

#include <filesystem>
#include <string>

#include "support/TemporaryFolder.h"

namespace Conformance {

class SettingsTree {
public:
    SettingsTree();
    ~SettingsTree();
    SettingsTree(const SettingsTree&) = delete;
    SettingsTree& operator=(const SettingsTree&) = delete;

    const std::filesystem::path& Root() const { return root_.Path(); }
    // Below the root; folders on the way are made.
    void Write(const std::string& path, const std::string& contents) const;
    void Link(const std::string& path, const std::string& target) const;
    void MakePipe(const std::string& path) const;
    void MakeSocket(const std::string& path) const;

private:
    const Support::TemporaryFolder root_;
};

}  // namespace Conformance
