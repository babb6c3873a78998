// The files that settings are read from.
#pragma once

#include <string>
#include <utility>

#include "system/Descriptors.h"

namespace Posix {

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
        if (number_ >= 0) CloseDescriptor(number_);
    }
    explicit operator bool() const noexcept { return number_ >= 0; }
    int Number() const noexcept { return number_; }
    int Take() noexcept { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

// Opens a file below the folder; what is no regular file is not there.
Descriptor OpenFile(int folder, const char* name) noexcept;

// Returns the system's error number or 0; a file of more than a mebibyte is an error.
unsigned int ReadWhole(const Descriptor& file, std::string& text);

// errno as the error of what could not be opened; 0 when it was simply not there.
unsigned int ErrorUnlessMissing() noexcept;

}  // namespace Posix
