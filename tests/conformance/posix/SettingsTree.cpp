#include "SettingsTree.h"

#include <sys/stat.h>

#include <fstream>
#include <stdexcept>

namespace {

std::string currentRoot = "/nonexistent/settings";

}  // namespace

// Stands in for the product's answer where the settings are.
namespace Posix {
const char* RegistryRoot() noexcept;
const char* RegistryRoot() noexcept {
    return currentRoot.c_str();
}
}  // namespace Posix

namespace Conformance {

SettingsTree::SettingsTree() {
    currentRoot = Root();
}

SettingsTree::~SettingsTree() {
    currentRoot = "/nonexistent/settings";
}

void SettingsTree::Write(const std::string& path, const std::string& contents) const {
    const std::filesystem::path file = Root() / path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
}

void SettingsTree::Link(const std::string& path, const std::string& target) const {
    const std::filesystem::path link = Root() / path;
    std::filesystem::create_directories(link.parent_path());
    std::filesystem::create_symlink(target, link);
}

void SettingsTree::MakePipe(const std::string& path) const {
    if (::mkfifo((Root() / path).c_str(), 0600) != 0) throw std::runtime_error("mkfifo");
}

void SettingsTree::MakeSocket(const std::string& path) const {
    if (::mknod((Root() / path).c_str(), S_IFSOCK | 0600, 0) != 0)
        throw std::runtime_error("mknod");
}

}  // namespace Conformance
