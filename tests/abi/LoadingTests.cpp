// Loading and unloading the module changes nothing in the process.

#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

int EntriesOf(const char* path) {
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(path));
    int entries = 0;
    while (readdir(folder.get()) != nullptr)
        ++entries;
    return entries;
}

bool IsMapped(const std::string& module) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(module) != std::string::npos) return true;
    }
    return false;
}

}  // namespace

TEST(Loading, AThousandTimesLeavesNoHandleNoThreadAndNoMapping) {
    const int handles = EntriesOf("/proc/self/fd");
    const int threads = EntriesOf("/proc/self/task");
    for (int time = 0; time < 1000; ++time) {
        void* const module = dlopen(VELSOCK_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        ASSERT_TRUE(IsMapped("libvelsock")) << "the module under test is not the one loaded";
        ASSERT_EQ(dlclose(module), 0);
    }
    EXPECT_FALSE(IsMapped("libvelsock"));
    EXPECT_EQ(EntriesOf("/proc/self/fd"), handles);
    EXPECT_EQ(EntriesOf("/proc/self/task"), threads);
}
