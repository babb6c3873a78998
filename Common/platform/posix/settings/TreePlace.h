// A path in the settings tree, and what is there.
#pragma once

#include "system/Descriptors.h"

#include <dirent.h>

#include <memory>
#include <string>

namespace Posix {

struct ListingCloser {
    void operator()(DIR* listing) const noexcept { ::closedir(listing); }
};
using Listing = std::unique_ptr<DIR, ListingCloser>;

// A path relative to the tree's root, resolved again on every access. Links on it may lead anywhere
// in the tree; one that leads out of it is refused with EXDEV. What cannot be opened is returned as
// none, with errno.
class TreePlace {
public:
    TreePlace(Descriptor root, std::string name)
        : root_(std::make_shared<Descriptor>(std::move(root))), path_(std::move(name)) {}

    // The path of an entry of this folder.
    TreePlace Below(const std::string& entry) const { return {root_, path_ + '/' + entry}; }

    // Whether there is a folder, readable or not.
    bool IsFolder() const noexcept;
    Descriptor OpenFolder() const noexcept;
    // Opens a listing of the folder.
    Listing OpenListing() const noexcept;
    // Anything but a regular file counts as missing.
    Descriptor OpenFile() const noexcept;

private:
    TreePlace(std::shared_ptr<const Descriptor> root, std::string path) noexcept
        : root_(std::move(root)), path_(std::move(path)) {}

    Descriptor Open(int flags) const noexcept;

    std::shared_ptr<const Descriptor> root_;
    std::string path_;
};

}  // namespace Posix
