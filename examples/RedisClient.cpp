// Sends one command to a Redis server and prints the answer: a protocol of lines and lengths.
//
//   RedisClient HOST PORT WORD...      SET colour green, GET colour, KEYS *, for instance
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

// What the server says decides how much is read, so there are limits.
constexpr std::size_t LongestLine = 1024;
constexpr long long LongestText = 512LL * 1024 * 1024;
constexpr int DeepestNesting = 8;

// A line with a number: how many words follow, or how long the next one is.
std::string Count(char kind, std::size_t count) {
    return std::string(1, kind).append(std::to_string(count)).append("\r\n");
}

// A command is a list of words, each with its length.
std::string Command(int count, char** words) {
    std::string command = Count('*', static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const std::string word = words[index];
        command.append(Count('$', word.size())).append(word).append("\r\n");
    }
    return command;
}

// Reads the answer: lines, and texts of a known length.
class Reader {
public:
    explicit Reader(VelNet::SocketXt& socket) : socket_(socket) {}

    std::string Line() {
        auto line = VelCompanion::ReceiveLine(socket_, come_, LongestLine, Patience);
        if (!line) throw std::runtime_error("there is none");
        return *line;
    }

    // What a line has brought along comes first; an end of a line follows the text.
    std::string Text(std::size_t length) {
        if (come_.size() < length + 2)
            come_ += VelCompanion::ReceiveExactly(socket_, length + 2 - come_.size(), Patience);
        std::string text = come_.substr(0, length);
        come_.erase(0, length + 2);
        return text;
    }

private:
    static constexpr std::chrono::seconds Patience{10};

    VelNet::SocketXt& socket_;
    std::string come_;
};

void PrintText(Reader& reader, long long length) {
    if (length > LongestText) throw std::runtime_error("a text is too long");
    if (length < 0)
        std::puts("(nil)");
    else
        std::puts(reader.Text(static_cast<std::size_t>(length)).c_str());
}

// The first character of a line says what it is.
void PrintAnswer(Reader& reader, int nesting = 0) {
    if (nesting > DeepestNesting) throw std::runtime_error("lists are nested too deeply");
    const std::string line = reader.Line();
    if (line.empty()) throw std::runtime_error("an empty line");
    const std::string rest = line.substr(1);
    if (line[0] == '$') {
        PrintText(reader, std::stoll(rest));
    } else if (line[0] == '*') {
        for (long long left = std::stoll(rest); left > 0; --left)
            PrintAnswer(reader, nesting + 1);
    } else {
        std::puts((line[0] == '-' ? line : rest).c_str());  // a failure, a status or a number
    }
}

}  // namespace

int main(int count, char** words) try {
    if (count < 4) {
        std::fputs("usage: RedisClient HOST PORT WORD...\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(words[1], words[2]);
    VelCompanion::SendAll(*socket, Command(count - 3, words + 3));
    Reader reader(*socket);
    PrintAnswer(reader);
} catch (const std::exception& failure) {
    std::fprintf(stderr, "not an answer of a Redis server: %s\n", failure.what());
    return 1;
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
