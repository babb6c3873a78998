// Files that a test writes for itself.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>

namespace Support {

// A new folder among the system's temporary files, for its user alone. It ends, with all that is in
// it, with its scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device random;
        do {
            const std::string name = "velsock-" + std::to_string(random());
            path_ = std::filesystem::temp_directory_path() / name;
        } while (!std::filesystem::create_directory(path_));
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

// Byte by byte; nothing of a file that is not there.
inline std::string ContentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace Support
