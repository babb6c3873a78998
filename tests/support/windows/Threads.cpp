#include <windows.h>
// Behind it.
#include "support/Threads.h"

#include <stdexcept>
#include <utility>

namespace Support {

namespace {

class ThreadHandle {
public:
    explicit ThreadHandle(DWORD thread)
        : handle_(::OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, thread)) {
        if (handle_ == nullptr) throw std::runtime_error("the thread cannot be opened");
    }
    ~ThreadHandle() { ::CloseHandle(handle_); }
    ThreadHandle(const ThreadHandle&) = delete;
    ThreadHandle& operator=(const ThreadHandle&) = delete;

    // Where the thread stands in its code. Nothing may be allocated while it is held.
    DWORD64 Position() const {
        alignas(16) CONTEXT context = {};
        context.ContextFlags = CONTEXT_CONTROL;
        const bool held = ::SuspendThread(handle_) != static_cast<DWORD>(-1);
        const bool known = held && ::GetThreadContext(handle_, &context) != 0;
        if (held) ::ResumeThread(handle_);
        if (!known) throw std::runtime_error("the thread cannot be looked at");
        return context.Rip;
    }

private:
    HANDLE handle_;
};

// Every call of the system goes through this library.
bool IsInSystem(DWORD64 position) {
    constexpr DWORD byAddress =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    ::GetModuleHandleExW(byAddress, reinterpret_cast<const wchar_t*>(position), &module);
    return module == ::GetModuleHandleW(L"ntdll.dll");
}

}  // namespace

unsigned long CurrentThread() {
    return ::GetCurrentThreadId();
}

// The system does not tell what a thread does, but one that waits stands still in it.
void AwaitWaiting(unsigned long thread) {
    const ThreadHandle handle(thread);
    DWORD64 position = 0;
    const ULONGLONG end = ::GetTickCount64() + 60'000;
    for (int rests = 0; rests < 20;) {
        if (::GetTickCount64() > end) throw std::runtime_error("no thread waits");
        ::Sleep(5);
        const DWORD64 former = std::exchange(position, handle.Position());
        rests = position == former && IsInSystem(position) ? rests + 1 : 0;
    }
}

}  // namespace Support
