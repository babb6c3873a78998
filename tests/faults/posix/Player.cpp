#include "faults/posix/Player.h"

#include <VelBase/Message.h>
#include <VelCompanion/ErrorCatalogue.h>
#include <VelLog/LogControl.h>
#include <VelNet/SocketInitialization.h>
#include <cxxabi.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <list>
#include <memory>
#include <new>
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
} catch (...) {
    return {Ending::Wrong, "an exception of the type " + NameOfCurrentException()};
}

Outcome Player::Play(const Fault& fault) {
    if (withRecords_) SwitchRecords(true);
    VelLog::SetSink(withRecords_ ? &sink_ : nullptr);
    injector_.Begin(fault);
    Outcome outcome = PlayInSurroundings();
    injector_.End();
    if (injector_.HasStruck()) Plant();
    VelLog::LogSink* const sink = VelLog::SetSink(nullptr);
    isSinkForeign_ = sink != (withRecords_ ? &sink_ : nullptr);
    SwitchRecords(false);
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

// Nothing, or some of the lists that are kept.
bool Player::IsHeapRight(const HeapUse& growth) const noexcept {
    if (growth == HeapUse{}) return true;
    const auto lists = static_cast<long long>(scene_.keptLists);
    for (long long kept = 1; kept <= lists; ++kept) {
        const bool fits = growth.blocks * lists == usualGrowth_.blocks * kept &&
                          growth.bytes * lists == usualGrowth_.bytes * kept;
        if (fits) return true;
    }
    return false;
}

// What the C library allocates for good when something happens for the first time is no leak: the
// same once more is.
std::string Player::Judge(const Fault& fault, bool isRetry) {
    const Ledger after = Ledger::Now();
    std::string difference = before_.DifferenceTo(after, !fault.cold);
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

Outcome Player::PlayCase(const Fault& fault) {
    Outcome outcome = Play(fault);
    if (outcome.ending == Ending::Wrong) return outcome;
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
