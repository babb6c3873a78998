// Loading and unloading the module changes nothing in the process, used or not.

#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

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

// How many of the process's mappings are of files whose paths hold this.
int Mappings(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        if (line.find(name) != std::string::npos) ++count;
    }
    return count;
}

// How many places for what threads keep of their own the process can still take.
int FreeThreadKeys() {
    std::vector<pthread_key_t> taken;
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;)
        taken.push_back(key);
    for (const pthread_key_t key : taken)
        pthread_key_delete(key);
    return static_cast<int>(taken.size());
}

struct Belongings {
    int handles = EntriesOf("/proc/self/fd");
    int threads = EntriesOf("/proc/self/task");
    int mappings = Mappings("/");
    int freeThreadKeys = FreeThreadKeys();
};

void ExpectNothingLeft(const Belongings& before) {
    const Belongings after;
    EXPECT_EQ(Mappings("libvelsock"), 0);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.mappings, before.mappings);
    EXPECT_EQ(after.freeThreadKeys, before.freeThreadKeys);
}

void LoadAndUnload() {
    void* const module = dlopen(VELSOCK_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    ASSERT_NE(Mappings("libvelsock"), 0) << "the module under test is not the one loaded";
    ASSERT_EQ(dlclose(module), 0);
}

void LoadUseAndUnload() {
    void* const client = dlopen(VELSOCK_CLIENT, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(client, nullptr) << dlerror();
    const auto useModule = reinterpret_cast<bool (*)()>(dlsym(client, "UseModule"));
    ASSERT_NE(useModule, nullptr) << dlerror();
    ASSERT_TRUE(useModule());
    ASSERT_EQ(dlclose(client), 0);
}

}  // namespace

TEST(Loading, AThousandTimesLeavesNothing) {
    const Belongings before;
    for (int time = 0; time < 1000 && !HasFatalFailure(); ++time)
        LoadAndUnload();
    ExpectNothingLeft(before);
}

// The first use makes the system's libraries set up what they keep.
TEST(Loading, WithUseInBetweenLeavesNothing) {
    LoadUseAndUnload();
    const Belongings before;
    for (int time = 0; time < 100 && !HasFatalFailure(); ++time)
        LoadUseAndUnload();
    ExpectNothingLeft(before);
}
