#include "system/TrustedLinks.h"

#include "system/Descriptors.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

namespace Posix {

namespace {

// The kernel's own limit (MAXSYMLINKS).
constexpr int MostLinks = 40;

// Returns the last component of a path.
const char* NameIn(const char* path) noexcept {
    const char* const separator = std::strrchr(path, '/');
    return separator != nullptr ? separator + 1 : path;
}

// Opens the folder that contains the path's last component.
Descriptor OpenFolderOf(int start, const char* path) noexcept {
    char folder[PATH_MAX] = ".";
    std::memcpy(folder, path, static_cast<std::size_t>(NameIn(path) - path));
    return Descriptor(::openat(start, folder, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool IsTrusted(uid_t owner) noexcept {
    return owner == 0 || owner == ::geteuid();
}

bool CanOthersWrite(const struct stat& folder) noexcept {
    return !IsTrusted(folder.st_uid) || (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// A name in an open folder. The folder is kept open so that the link that is checked is the link
// that is followed.
class Place {
public:
    explicit Place(const char* path) noexcept {
        std::string_view(path).copy(path_, sizeof path_ - 1);
        folder_ = OpenFolderOf(AT_FDCWD, path_);
    }

    int Open(int flags, mode_t mode) const noexcept {
        return ::openat(folder_.Number(), NameIn(path_), flags, mode);
    }

    // Returns false with errno on failure.
    bool TakeTrustedLink() noexcept {
        if (folder_) link_ = Descriptor(Open(O_PATH | O_NOFOLLOW | O_CLOEXEC, 0));
        if (!link_) return false;
        struct stat link = {};
        struct stat folder = {};
        if (::fstat(link_.Number(), &link) < 0) return false;
        if (::fstat(folder_.Number(), &folder) < 0) return false;
        errno = EACCES;
        return IsTrusted(link.st_uid) || !CanOthersWrite(folder);
    }

    // Links in /proc, such as /proc/self/fd/1, are the kernel's own: it opens the file itself that
    // they stand for, and readlink need not return a path to it.
    bool IsLinkOfKernel() const noexcept {
        struct statfs system = {};
        return ::fstatfs(folder_.Number(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
    }

    // False with errno.
    bool GoWhereLinkLeads() noexcept {
        const ssize_t length = ::readlinkat(link_.Number(), "", path_, sizeof path_ - 1);
        if (length < 0) return false;
        path_[length] = '\0';
        folder_ = OpenFolderOf(folder_.Number(), path_);
        return static_cast<bool>(folder_);
    }

private:
    char path_[PATH_MAX] = {};
    Descriptor folder_;
    Descriptor link_;
};

int OpenBehindLinks(const char* path, int flags, mode_t mode) noexcept {
    Place place(path);
    for (int links = 0; links < MostLinks; ++links) {
        if (!place.TakeTrustedLink()) return -1;
        if (place.IsLinkOfKernel()) return place.Open(flags, mode);
        if (!place.GoWhereLinkLeads()) return -1;
        const int opened = place.Open(flags | O_NOFOLLOW, mode);
        if (opened >= 0 || errno != ELOOP) return opened;
    }
    return -1;  // with ELOOP, as after the last link
}

}  // namespace

int OpenThroughTrustedLinks(const char* path, int flags, mode_t mode) noexcept {
    const int opened = ::open(path, flags | O_NOFOLLOW, mode);
    const bool isLink = opened < 0 && errno == ELOOP;
    return isLink ? OpenBehindLinks(path, flags, mode) : opened;
}

}  // namespace Posix
