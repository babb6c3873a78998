// Names that are passed in are names of entries, never paths; what cannot be the name of a visible
// entry does not exist. Entries whose names begin with a dot are hidden: besides "." and ".." they
// are how a mounted Kubernetes ConfigMap is built.
#include "settings/TreeKeys.h"

#include "Text/Utf8.h"
#include "settings/RegistryRoot.h"
#include "settings/SettingsFiles.h"
#include "settings/TreePlace.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>
#include <string>

namespace Posix {

namespace {

constexpr const char* HiveName = "HKLM";

bool IsVisible(std::string_view entry) noexcept {
    return !entry.empty() && entry.front() != '.';
}

// Returns the visible entries that the predicate selects, in code-point order; none if the folder
// cannot be listed completely.
template <typename Test>
std::vector<std::string> SelectEntries(const TreePlace& folder, Test test, unsigned int& error) {
    std::vector<std::string> names;
    const Listing listing = folder.OpenListing();
    if (!listing) {
        error = ErrorUnlessMissing();
        return names;
    }
    errno = 0;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (IsVisible(entry->d_name) && test(*entry)) names.emplace_back(entry->d_name);
        errno = 0;
    }
    error = static_cast<unsigned int>(errno);
    if (error != 0) return {};
    std::sort(names.begin(), names.end());
    return names;
}

// Returns the entry that is spelled exactly like the name, if there can be one.
std::optional<std::string> Spelling(Name name) {
    std::string text = Text::Utf8FromUtf16({name.begin, name.end});
    const bool possible = IsVisible(text) && text.find('/') == std::string::npos;
    if (!possible || !IsNamed(name, text)) return {};
    return text;
}

// Opens the first of the entries with that name: the one that is spelled like it or else, in
// code-point order, one that differs in case. Only the latter needs a listing of the folder:
// finding many entries by their exact names must not take one each.
template <typename Open>
auto OpenEntry(const TreePlace& folder, Name name, Open open, unsigned int& error) {
    decltype(open(folder)) opened{};
    const auto isFound = [&](const std::string& entry) {
        opened = open(folder.Below(entry));
        error = opened ? 0 : ErrorUnlessMissing();
        return opened || error != 0;
    };
    const std::optional<std::string> spelling = Spelling(name);
    if (spelling && isFound(*spelling)) return opened;
    const auto matches = [name](const dirent& entry) { return IsNamed(name, entry.d_name); };
    for (const std::string& entry : SelectEntries(folder, matches, error)) {
        if (isFound(entry)) break;
    }
    return opened;
}

std::optional<TreePlace> FolderAt(TreePlace place) {
    if (!place.OpenFolder()) return {};
    return place;
}

Descriptor FileAt(const TreePlace& place) {
    return place.OpenFile();
}

// Returns the folder at the end of the path, each part of which must exist below the one before.
std::optional<TreePlace> Descend(TreePlace start, Name path, unsigned int& error) {
    std::optional<TreePlace> place = std::move(start);
    TakeParts(path, [&](Name part) {
        place = OpenEntry(*place, part, FolderAt, error);
        return place.has_value();
    });
    return place;
}

bool IsKey(const TreePlace& folder, const dirent& entry) {
    if (entry.d_type == DT_DIR) return true;
    const bool mayLeadToOne = entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN;
    return mayLeadToOne && folder.Below(entry.d_name).IsFolder();
}

std::unique_ptr<Registry::Key> NewKey(std::optional<TreePlace> place);

class TreeKey final : public Registry::Key {
public:
    explicit TreeKey(TreePlace place) noexcept : place_(std::move(place)) {}

    std::unique_ptr<Key> Open(Name path, unsigned int& error) const override {
        return NewKey(Descend(place_, path, error));
    }

    bool Read(Name name, System::WideUnits* text, unsigned int& error) const override {
        const Descriptor file = OpenEntry(place_, name, FileAt, error);
        if (!file || text == nullptr) return static_cast<bool>(file);
        std::string contents;
        error = ReadWhole(file, contents);
        if (error != 0) return false;
        if (contents.ends_with('\n')) contents.pop_back();
        *text = Text::Utf16FromUtf8(contents);
        return true;
    }

    std::vector<System::WideUnits> SubKeys(unsigned int& error) const override {
        const auto isKey = [this](const dirent& entry) { return IsKey(place_, entry); };
        std::vector<System::WideUnits> names;
        for (const std::string& name : SelectEntries(place_, isKey, error)) {
            names.push_back(Text::Utf16FromUtf8(name));
        }
        return names;
    }

private:
    TreePlace place_;
};

std::unique_ptr<Registry::Key> NewKey(std::optional<TreePlace> place) {
    return place ? std::make_unique<TreeKey>(*std::move(place)) : nullptr;
}

// The root, and folders above it, may be links: whoever built the library chose the path.
Descriptor OpenRoot() noexcept {
    return Descriptor(::open(RegistryRoot(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::optional<TreePlace> FindHive(unsigned int& error) {
    Descriptor root = OpenRoot();
    std::optional<TreePlace> hive;
    if (root) hive = FolderAt(TreePlace(std::move(root), HiveName));
    error = hive ? 0 : ErrorUnlessMissing();
    return hive;
}

}  // namespace

std::unique_ptr<Registry::Key> OpenTreeKey(Name path, unsigned int& error) {
    std::optional<TreePlace> hive = FindHive(error);
    if (!hive || path.begin == path.end) return NewKey(std::move(hive));
    return NewKey(Descend(*std::move(hive), path, error));
}

}  // namespace Posix
