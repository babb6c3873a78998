#include "faults/posix/Player.h"

#include <VelBase/Message.h>
#include <VelCompanion/ErrorCatalogue.h>
#include <VelLog/LogControl.h>
#include <VelNet/SocketInitialization.h>
#include <cxxabi.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <list>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

namespace Faults {

namespace {

void SwitchRecords(bool on) {
    for (const char* const category :
         {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE, VelLog::CATEGORY_PACKET_TRACE,
          VelLog::CATEGORY_VERBOSE_PACKET_TRACE})
        VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, on);
}

bool IsInTable(VelNet::SOCKET_ERR code) {
    const auto& rows = VelCompanion::ErrorCatalogue;
    return std::any_of(rows.begin(), rows.end(), [=](const auto& row) { return row.code == code; });
}

Outcome OutcomeOf(const VelNet::Exception& failure) {
    if (!IsInTable(failure.GetErrorCode()))
        return {Ending::Wrong, "the code " + std::to_string(failure.GetErrorCode())};
    if (failure.GetMessage()[0] == 0) return {Ending::Wrong, "an exception without a text"};
    return {Ending::Exception, "the code " + std::to_string(failure.GetErrorCode())};
}

// Gives the memory back, too.
void Free(std::string& text) {
    std::string().swap(text);
}

std::string NameOfCurrentException() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    return type == nullptr ? "something foreign" : type->name();
}

}  // namespace

void Player::CountingSink::Write(const VelLog::LogRecord&) {
    ++count;
}

Player::Player(const Scene& scene, bool withRecords, Planted planted)
    : scene_(scene), withRecords_(withRecords), planted_(planted) {}

Outcome Player::PlayInSurroundings() try {
    return {Ending::Completed, scene_.play()};
} catch (const VelNet::Exception& failure) {
    return OutcomeOf(failure);
} catch (const VelBase::Message&) {
    return {Ending::Exception, {}};
} catch (const std::bad_alloc&) {
    return {Ending::OutOfMemory, {}};
} catch (const std::exception& failure) {
    return {Ending::Wrong, failure.what()};
} catch (const abi::__forced_unwind&) {
    throw;  // the thread is cancelled
} catch (...) {
    return {Ending::Wrong, "an exception of the type " + NameOfCurrentException()};
}

namespace {

// What the process does that was forked while the scene was played, once the scene has been left:
// the function, whose result is the process's.
template <class Function>
class InForkedProcess {
public:
    explicit InForkedProcess(const Function& function) : function_(function) {}
    ~InForkedProcess() {
        if (::getpid() != parent_) ::_exit(function_());
    }
    InForkedProcess(const InForkedProcess&) = delete;
    InForkedProcess& operator=(const InForkedProcess&) = delete;

private:
    const Function& function_;
    const pid_t parent_ = ::getpid();
};

bool IsInThread(Fault::Kind kind) noexcept {
    return kind == Fault::Kind::Cancellation || kind == Fault::Kind::Fork;
}

}  // namespace

struct ThreadedPlay {
    Player& player;
    Outcome outcome;
};

void* Player::RunThread(void* it) {
    auto& play = *static_cast<ThreadedPlay*>(it);
    const auto live = [&] { return play.player.LiveInFork(); };
    const InForkedProcess forked(live);
    play.player.injector_.FollowThisThread();
    play.outcome = play.player.PlayInSurroundings();
    ::pthread_testcancel();
    return nullptr;
}

Outcome Player::PlayInThread() {
    ThreadedPlay play = {*this, {Ending::Cancelled, {}}};
    pthread_t thread = {};
    if (const int error = ::pthread_create(&thread, nullptr, RunThread, &play); error != 0)
        throw std::system_error(error, std::generic_category(), "pthread_create");
    ::pthread_join(thread, nullptr);
    return std::move(play.outcome);
}

// In the forked process, whose scene has been left and has ended what it had. Returns what goes
// wrong, as EndOfFork reads it.
int Player::LiveInFork() {
    injector_.End();
    Plant();
    if (!before_.DifferenceTo(Ledger::Now(), false).empty()) return LeftOverInFork;
    const Outcome outcome = PlayInSurroundings();
    if (outcome.ending != Ending::Completed) return FailsInFork;
    return outcome.text == usual_ ? 0 : OtherTextInFork;
}

std::string Player::EndOfFork() const {
    const int end = injector_.EndOfFork();
    if (end == 0) return {};
    if (!WIFEXITED(end))
        return "the forked process ended by signal " + std::to_string(WTERMSIG(end));
    switch (WEXITSTATUS(end)) {
        case LeftOverInFork:
            return "the forked process has something left over";
        case FailsInFork:
            return "in the forked process the scene fails";
        default:
            return "in the forked process the scene returns other text";
    }
}

Outcome Player::Play(const Fault& fault) {
    const Imposed imposed(fault.conditions);
    if (withRecords_) SwitchRecords(true);
    VelLog::SetSink(withRecords_ ? &sink_ : nullptr);
    injector_.Begin(fault);
    Outcome outcome = IsInThread(fault.kind) ? PlayInThread() : PlayInSurroundings();
    injector_.End();
    if (injector_.HasStruck() && fault.kind != Fault::Kind::Fork) Plant();
    VelLog::LogSink* const sink = VelLog::SetSink(nullptr);
    isSinkForeign_ = sink != (withRecords_ ? &sink_ : nullptr);
    SwitchRecords(false);
    isStreamTaken_ = imposed.IsStreamTaken();
    if (planted_ == Planted::Exception && injector_.HasStruck())
        return {Ending::Wrong, "a planted exception"};
    return outcome;
}

void Player::BeginCold() {
    before_ = Ledger::Now();
}

void Player::WarmUp() {
    for (int run = 0; run < 3; ++run) {
        before_ = Ledger::Now();
        Outcome outcome = Play({});
        if (outcome.ending != Ending::Completed)
            throw std::runtime_error(std::string(scene_.name) +
                                     " without a fault: " + outcome.text);
        usual_.swap(outcome.text);
        Free(outcome.text);
        usualGrowth_ = Ledger::Now().Heap() - before_.Heap();
    }
    before_ = Ledger::Now();
}

// Nothing, or some of the lists that are kept. The heap may give a little more than was asked for.
bool Player::IsHeapRight(const HeapUse& growth) const noexcept {
    if (growth == HeapUse{}) return true;
    constexpr long long Surplus = 16;
    const auto lists = static_cast<long long>(scene_.keptLists);
    for (long long kept = 1; kept <= lists; ++kept) {
        const long long bytes = growth.bytes - usualGrowth_.bytes * kept / lists;
        const bool fits = growth.blocks * lists == usualGrowth_.blocks * kept &&
                          std::abs(bytes) <= Surplus * growth.blocks;
        if (fits) return true;
    }
    return false;
}

// What the C library allocates for good when something happens for the first time is no leak: the
// same once more is.
std::string Player::Judge(const Fault& fault, bool isRetry) {
    const Ledger after = Ledger::Now();
    std::string difference = before_.DifferenceTo(after, fault.cold);
    const HeapUse growth = after.Heap() - before_.Heap();
    before_ = after;
    if (isSinkForeign_) difference += " sink";
    if (injector_.WasInheritable()) difference += " inheritable descriptor";
    if (!difference.empty()) return "left over:" + difference;
    if (fault.cold || IsHeapRight(growth)) return {};
    if (isRetry)
        return "left over: " + std::to_string(growth.blocks) + " blocks, " +
               std::to_string(growth.bytes) + " bytes";
    static_cast<void>(Play(fault));
    return Judge(fault, true);
}

// What is not to fail gives its usual result: whatever does not take something away.
std::string Player::WrongOf(const Fault& fault, const Outcome& outcome) const {
    if (isStreamTaken_) return "the number of a standard stream is taken";
    if (injector_.WasWrittenIntoSocket()) return "something was written into a socket";
    if (std::string end = EndOfFork(); !end.empty()) return end;
    const bool lacksSomething = fault.conditions.descriptorsLeft != Conditions::NoLimit ||
                                (scene_.needsStandardError && fault.conditions.closedStreams != 0);
    const bool mayFail =
        fault.kind != Fault::Kind::Fork && (fault.kind != Fault::Kind::None || lacksSomething);
    if (mayFail || usual_.empty()) return {};
    if (outcome.ending != Ending::Completed) return "the scene fails: " + outcome.text;
    return outcome.text == usual_ ? "" : "other text: " + outcome.text;
}

Outcome Player::PlayCase(const Fault& fault) {
    Outcome outcome = Play(fault);
    if (outcome.ending == Ending::Wrong) return outcome;
    if (std::string wrong = WrongOf(fault, outcome); !wrong.empty()) return {Ending::Wrong, wrong};
    Free(outcome.text);
    if (std::string wrong = Judge(fault, false); !wrong.empty()) return {Ending::Wrong, wrong};
    Outcome clean = Play({});
    if (clean.ending != Ending::Completed)
        return {Ending::Wrong, "the next run fails: " + clean.text};
    if (!usual_.empty() && clean.text != usual_)
        return {Ending::Wrong, "the next run returns other text: " + clean.text};
    Free(clean.text);
    if (std::string wrong = Judge({.cold = fault.cold}, false); !wrong.empty())
        return {Ending::Wrong, "after the next run " + wrong};
    return outcome;
}

void Player::Plant() {
    static CountingSink foreign;
    static std::list<std::unique_ptr<char>> forgotten;
    switch (planted_) {
        case Planted::Descriptor:
            static_cast<void>(::open("/dev/null", O_RDONLY | O_CLOEXEC));
            return;
        case Planted::Memory:
            forgotten.push_back(std::make_unique<char>());
            return;
        case Planted::Key: {
            pthread_key_t key = 0;
            ::pthread_key_create(&key, nullptr);
            return;
        }
        case Planted::StartUp:
            static_cast<void>(new VelNet::SocketInitialization);
            return;
        case Planted::Thread:
            std::thread([] { ::pause(); }).detach();
            return;
        case Planted::Sink:
            VelLog::SetSink(&foreign);
            return;
        case Planted::Crash:
            std::abort();
        default:
            return;
    }
}

}  // namespace Faults
