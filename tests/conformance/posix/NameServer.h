// A name server, which the test is itself, in a network where nobody else is.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Conformance {

// Where the resolver asks. By itself it is a server that is silent.
class NameServerPort {
public:
    NameServerPort();
    ~NameServerPort();
    NameServerPort(const NameServerPort&) = delete;
    NameServerPort& operator=(const NameServerPort&) = delete;

    int Descriptor() const { return descriptor_; }
    const sockaddr* Address() const;
    // Takes the questions that have come, and tells how many there are.
    int TakeQuestions() const;

private:
    int descriptor_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address_ = {};
};

// Answers each question after a pause. Below "example." it knows the names "four", "six" and
// "both", by the families of their addresses, and "none", which has no address; "failing" it
// answers with a failure, and "refused" not at all. It answers plain questions only: for addresses
// or names of the Internet, in which it is to ask others itself.
class NameServer {
public:
    explicit NameServer(std::chrono::milliseconds pause = {});
    ~NameServer();
    NameServer(const NameServer&) = delete;
    NameServer& operator=(const NameServer&) = delete;

    // The names that were asked for, in order, with a dot after each label.
    std::vector<std::string> Asked() const;

private:
    void Serve();
    ssize_t ServeOne();
    std::string TakeDown(const std::string& query);

    NameServerPort port_;
    std::chrono::milliseconds pause_;
    mutable std::mutex lock_;
    std::vector<std::string> asked_;
    std::thread thread_;
};

inline constexpr const char* PatientSettings =
    "nameserver 127.0.0.1\noptions timeout:30 attempts:1\n";
inline constexpr const char* HastySettings = "nameserver 127.0.0.1\noptions timeout:1 attempts:1\n";

// Plays the scene, a test's whole content, on a computer whose resolver has these settings.
void WithResolverSettings(const std::string& settings, const std::string& hosts,
                          const std::string& hostName, const std::function<void()>& scene);

// On one that asks such a server.
void WithNameServer(const std::function<void()>& scene, int pause = 0,
                    const std::string& hostName = "lonely.example", const std::string& hosts = "");

}  // namespace Conformance
