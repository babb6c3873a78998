#include <examples/Program.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace Examples {

namespace {

constexpr int PatienceInMilliseconds = 60'000;

// What a process finds in place of the standard streams.
class Streams {
public:
    explicit Streams(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, 1);
        posix_spawn_file_actions_adddup2(&actions_, output, 2);
    }
    ~Streams() { posix_spawn_file_actions_destroy(&actions_); }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    const posix_spawn_file_actions_t* Get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

std::array<int, 2> Pipe() {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
}

pid_t Start(const std::string& path, std::vector<std::string> words, int output) {
    words.insert(words.begin(), path);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t process = 0;
    const Streams streams(output);
    const int error =
        posix_spawn(&process, path.c_str(), streams.Get(), nullptr, arguments.data(), environ);
    if (error != 0) throw std::runtime_error("cannot start " + path);
    return process;
}

}  // namespace

Program::Program(const std::string& name, const std::vector<std::string>& words)
    : process_(0), output_(-1) {
    const auto [reading, writing] = Pipe();
    output_ = reading;
    process_ = Start(VELSOCK_EXAMPLE_FOLDER "/example-" + name, words, writing);
    close(writing);
}

Program::~Program() {
    if (process_ != 0) {
        kill(static_cast<pid_t>(process_), SIGKILL);
        waitpid(static_cast<pid_t>(process_), nullptr, 0);
    }
    close(static_cast<int>(output_));
}

bool Program::ReadMore() {
    pollfd output = {static_cast<int>(output_), POLLIN, 0};
    if (poll(&output, 1, PatienceInMilliseconds) != 1)
        throw std::runtime_error("nothing comes after: " + unread_);
    char block[4096];
    const ssize_t length = read(output.fd, block, sizeof block);
    if (length > 0) unread_.append(block, static_cast<std::size_t>(length));
    return length > 0;
}

int Program::Wait() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    int status = 0;
    while (waitpid(static_cast<pid_t>(process_), &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end) throw std::runtime_error("it does not end");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace Examples
