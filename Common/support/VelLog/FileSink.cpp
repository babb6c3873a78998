#include "VelLog/FileSink.h"

#include "CurrentSink.h"
#include "LogLine.h"
#include "VelBase/ExceptionImpl.h"
#include "VelBase/SystemFailure.h"
#include "VelBase/WideLiteral.h"

namespace VelLog {

namespace {

using VelBase::operator""_wide;

System::LogFile OpenForAppending(const char* path) {
    unsigned int error = 0;
    const System::LogFile file = System::OpenLogFile(path, error);
    if (file != System::NoLogFile) return file;
    VelBase::WideText whatFailed;
    whatFailed.Append("Cannot open the log file "_wide).AppendUtf8(path);
    throw VelBase::ExceptionImpl<VelBase::Message>(
        VelBase::DescribeSystemFailure(whatFailed, error));
}

}  // namespace

FileSink::FileSink(const char* path)
    : file_(OpenForAppending(path != nullptr ? path : "")), isCut_(System::EndsWithinLine(file_)) {}

FileSink::~FileSink() {
    UnsetSink(*this);
    System::CloseLogFile(file_);
}

void FileSink::Write(const LogRecord& record) {
    WriteLogLine(file_, record, isCut_);
}

}  // namespace VelLog
