// The settings tree on systems without a registry: a directory for each key, a file for each value.
//
// The names that are asked for never become paths. They are compared with the names that a
// directory has, and only those are opened, so that nothing outside the tree can be named. Entries
// whose name begins with a point do not exist here: besides "." and ".." they are how a mounted
// Kubernetes ConfigMap is built.
#include <Platform/Registry.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Descriptors.h"
#include "RegistryRoot.h"
#include "Utf8.h"

namespace {

class Descriptor {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) Posix::CloseDescriptor(number_);
    }
    explicit operator bool() const noexcept { return number_ >= 0; }
    int Number() const noexcept { return number_; }
    int Take() noexcept { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

struct DirectoryCloser {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

// A part of a path or a whole one, as a range of units.
struct Name {
    const unsigned short* begin;
    const unsigned short* end;
};

constexpr unsigned short Separator = '\\';
constexpr std::size_t LongestValue = 1U << 20U;

Name NameOf(const unsigned short* text) {
    const unsigned short* end = text;
    while (*end != 0)
        ++end;
    return {text, end};
}

// What errno tells about a thing that is simply not there is no error. A local socket, which cannot
// be opened, is no more there than a pipe.
unsigned int ErrorUnlessMissing() {
    const bool missing = errno == ENOENT || errno == ENOTDIR || errno == ENXIO;
    return missing ? 0U : static_cast<unsigned int>(errno);
}

unsigned short WithoutCase(unsigned short unit) {
    const bool upper = unit >= 'A' && unit <= 'Z';
    return upper ? static_cast<unsigned short>(unit + ('a' - 'A')) : unit;
}

bool SameName(Name wanted, std::string_view entry) {
    const System::WideUnits units = Posix::WideFromUtf8(entry);
    const auto same = [](unsigned short left, unsigned short right) {
        return WithoutCase(left) == WithoutCase(right);
    };
    return std::equal(wanted.begin, wanted.end, units.begin(), units.end(), same);
}

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
    const auto matches = [name](const char* entry) { return SameName(name, entry); };
    for (const std::string& entry : SelectEntries(key, matches, error)) {
        Descriptor opened = opener(key, entry.c_str());
        if (opened) return opened;
        error = ErrorUnlessMissing();
        if (error != 0) break;
    }
    return {};
}

bool IsRegularFile(const Descriptor& file) {
    struct stat status = {};
    return ::fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode);
}

// Without blocking, since opening a pipe would wait for a writer.
Descriptor OpenValue(int key, const char* name) {
    Descriptor file(::openat(key, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || IsRegularFile(file)) return file;
    errno = ENOENT;
    return {};
}

// The key at the end of the path, each part of which must exist below the one before.
Descriptor Descend(Descriptor key, Name path, unsigned int& error) {
    const unsigned short* begin = path.begin;
    while (key) {
        const unsigned short* end = std::find(begin, path.end, Separator);
        key = OpenEntry(key.Number(), {begin, end}, OpenDirectory, error);
        if (end == path.end) break;
        begin = end + 1;
    }
    return key;
}

template <std::size_t Size>
ssize_t ReadSome(const Descriptor& file, char (&buffer)[Size]) {
    ssize_t count = -1;
    do {
        count = ::read(file.Number(), buffer, Size);
    } while (count < 0 && errno == EINTR);
    return count;
}

// Returns the system's error number, or 0.
int ReadWhole(const Descriptor& file, std::string& text) {
    char buffer[4096];
    while (text.size() <= LongestValue) {
        const ssize_t count = ReadSome(file, buffer);
        if (count <= 0) return count < 0 ? errno : 0;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return EFBIG;
}

}  // namespace

struct Registry::Key {
    Descriptor directory;
};

namespace {

Registry::Key* NewKey(Descriptor directory) {
    return directory ? new Registry::Key{std::move(directory)} : nullptr;
}

}  // namespace

Registry::Key* Registry::OpenKey(int hive, const unsigned short* path, unsigned int& error) {
    error = 0;
    if (hive != LocalMachine) return nullptr;
    const Descriptor root = OpenDirectory(AT_FDCWD, Posix::RegistryRoot());
    Descriptor key = root ? OpenDirectory(root.Number(), "HKLM") : Descriptor();
    if (!key) error = ErrorUnlessMissing();
    const Name name = NameOf(path);
    if (name.begin != name.end) key = Descend(std::move(key), name, error);
    return NewKey(std::move(key));
}

Registry::Key* Registry::OpenSubKey(Key& key, const unsigned short* name, unsigned int& error) {
    Descriptor itself = OpenDirectory(key.directory.Number(), ".");
    error = itself ? 0 : ErrorUnlessMissing();
    return NewKey(Descend(std::move(itself), NameOf(name), error));
}

void Registry::CloseKey(Key* key) noexcept {
    delete key;
}

bool Registry::ReadValue(Key& key, const unsigned short* name, System::WideUnits* text,
                         unsigned int& error) {
    const Descriptor file = OpenEntry(key.directory.Number(), NameOf(name), OpenValue, error);
    if (!file || text == nullptr) return static_cast<bool>(file);
    std::string contents;
    error = static_cast<unsigned int>(ReadWhole(file, contents));
    if (error != 0) return false;
    if (contents.ends_with('\n')) contents.pop_back();
    *text = Posix::WideFromUtf8(contents);
    return true;
}

std::vector<System::WideUnits> Registry::SubKeyNames(Key& key, unsigned int& error) {
    const int directory = key.directory.Number();
    const auto isKey = [directory](const char* entry) {
        struct stat status = {};
        return ::fstatat(directory, entry, &status, 0) == 0 && S_ISDIR(status.st_mode);
    };
    std::vector<System::WideUnits> names;
    for (const std::string& name : SelectEntries(directory, isKey, error)) {
        names.push_back(Posix::WideFromUtf8(name));
    }
    return names;
}
