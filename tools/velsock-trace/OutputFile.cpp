#include "OutputFile.h"

#include <cerrno>
#include <system_error>

#include "Failure.h"

namespace VelSockTrace {

OutputFile::OutputFile(const std::string& path)
    : path_(path), stream_(path, std::ios::binary | std::ios::trunc) {
    Check();
}

void OutputFile::Write(std::string_view bytes) {
    stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    Check();
}

void OutputFile::Close() {
    stream_.close();
    Check();
}

void OutputFile::Check() const {
    if (stream_) return;
    const int error = errno;
    throw VelSockTools::Failure(
        VelSockTools::ExitCode::LocalFailure,
        "cannot write " + path_ + ": " + std::generic_category().message(error));
}

}  // namespace VelSockTrace
