#include "SettingsTree.h"

#include <sys/stat.h>

#include <cstdlib>
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
    std::string path = (std::filesystem::temp_directory_path() / "settingsXXXXXX").string();
    if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp");
    root_ = path;
    currentRoot = path;
}

SettingsTree::~SettingsTree() {
    currentRoot = "/nonexistent/settings";
    std::filesystem::remove_all(root_);
}

void SettingsTree::Write(const std::string& path, const std::string& contents) const {
    const std::filesystem::path file = root_ / path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
}

void SettingsTree::Link(const std::string& path, const std::string& target) const {
    const std::filesystem::path link = root_ / path;
    std::filesystem::create_directories(link.parent_path());
    std::filesystem::create_symlink(target, link);
}

void SettingsTree::MakePipe(const std::string& path) const {
    if (::mkfifo((root_ / path).c_str(), 0600) != 0) throw std::runtime_error("mkfifo");
}

void SettingsTree::MakeSocket(const std::string& path) const {
    if (::mknod((root_ / path).c_str(), S_IFSOCK | 0600, 0) != 0) throw std::runtime_error("mknod");
}

}  // namespace Conformance
