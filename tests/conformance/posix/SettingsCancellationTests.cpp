// Threads that are cancelled while they read settings.
#include <pthread.h>

#include <cerrno>
#include <filesystem>
#include <functional>

#include "FileCalls.h"
#include "ResolverScene.h"

namespace Conformance {
namespace {

// A thread that is cancelled right before one of its calls on files.
class CancelledReader {
public:
    // The error is that of openat2, or 0.
    CancelledReader(std::function<void()> scene, int call, int error)
        : scene_(std::move(scene)), callsLeft_(call), error_(error) {}

    void Run() {
        pthread_t thread = {};
        ASSERT_EQ(::pthread_create(&thread, nullptr, RunScene, this), 0);
        void* end = nullptr;
        ASSERT_EQ(::pthread_join(thread, &end), 0);
        wasCancelled_ = end == PTHREAD_CANCELED;
    }
    bool CameToItsEnd() const { return cameToItsEnd_; }
    bool WasCancelled() const { return wasCancelled_; }

private:
    static void* RunScene(void* argument) {
        static_cast<CancelledReader*>(argument)->RunWatched();
        ::pthread_testcancel();
        return nullptr;
    }

    // Not part of the function that the cancellation ends: the address sanitizer would go on
    // guarding that one's variables.
    [[gnu::noinline]] void RunWatched() {
        const WatchedFileCalls watched([this](FileCall& call) {
            if (callsLeft_-- == 0) ::pthread_cancel(::pthread_self());
            if (call.name == "openat2") call.error = error_;
        });
        scene_();
        cameToItsEnd_ = true;
    }

    const std::function<void()> scene_;
    int callsLeft_;
    const int error_;
    bool cameToItsEnd_ = false;
    bool wasCancelled_ = false;
};

long OpenDescriptors() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class SettingsCancellation : public ResolverKeys {
protected:
    // The scene, cancelled before each of its calls. All of it comes to its end, and then the
    // thread.
    static void ExpectWholeScene(const std::function<void()>& scene, int error = 0) {
        const long before = OpenDescriptors();
        bool cancelled = true;
        int call = 0;
        for (; cancelled && !HasFailure(); ++call) {
            CancelledReader reader(scene, call, error);
            reader.Run();
            EXPECT_TRUE(reader.CameToItsEnd()) << "call " << call;
            EXPECT_EQ(OpenDescriptors(), before) << "call " << call;
            cancelled = reader.WasCancelled();
        }
        EXPECT_GT(call, 1);
    }
};

TEST_F(SettingsCancellation, AThreadThatIsBeingCancelledReadsAKeyOfTheTree) {
    tree_.Write("HKLM/Software/Product/Version", "6");
    tree_.Write("HKLM/Software/Product/Below/Value", "text");
    const auto scene = [this] {
        const Key key = Open(u"SOFTWARE\\PRODUCT");
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(Read(key, u"VERSION"), u"[6]");
        EXPECT_FALSE(Has(key, u"Missing"));
        EXPECT_EQ(SubKeys(key), std::vector<std::u16string>{u"Below"});
        EXPECT_EQ(Read(OpenBelow(key, u"Below"), u"Value"), u"[text]");
        EXPECT_EQ(Open(u"Missing"), nullptr);
    };
    ExpectWholeScene(scene);
    // What stands in for the call that a kernel does not know is where a thread may end.
    ExpectWholeScene(scene, ENOSYS);
}

TEST_F(SettingsCancellation, AThreadThatIsBeingCancelledReadsTheResolversSettings) {
    files_.Write("domain near.example\nnameserver 127.0.0.53\n");
    files_.WriteLocalServers("search far.example\nnameserver 10.0.0.1\n");
    ExpectWholeScene([this] { EXPECT_EQ(Told(), u"[far.example] [10.0.0.1]"); });
}

}  // namespace
}  // namespace Conformance
