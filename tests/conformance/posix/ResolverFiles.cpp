#include "ResolverFiles.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

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
    std::string path = (std::filesystem::temp_directory_path() / "resolverXXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp");
    folder_ = path;
    settings_ = folder_ / "settings";
    localServersSettings_ = folder_ / "local-servers";
    currentSettings = settings_;
    currentLocalServersSettings = localServersSettings_;
}

ResolverFiles::~ResolverFiles() {
    currentSettings = currentLocalServersSettings = Nowhere;
    std::filesystem::remove_all(folder_);
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
