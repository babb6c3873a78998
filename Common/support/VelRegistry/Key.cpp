#include "VelRegistry/Key.h"

#include "Platform/Registry.h"
#include "VelBase/SystemFailure.h"
#include "VelBase/WideLiteral.h"
#include "VelBase/WideText.h"
#include "VelRegistry/KeyException.h"

#include <utility>

namespace VelRegistry {

namespace {

using VelBase::operator""_wide;
using VelBase::ReturnWString;
using VelBase::WideText;

const unsigned short* OrEmpty(const unsigned short* text) noexcept {
    return text != nullptr ? text : ""_wide;
}

ReturnWString JoinPath(const ReturnWString& path, const unsigned short* name) {
    WideText joined;
    joined.Append(path);
    if (joined.Length() > 0) joined.Append("\\"_wide);
    return joined.Append(name).ToReturnWString();
}

[[noreturn]] void Throw(const WideText& whatFailed, unsigned int error) {
    throw KeyException(VelBase::DescribeSystemFailure(whatFailed, error));
}

[[noreturn]] void ThrowCannotOpen(const unsigned short* path, unsigned int error) {
    Throw(WideText().Append("Cannot open the key "_wide).Append(path), error);
}

[[noreturn]] void ThrowCannotRead(const unsigned short* name, const ReturnWString& path,
                                  unsigned int error) {
    WideText whatFailed;
    whatFailed.Append("Cannot read the value "_wide).Append(name);
    Throw(whatFailed.Append(" of the key "_wide).Append(path), error);
}

bool ReadValue(Registry::Key& key, const ReturnWString& path, const unsigned short* name,
               System::WideUnits* text) {
    unsigned int error = 0;
    const bool exists = Registry::ReadValue(key, OrEmpty(name), text, error);
    if (error != 0) ThrowCannotRead(name, path, error);
    return exists;
}

}  // namespace

void SystemKeyClose::operator()(Registry::Key* key) const noexcept {
    Registry::CloseKey(key);
}

Key::Key(SystemKeyOwner key, ReturnWString path) noexcept
    : key_(std::move(key)), path_(std::move(path)) {}

Key::~Key() = default;

void Key::Release() noexcept {
    delete this;
}

Key* Key::MakeUnlessMissing(SystemKeyOwner key, ReturnWString path) {
    return key != nullptr ? new Key(std::move(key), std::move(path)) : nullptr;
}

SystemKeyOwner Key::OpenSystemSubKey(const unsigned short* name) const {
    unsigned int error = 0;
    SystemKeyOwner key(Registry::OpenSubKey(*key_, OrEmpty(name), error));
    if (error != 0) ThrowCannotOpen(JoinPath(path_, name).c_str(), error);
    return key;
}

bool Key::HasSubKey(const unsigned short* name) const {
    return OpenSystemSubKey(name) != nullptr;
}

Key* Key::OpenSubKey(const unsigned short* name, bool) const {
    return MakeUnlessMissing(OpenSystemSubKey(name), JoinPath(path_, name));
}

bool Key::HasValue(const unsigned short* name) const {
    return ReadValue(*key_, path_, name, nullptr);
}

ReturnWString Key::ReadText(const unsigned short* name) const {
    System::WideUnits units;
    ReadValue(*key_, path_, name, &units);
    return WideText().Append(units).ToReturnWString();
}

KeyList* Key::ListSubKeys() const {
    unsigned int error = 0;
    const std::vector<System::WideUnits> found = Registry::SubKeyNames(*key_, error);
    if (error != 0) {
        Throw(WideText().Append("Cannot list the sub-keys of the key "_wide).Append(path_), error);
    }
    std::vector<ReturnWString> names;
    names.reserve(found.size());
    for (const System::WideUnits& name : found) {
        names.push_back(WideText().Append(name).ToReturnWString());
    }
    return new KeyList(std::move(names));
}

Key* OpenKeyFromRoot(RootHives root, const unsigned short* path, bool) {
    unsigned int error = 0;
    SystemKeyOwner key(Registry::OpenKey(root, OrEmpty(path), error));
    if (error != 0) ThrowCannotOpen(path, error);
    return Key::MakeUnlessMissing(std::move(key), path);
}

}  // namespace VelRegistry
