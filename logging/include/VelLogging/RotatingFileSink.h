// A sink that appends to a file, keeps it below a size, and follows it when it is moved.
#pragma once

#include <VelLogging/Format.h>
#include <VelLogging/Sink.h>

#include <mutex>
#include <string>

namespace VelLogging {

// Which file, and how it is written.
struct FileOptions {
    // UTF-8.
    std::string path;
    // The form of its lines.
    Format format = Format::Plain;
    // A line that would make the file longer goes to a new one; 0 for no limit. A line that is
    // longer by itself has a file of its own.
    unsigned long long maximumSize = 0;
    // How many full files stay, as PATH.1 (the newest), PATH.2 and so on; with 0 none does.
    unsigned int kept = 5;
};

// Appends each record as one line with one call, in the thread that logs it, which therefore waits
// as long as the file system does: put a QueuedSink before it where that matters.
//
// A new file is created with access for its owner only. Only a regular file or a device is opened,
// and no symbolic link. One process alone may rotate a file. A file that has been moved away or
// removed is noticed by the next record a second later or more, which goes to a new file.
//
// A record that cannot be written is lost. If the disk takes a part of it, the next one
// nevertheless begins a new line. A file that cannot be opened again is tried with each record.
class RotatingFileSink final : public Sink {
public:
    // Throws: std::runtime_error   the file cannot be opened; the text has the path and the reason
    //         std::bad_alloc
    explicit RotatingFileSink(FileOptions options);
    ~RotatingFileSink() override;

    void Write(const VelLog::LogRecord& record) override;
    void Reopen() noexcept override;

private:
    void Append(const std::string& line) noexcept;
    void Rotate();
    void Open() noexcept;
    void Close() noexcept;
    void FollowMove(long long now) noexcept;
    std::string KeptPath(unsigned int number) const;

    const FileOptions options_;
    std::mutex mutex_;  // of Write against Reopen
    long long file_;    // as the system numbers it
    unsigned long long size_ = 0;
    long long lastLook_ = 0;  // when the path was last compared with the file, in microseconds
    bool isCut_ = false;      // whether the file ends within a line
};

}  // namespace VelLogging
