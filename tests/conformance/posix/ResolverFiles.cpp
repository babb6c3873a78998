#include "ResolverFiles.h"

#include <fstream>

namespace {

const char* const Nowhere = "/nonexistent/resolver";
std::string currentSettings = Nowhere;
std::string currentLocalServersSettings = Nowhere;

}  // namespace

// Stands in for the product's answer where the settings are.
namespace Posix {
const char* ResolverFile() noexcept;
const char* ResolverFile() noexcept {
    return currentSettings.c_str();
}
const char* LocalServersResolverFile() noexcept;
const char* LocalServersResolverFile() noexcept {
    return currentLocalServersSettings.c_str();
}
}  // namespace Posix

namespace Conformance {

ResolverFiles::ResolverFiles() {
    currentSettings = settings_;
    currentLocalServersSettings = localServersSettings_;
}

ResolverFiles::~ResolverFiles() {
    currentSettings = currentLocalServersSettings = Nowhere;
}

void ResolverFiles::Write(const std::string& contents) const {
    std::filesystem::remove(settings_);
    std::ofstream(settings_, std::ios::binary) << contents;
}

void ResolverFiles::WriteLocalServers(const std::string& contents) const {
    std::ofstream(localServersSettings_, std::ios::binary) << contents;
}

void ResolverFiles::Link(const std::string& target) const {
    std::filesystem::create_symlink(target, settings_);
}

}  // namespace Conformance
