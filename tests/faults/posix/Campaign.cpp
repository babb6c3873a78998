#include "faults/posix/Campaign.h"

#include <fcntl.h>
#include <loopback/Machine.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <system_error>

#include "faults/posix/Cases.h"
#include "faults/posix/ErrorNumbers.h"
#include "faults/posix/Player.h"

namespace Faults {

namespace {

constexpr int PatienceInSeconds = 60;
constexpr std::size_t FailureRoom = 1000;

// What a child tells its parent.
struct Report {
    Counts counts;
    std::size_t at;           // the case that is being played
    unsigned int endings[4];  // as Ending has them
    unsigned long long signals;
    char failure[FailureRoom];
};

class SharedReport {
public:
    SharedReport()
        : report_(static_cast<Report*>(::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                                              MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (report_ == MAP_FAILED) throw std::bad_alloc();
    }
    ~SharedReport() { ::munmap(report_, sizeof(Report)); }
    SharedReport(const SharedReport&) = delete;
    SharedReport& operator=(const SharedReport&) = delete;

    Report* operator->() const noexcept { return report_; }
    Report& operator*() const noexcept { return *report_; }

private:
    Report* report_;
};

// A scene hangs only if the library does: its process then ends by the clock's signal.
void StartClock() {
    const itimerval time = {.it_interval = {}, .it_value = {PatienceInSeconds, 0}};
    ::setitimer(ITIMER_REAL, &time, nullptr);
}

void SilenceStandardError() {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
}

// How a process ended that ran the function; empty if it came to its end.
template <class Function>
std::string EndOfChild(const Function& function) {
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) {
        SilenceStandardError();
        StartClock();
        function();
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? "" : "left early";
    return std::string("ended by a signal: ") + ::strsignal(WTERMSIG(status));
}

void Note(Report& report, const std::string& failure) {
    const std::size_t length = failure.copy(report.failure, FailureRoom - 1);
    report.failure[length] = 0;
}

void CountCalls(const Injector& injector, unsigned int* counts) {
    for (std::size_t kind = 0; kind < CallKinds; ++kind)
        counts[kind] = injector.CallsOf(static_cast<SystemCalls::SystemCall>(kind));
}

void Survey(const Scene& scene, bool withRecords, Report& report) try {
    Player player(scene, withRecords, Planted::Nothing);
    const Outcome first = player.Play({});
    CountCalls(player.Faulty(), report.counts.coldCalls);
    player.WarmUp();
    static_cast<void>(player.Play({}));
    CountCalls(player.Faulty(), report.counts.calls);
    report.counts.allCalls = player.Faulty().AllCalls();
    report.counts.points = player.Faulty().Points();
    report.counts.descriptorsEnd = player.Faulty().DescriptorsEnd();
    for (const Allocator allocator : {Allocator::Module, Allocator::SystemLibrary})
        report.counts.allocations[static_cast<int>(allocator)] = AllocationsOf(allocator);
    if (player.Faulty().WasInheritable()) Note(report, "a descriptor is inheritable");
} catch (const std::exception& failure) {
    Note(report, failure.what());
}

// Returns whether the process may play another case.
bool PlayOne(Player& player, const Fault& fault, Report& report) {
    const unsigned long long before = Support::SignalStorm::Delivered();
    const Outcome outcome = player.PlayCase(fault);
    report.signals += Support::SignalStorm::Delivered() - before;
    if (outcome.ending == Ending::Wrong) return Note(report, outcome.text), false;
    ++report.endings[static_cast<int>(outcome.ending)];
    return true;
}

void PlayFrom(Player& player, const std::vector<Fault>& faults, Report& report) {
    for (; report.at < faults.size(); ++report.at) {
        const Fault& fault = faults[report.at];
        StartClock();
        if (!PlayOne(player, fault, report)) return;
        if (fault.cold) return static_cast<void>(++report.at);
    }
}

class Run {
public:
    Run(const Scene& scene, bool withRecords, const Effort& effort)
        : scene_(scene), withRecords_(withRecords), effort_(effort) {}

    Totals Play(Stage stage) {
        const std::string end = EndOfChild([this] { Survey(scene_, withRecords_, *report_); });
        if (!end.empty() || report_->failure[0] != 0) return Fail(end + report_->failure), totals_;
        faults_ = FaultsOf(stage, report_->counts, effort_.all);
        totals_.cases = static_cast<unsigned int>(faults_.size());
        while (report_->at < faults_.size())
            PlayInChild();
        AddEndings();
        return totals_;
    }

private:
    void PlayInChild() {
        const std::size_t first = report_->at;
        const std::string end = EndOfChild([this] {
            Player player(scene_, withRecords_, effort_.planted);
            faults_[report_->at].cold ? player.BeginCold() : player.WarmUp();
            PlayFrom(player, faults_, *report_);
        });
        const std::string failure = end + report_->failure;
        report_->failure[0] = 0;
        if (failure.empty()) return;
        Fail(TextOf(faults_[report_->at]) + ": " + failure);
        report_->at = std::max(report_->at, first) + 1;
    }

    void Fail(const std::string& failure) {
        totals_.failures.push_back(std::string(scene_.name) +
                                   (withRecords_ ? ", with records: " : ": ") + failure);
    }

    void AddEndings() {
        totals_.completed = report_->endings[static_cast<int>(Ending::Completed)];
        totals_.exceptions = report_->endings[static_cast<int>(Ending::Exception)];
        totals_.outOfMemory = report_->endings[static_cast<int>(Ending::OutOfMemory)];
        totals_.cancelled = report_->endings[static_cast<int>(Ending::Cancelled)];
        totals_.signals = report_->signals;
    }

    const Scene& scene_;
    const bool withRecords_;
    const Effort& effort_;
    SharedReport report_;
    std::vector<Fault> faults_;
    Totals totals_;
};

constexpr const char* Interface =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\{1}";

void WriteSettings(Machine::Settings& settings) {
    settings.Write("SOFTWARE\\Corvane\\Orrin Server", "IPVersion", "6");
    settings.Write(Interface, "Domain", "example.org");
    settings.Write(Interface, "NameServer", "10.0.0.1 10.0.0.2");
}

void WriteIfMissing(const char* path, const std::string& text) {
    if (!std::ifstream(path)) std::ofstream(path) << text;
}

// The settings' place may have covered the whole folder. The host's own name is unknown. Names come
// from the hosts file, and then from a name server that refuses at once.
void WriteSystemTables() {
    WriteIfMissing("/etc/hosts", "127.0.0.1 localhost\n::1 localhost\n");
    WriteIfMissing("/etc/nsswitch.conf", "hosts: files dns\nservices: files\n");
    WriteIfMissing("/etc/resolv.conf", "nameserver 127.0.0.1\nsearch example.org\n");
    WriteIfMissing("/etc/services", "domain 53/tcp\ndomain 53/udp\n");
}

// Ports of ended connections are not to become scarce.
void FreePortsEarly() {
    std::ofstream("/proc/sys/net/ipv4/tcp_max_tw_buckets") << "64";
    std::ofstream("/proc/sys/net/ipv4/ip_local_port_range") << "1100 65000";
}

}  // namespace

void Totals::Add(const Totals& more) {
    cases += more.cases;
    completed += more.completed;
    exceptions += more.exceptions;
    outOfMemory += more.outOfMemory;
    cancelled += more.cancelled;
    signals += more.signals;
    failures.insert(failures.end(), more.failures.begin(), more.failures.end());
}

Totals PlayWithFaults(const Scene& scene, Stage stage, const Effort& effort) {
    Totals totals;
    for (const bool withRecords : {false, true}) {
        if (effort.all || withRecords) totals.Add(Run(scene, withRecords, effort).Play(stage));
    }
    return totals;
}

Totals PlayWithFaults(std::span<const Scene> scenes, Stage stage, const Effort& effort) {
    Totals totals;
    for (const Scene& scene : scenes)
        totals.Add(PlayWithFaults(scene, stage, effort));
    return totals;
}

std::vector<std::string> FunctionsOf(const Scene& scene) {
    const SharedReport report;
    EndOfChild([&] { Survey(scene, true, *report); });
    std::vector<std::string> symbols;
    for (const FailingFunction& function : FailingFunctions()) {
        const auto kind = static_cast<std::size_t>(function.which);
        if (report->counts.coldCalls[kind] + report->counts.calls[kind] > 0)
            symbols.emplace_back(function.symbol);
    }
    return symbols;
}

// They end with the process.
bool PrepareSurroundings() {
    static const Machine::OwnNetwork network;
    static Machine::Settings settings;
    if (!network.IsUp() || !settings.AreWritable()) return false;
    if (!AllowCrowds()) return false;
    FreePortsEarly();
    WriteSettings(settings);
    WriteSystemTables();
    return true;
}

std::string LineOf(const Totals& totals, const char* what) {
    std::string text = std::to_string(totals.cases) + " cases of " + what + ": " +
                       std::to_string(totals.completed) + " completed, " +
                       std::to_string(totals.exceptions) + " threw an exception, " +
                       std::to_string(totals.outOfMemory) + " had no memory, ";
    if (totals.cancelled > 0) text += std::to_string(totals.cancelled) + " were cancelled, ";
    if (totals.signals > 0) text += "got " + std::to_string(totals.signals) + " signals, ";
    return text + std::to_string(totals.failures.size()) + " failed";
}

}  // namespace Faults
