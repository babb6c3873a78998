// Settings of a resolver that a test writes: they take the place of the machine's.
#pragma once

#include <filesystem>
#include <string>

#include "support/TemporaryFolder.h"

namespace Conformance {

class ResolverFiles {
public:
    ResolverFiles();
    ~ResolverFiles();
    ResolverFiles(const ResolverFiles&) = delete;
    ResolverFiles& operator=(const ResolverFiles&) = delete;

    const std::filesystem::path& Settings() const { return settings_; }
    // Each time another file: the system takes long over one that is cut short.
    void Write(const std::string& contents) const;
    void WriteLocalServers(const std::string& contents) const;
    // In the place of the settings.
    void Link(const std::string& target) const;

private:
    const Support::TemporaryFolder folder_;
    const std::filesystem::path settings_ = folder_.Path() / "settings";
    const std::filesystem::path localServersSettings_ = folder_.Path() / "local-servers";
};

}  // namespace Conformance
