// A key of the settings, whatever its source, and how keys and values are named.
#pragma once

#include "Platform/Registry.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace Posix {

// A name or a path, as a range of units.
struct Name {
    const unsigned short* begin;
    const unsigned short* end;
};

Name NameOf(const unsigned short* text) noexcept;

// Whether it equals that UTF-8 name; ASCII letters are compared without case.
bool IsNamed(Name wanted, std::string_view name);

inline constexpr unsigned short PathSeparator = '\\';

// Calls step with each part of a path until it returns false. Returns whether it accepted all. Even
// an empty path has one part.
template <typename Step>
bool TakeParts(Name path, Step step) {
    for (const unsigned short* begin = path.begin;; ++begin) {
        const unsigned short* end = std::find(begin, path.end, PathSeparator);
        if (!step(Name{begin, end})) return false;
        if (end == path.end) return true;
        begin = end;
    }
}

}  // namespace Posix

// That something does not exist is not an error: the result is null or false, and the error 0.
struct Registry::Key {
    Key() = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    virtual ~Key() = default;

    virtual std::unique_ptr<Key> Open(Posix::Name path, unsigned int& error) const = 0;
    virtual bool Read(Posix::Name name, System::WideUnits* text, unsigned int& error) const = 0;
    virtual std::vector<System::WideUnits> SubKeys(unsigned int& error) const = 0;
};
