// A sink that keeps the latest records in memory.
#pragma once

#include <VelLogging/Format.h>
#include <VelLogging/Sink.h>

#include <cstddef>
#include <memory>
#include <string>

namespace VelLogging {

// Keeps the latest lines in a block of memory that is allocated once. They may be read at any time,
// also while another thread writes, and by a signal handler when the process is about to end.
class RingSink final : public Sink {
public:
    // Of at least 2 bytes. Throws std::bad_alloc.
    explicit RingSink(std::size_t bytes = std::size_t{64} * 1024, Format format = Format::Text);

    // A line that is longer than the ring leaves its end.
    void Write(const VelLog::LogRecord& record) override;

    // The lines that are there, the oldest first, without what is left of one that is overwritten
    // in part. Throws std::bad_alloc.
    std::string Lines() const;

    // The same to a descriptor (a file of the C library on Windows). May be called by a signal
    // handler: takes no lock, allocates nothing, and changes no error number. If other threads go
    // on writing meanwhile, what they overwrite is left out, if need be the end of a line. Returns
    // whether all was written.
    bool Dump(int descriptor) const noexcept;

private:
    unsigned long long OldestOf(unsigned long long bytes) const noexcept;
    char ByteAt(unsigned long long position) const noexcept;

    using Byte = std::atomic<char>;

    const Format format_;
    const std::size_t size_;
    const std::unique_ptr<Byte[]> bytes_;
    // How many bytes have ever been begun to be written, and how many have been written.
    std::atomic<unsigned long long> begun_ = 0;
    std::atomic<unsigned long long> written_ = 0;
};

}  // namespace VelLogging
