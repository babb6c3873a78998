#include "settings/TreePlace.h"

#include "settings/SettingsFiles.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace Posix {

namespace {

constexpr int MostAttempts = 100;

// The C library has no wrapper for openat2.
int OpenBeneath(int root, const char* path, int flags) noexcept {
    open_how how = {};
    how.flags = static_cast<unsigned int>(flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(::syscall(SYS_openat2, root, path, &how, sizeof how));
}

// While something is renamed, the kernel cannot tell whether a path stays below the root
// (RESOLVE_BENEATH), and fails with EAGAIN.
int OpenBeneathPatiently(int root, const char* path, int flags) noexcept {
    int opened = -1;
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        opened = OpenBeneath(root, path, flags);
        if (opened >= 0 || (errno != EAGAIN && errno != EINTR)) break;
    }
    return opened;
}

// Kernels before 5.6 do not have openat2, and the seccomp filters of some containers forbid it.
// There, links are followed wherever they lead.
bool IsCallMissing() noexcept {
    return errno == ENOSYS || errno == EPERM;
}

}  // namespace

Descriptor TreePlace::Open(int flags) const noexcept {
    const int opened = OpenBeneathPatiently(root_->Number(), path_.c_str(), flags);
    if (opened >= 0 || !IsCallMissing()) return Descriptor(opened);
    return Descriptor(::openat(root_->Number(), path_.c_str(), flags));
}

bool TreePlace::IsFolder() const noexcept {
    return static_cast<bool>(Open(O_PATH | O_DIRECTORY | O_CLOEXEC));
}

Descriptor TreePlace::OpenFolder() const noexcept {
    return Open(O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

Listing TreePlace::OpenListing() const noexcept {
    Descriptor folder = OpenFolder();
    Listing listing(folder ? ::fdopendir(folder.Number()) : nullptr);
    if (listing) folder.Take();
    return listing;
}

Descriptor TreePlace::OpenFile() const noexcept {
    return RegularFile(Open(FileFlags));
}

}  // namespace Posix
