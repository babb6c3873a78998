// Gives a fuzz target the inputs in files, without a fuzzer.
// usage: fuzz_TARGET FILE_OR_FOLDER...
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <span>
#include <vector>

#include "Fuzzing.h"
#include "support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesAt(const fs::path& place) {
    if (!fs::is_directory(place)) return {place};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(place))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void Replay(const fs::path& file) {
    std::fprintf(stderr, "%s\n", file.c_str());
    const std::string input = Support::ContentsOf(file);
    const std::vector<unsigned char> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

std::size_t ReplayAll(const fs::path& place) {
    const std::vector<fs::path> files = FilesAt(place);
    for (const fs::path& file : files)
        Replay(file);
    return files.size();
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (const char* const place : std::span(arguments, static_cast<std::size_t>(count)).subspan(1))
        replayed += ReplayAll(place);
    std::printf("%zu cases of replayed inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
