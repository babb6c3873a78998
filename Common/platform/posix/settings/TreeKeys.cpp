// The names that are asked for never become paths. They are compared with the names that a
// directory has, and only those are opened, so that nothing outside the tree can be named. Entries
// whose name begins with a point do not exist here: besides "." and ".." they are how a mounted
// Kubernetes ConfigMap is built.
#include "settings/TreeKeys.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "settings/RegistryRoot.h"
#include "settings/SettingsFiles.h"
#include "system/Utf8.h"

namespace Posix {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

Descriptor OpenDirectory(int parent, const char* name) {
    return Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

Directory OpenListing(int key) {
    Descriptor own = OpenDirectory(key, ".");
    Directory listing(own ? ::fdopendir(own.Number()) : nullptr);
    if (listing) own.Take();
    return listing;
}

// The visible entries that the test selects, in code-point order.
template <typename Test>
std::vector<std::string> SelectEntries(int key, Test test, unsigned int& error) {
    std::vector<std::string> names;
    const Directory listing = OpenListing(key);
    errno = listing ? 0 : errno;
    while (const dirent* entry = listing ? ::readdir(listing.get()) : nullptr) {
        if (entry->d_name[0] != '.' && test(entry->d_name)) names.emplace_back(entry->d_name);
        errno = 0;
    }
    error = static_cast<unsigned int>(errno);
    std::sort(names.begin(), names.end());
    return names;
}

// Opens the first entry of that name that the opener takes; others differ from it in case or kind
// only.
template <typename Opener>
Descriptor OpenEntry(int key, Name name, Opener opener, unsigned int& error) {
    const auto matches = [name](const char* entry) { return IsNamed(name, entry); };
    for (const std::string& entry : SelectEntries(key, matches, error)) {
        Descriptor opened = opener(key, entry.c_str());
        if (opened) return opened;
        error = ErrorUnlessMissing();
        if (error != 0) break;
    }
    return {};
}

// The key at the end of the path, each part of which must exist below the one before.
Descriptor Descend(Descriptor key, Name path, unsigned int& error) {
    if (!key) return key;
    TakeParts(path, [&](Name part) {
        key = OpenEntry(key.Number(), part, OpenDirectory, error);
        return static_cast<bool>(key);
    });
    return key;
}

std::unique_ptr<Registry::Key> NewKey(Descriptor directory);

class TreeKey final : public Registry::Key {
public:
    explicit TreeKey(Descriptor directory) noexcept : directory_(std::move(directory)) {}

    std::unique_ptr<Key> Open(Name path, unsigned int& error) const override {
        Descriptor itself = OpenDirectory(directory_.Number(), ".");
        error = itself ? 0 : ErrorUnlessMissing();
        return NewKey(Descend(std::move(itself), path, error));
    }

    bool Read(Name name, System::WideUnits* text, unsigned int& error) const override {
        const Descriptor file = OpenEntry(directory_.Number(), name, OpenFile, error);
        if (!file || text == nullptr) return static_cast<bool>(file);
        std::string contents;
        error = ReadWhole(file, contents);
        if (error != 0) return false;
        if (contents.ends_with('\n')) contents.pop_back();
        *text = WideFromUtf8(contents);
        return true;
    }

    std::vector<System::WideUnits> SubKeys(unsigned int& error) const override {
        const auto isKey = [this](const char* entry) {
            struct stat status = {};
            return ::fstatat(directory_.Number(), entry, &status, 0) == 0 &&
                   S_ISDIR(status.st_mode);
        };
        std::vector<System::WideUnits> names;
        for (const std::string& name : SelectEntries(directory_.Number(), isKey, error)) {
            names.push_back(WideFromUtf8(name));
        }
        return names;
    }

private:
    Descriptor directory_;
};

std::unique_ptr<Registry::Key> NewKey(Descriptor directory) {
    return directory ? std::make_unique<TreeKey>(std::move(directory)) : nullptr;
}

}  // namespace

std::unique_ptr<Registry::Key> OpenTreeKey(Name path, unsigned int& error) {
    const Descriptor root = OpenDirectory(AT_FDCWD, RegistryRoot());
    Descriptor hive = root ? OpenDirectory(root.Number(), "HKLM") : Descriptor();
    error = hive ? 0 : ErrorUnlessMissing();
    if (path.begin == path.end) return NewKey(std::move(hive));
    return NewKey(Descend(std::move(hive), path, error));
}

}  // namespace Posix
