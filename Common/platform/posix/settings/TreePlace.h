// A place in the settings tree, and what lies there.
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

// A path from the tree's root, which is opened anew for each thing that is asked: so links on the
// way may lead anywhere in the tree, and one that leads out of it is refused with EXDEV. What
// cannot be opened is none, with errno.
class TreePlace {
public:
    TreePlace(Descriptor root, std::string name)
        : root_(std::make_shared<Descriptor>(std::move(root))), path_(std::move(name)) {}

    // The place of an entry of this folder.
    TreePlace Below(const std::string& entry) const { return {root_, path_ + '/' + entry}; }

    // Whether a folder is there, readable or not.
    bool IsFolder() const noexcept;
    Descriptor OpenFolder() const noexcept;
    // The entries of a folder.
    Listing OpenListing() const noexcept;
    // What is no regular file is not there.
    Descriptor OpenFile() const noexcept;

private:
    TreePlace(std::shared_ptr<const Descriptor> root, std::string path) noexcept
        : root_(std::move(root)), path_(std::move(path)) {}

    Descriptor Open(int flags) const noexcept;

    std::shared_ptr<const Descriptor> root_;
    std::string path_;
};

}  // namespace Posix
