// The settings tree, against a model of folders and files. The input is a program: entries to make,
// and keys and values to ask for, with names from a small list that collides in many ways.
#include <Platform/Registry.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/text/ModelCodec.h"

namespace {

namespace fs = std::filesystem;
using Fuzz::Expect;

const Support::TemporaryFolder& Folder() {
    static const Support::TemporaryFolder folder;
    return folder;
}

}  // namespace

// Stands in for the product's answer where the settings are.
namespace Posix {
const char* RegistryRoot() noexcept;
const char* RegistryRoot() noexcept {
    return Folder().Path().c_str();
}
}  // namespace Posix

namespace {

// In code-point order among those that are equal without case.
constexpr std::array Names = {"A",  "a", "AB",       "Ab",       "aB",  "ab",
                              ".a", "b", "\xC3\x84", "\xC3\xA4", "a b", "\xF0\x9F\x98\x80"};

enum class Kind { Folder, File, Pipe, Link };

struct Entry {
    Kind kind = Kind::Folder;
    std::string text;  // a file's contents; a link's target, a name in the same folder
    std::map<std::string, Entry> entries;
};

std::string WithoutCase(std::string text) {
    for (char& character : text)
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character + 32);
    return text;
}

// What is at the end of links. A link to nothing is nothing; none leads around in a circle, since
// each is made to a name after its own.
const Entry* Followed(const Entry& folder, const Entry& entry) {
    if (entry.kind != Kind::Link) return &entry;
    const auto target = folder.entries.find(entry.text);
    return target == folder.entries.end() ? nullptr : Followed(folder, target->second);
}

// The entry of that kind: the one that is spelled like the name, or else the first that differs in
// case alone.
const Entry* Find(const Entry& folder, const std::string& name, Kind kind) {
    const auto isIt = [&](const std::string& candidate, const Entry& entry) -> const Entry* {
        const Entry* const found = Followed(folder, entry);
        const bool visible = candidate.front() != '.';
        return visible && found != nullptr && found->kind == kind ? found : nullptr;
    };
    const auto exact = folder.entries.find(name);
    if (exact != folder.entries.end())
        if (const Entry* const found = isIt(exact->first, exact->second)) return found;
    for (const auto& [candidate, entry] : folder.entries)
        if (WithoutCase(candidate) == WithoutCase(name))
            if (const Entry* const found = isIt(candidate, entry)) return found;
    return nullptr;
}

std::vector<std::u16string> FoldersIn(const Entry& folder) {
    std::vector<std::u16string> names;
    for (const auto& [name, entry] : folder.entries) {
        const Entry* const found = Followed(folder, entry);
        if (name.front() != '.' && found != nullptr && found->kind == Kind::Folder)
            names.push_back(Model::Utf16FromUtf8(name));
    }
    return names;
}

struct KeyCloser {
    void operator()(Registry::Key* key) const { Registry::CloseKey(key); }
};
using Key = std::unique_ptr<Registry::Key, KeyCloser>;

class Program {
public:
    explicit Program(Fuzz::Input input) : input_(input) {}

    void Run() {
        fs::remove_all(Hive());
        fs::create_directory(Hive());
        for (unsigned int count = input_.Below(16); count > 0; --count)
            MakeEntry();
        for (int asked = 0; !input_.IsEmpty() && asked < 16; ++asked)
            Ask();
    }

private:
    static fs::path Hive() { return Folder().Path() / "HKLM"; }

    std::string TakeName() { return Names[input_.Below(static_cast<unsigned int>(Names.size()))]; }

    // Goes down folders that exist, and makes one entry in the last.
    void MakeEntry() {
        Entry* folder = &hive_;
        fs::path path = Hive();
        for (unsigned int depth = input_.Below(3); depth > 0; --depth) {
            const std::string name = TakeName();
            const auto next = folder->entries.find(name);
            if (next == folder->entries.end() || next->second.kind != Kind::Folder) break;
            folder = &next->second;
            path /= name;
        }
        const std::string name = TakeName();
        if (!folder->entries.contains(name)) Make(*folder, path, name);
    }

    void Make(Entry& folder, const fs::path& path, const std::string& name) {
        const unsigned int kind = input_.Below(8);
        Entry entry;
        if (kind > 3)
            entry = {.kind = Kind::File, .text = std::string(input_.Line()), .entries = {}};
        if (kind == 2) entry = {.kind = Kind::Pipe, .text = {}, .entries = {}};
        if (kind == 3) entry = {.kind = Kind::Link, .text = TakeName(), .entries = {}};
        if (entry.kind == Kind::Link && entry.text <= name) return;
        MakeThere(path / name, entry);
        folder.entries.emplace(name, entry);
    }

    static void MakeThere(const fs::path& place, const Entry& entry) {
        if (entry.kind == Kind::Folder) fs::create_directory(place);
        if (entry.kind == Kind::File) std::ofstream(place, std::ios::binary) << entry.text;
        if (entry.kind == Kind::Pipe) Expect("mkfifo", 0, ::mkfifo(place.c_str(), 0600));
        if (entry.kind == Kind::Link) fs::create_symlink(entry.text, place);
    }

    // A key by its path, then what is in it.
    void Ask() {
        const Entry* folder = &hive_;
        std::string path;
        for (unsigned int depth = input_.Below(4); depth > 0; --depth) {
            const std::string name = TakeName();
            path += (path.empty() ? "" : "\\") + name;
            if (folder != nullptr) folder = Find(*folder, name, Kind::Folder);
        }
        unsigned int error = 99;
        const Key key(Registry::OpenKey(Registry::LocalMachine,
                                        Support::Wide(Model::Utf16FromUtf8(path)).data(), error));
        Expect("the error of opening " + path, 0U, error);
        Expect("whether there is the key " + path, folder != nullptr, key != nullptr);
        if (folder != nullptr) AskKey(*folder, *key);
    }

    void AskKey(const Entry& folder, Registry::Key& key) {
        AskValue(folder, key);
        AskSubKey(folder, key);
        unsigned int error = 99;
        std::vector<std::u16string> names;
        for (const System::WideUnits& name : Registry::SubKeyNames(key, error))
            names.emplace_back(name.begin(), name.end());
        Expect("the error of listing", 0U, error);
        Expect("the sub-keys", FoldersIn(folder), names);
    }

    void AskValue(const Entry& folder, Registry::Key& key) {
        const std::string name = TakeName();
        const Entry* const file = Find(folder, name, Kind::File);
        System::WideUnits units;
        unsigned int error = 99;
        const bool exists = Registry::ReadValue(
            key, Support::Wide(Model::Utf16FromUtf8(name)).data(), &units, error);
        Expect("the error of reading", 0U, error);
        Expect("whether there is the value " + name, file != nullptr, exists);
        if (file == nullptr) return;
        std::string text = file->text;
        if (text.ends_with('\n')) text.pop_back();
        Expect("its text", Model::Utf16FromUtf8(text), std::u16string(units.begin(), units.end()));
    }

    void AskSubKey(const Entry& folder, Registry::Key& key) {
        const std::string name = TakeName();
        unsigned int error = 99;
        const Key below(
            Registry::OpenSubKey(key, Support::Wide(Model::Utf16FromUtf8(name)).data(), error));
        Expect("the error of opening a sub-key", 0U, error);
        Expect("whether there is the sub-key " + name, Find(folder, name, Kind::Folder) != nullptr,
               below != nullptr);
    }

    Fuzz::Input input_;
    Entry hive_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Program(Fuzz::Input(data, size)).Run();
    return 0;
}
