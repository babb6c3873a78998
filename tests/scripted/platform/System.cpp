// The system's part of the seam: names, texts, log files.
#include <Platform/System.h>

#include <cerrno>
#include <map>

#include "Call.h"
#include "support/Text.h"

namespace System {

namespace {

using Scripted::Answer;
using Scripted::Call;

constexpr LogFile StandardErrorFile = 2;
constexpr LogFile FirstLogFile = 3;

struct LogFiles {
    LogFile next = FirstLogFile;
    std::map<LogFile, std::string> open = {{StandardErrorFile, "standard error"}};  // to paths
    std::map<std::string, std::string> contents;
};

LogFiles logFiles;
thread_local constinit int cancellationsHeld = 0;

const bool forgotten = Scripted::AtReset([] {
    cancellationsHeld = 0;
    const auto lock = Scripted::LockState();
    logFiles = {};
});

// What the code under test receives is memory of its own.
template <class Container>
Container HandOver(const Container& made) {
    const Scripted::Counted counted;
    return made;
}

WideUnits UnitsOf(const std::u16string& text) {
    return {text.begin(), text.end()};
}

WideUnits FinishWithText(Call& call, const Answer& answer, const std::u16string& usual) {
    call.Finish();
    return HandOver(UnitsOf(call.IsUsual() ? usual : answer.text));
}

std::u16string Latin1(const char* text, std::size_t length) {
    std::u16string wide;
    for (std::size_t index = 0; index < length; ++index)
        wide += static_cast<unsigned char>(text[index]);
    return wide;
}

std::string LedgerEntry(LogFile file) {
    return "log file " + std::to_string(file);
}

// Null for a file that is not open.
std::string* ContentsOf(LogFile file) {
    const auto found = logFiles.open.find(file);
    return found != logFiles.open.end() ? &logFiles.contents[found->second] : nullptr;
}

std::size_t Append(LogFile file, const char* bytes, std::size_t count) {
    const auto lock = Scripted::LockState();
    std::string* const contents = ContentsOf(file);
    if (contents == nullptr) return 0;
    contents->append(bytes, count);
    return count;
}

LogFile OpenInMemory(const char* path) {
    const auto lock = Scripted::LockState();
    logFiles.open.emplace(logFiles.next, path);
    return logFiles.next++;
}

}  // namespace

void Sleep(unsigned long milliseconds) {
    Call call("Sleep");
    call.Number(static_cast<long long>(milliseconds)).Play();
    call.Finish();
}

WideUnits ComputerName() {
    Call call("ComputerName");
    const Answer& answer = call.Play();
    return FinishWithText(call, answer, u"SCRIPTED-HOST");
}

bool GetVersionExW(VersionRecord* version) {
    Call call("GetVersionExW");
    const auto record = reinterpret_cast<const char*>(version);
    call.Bytes(record, sizeof *version, std::to_string(version->size));
    const Answer& answer = call.Play();
    if (call.IsFailure()) return call.Finish(1, 0) != 0;
    if (version->size != sizeof *version) return call.Fail(122, 0) != 0;
    version->majorVersion = call.IsUsual() ? 10 : static_cast<unsigned int>(answer.result);
    call.Succeed();
    return true;
}

WideUnits ErrorDescription(unsigned int error) {
    Call call("ErrorDescription");
    const Answer& answer = call.Number(error).Play();
    const std::string number = std::to_string(error);
    return FinishWithText(call, answer,
                          u"Description of " + Latin1(number.data(), number.size()) + u".");
}

WideUnits WideFromCodePage(const char* text, std::size_t length) {
    Call call("WideFromCodePage");
    const auto count = static_cast<int>(length);
    const Answer& answer = call.Quoted(text, count).Number(count).Play();
    return FinishWithText(call, answer, Latin1(text, length));
}

std::string CodePageFromWide(const unsigned short* units, std::size_t count) {
    Call call("CodePageFromWide");
    const std::u16string text(units, units + count);
    const Answer& answer = call.Pointer(units)
                               .Plain(Scripted::QuotedUnits(text))
                               .Number(static_cast<long long>(count))
                               .Play();
    call.Finish();
    if (!call.IsUsual()) return HandOver(answer.bytes);
    std::string bytes;
    for (const char16_t unit : text)
        bytes += unit > 0xFF ? '?' : static_cast<char>(unit);
    return HandOver(bytes);
}

int HoldCancellation() noexcept {
    return cancellationsHeld++;
}

void ReleaseCancellation(int held) noexcept {
    cancellationsHeld = held;
}

ErrorNumbers SaveErrorNumbers() noexcept {
    return {.winsock = Scripted::LastError(), .system = errno};
}

void RestoreErrorNumbers(ErrorNumbers numbers) noexcept {
    Scripted::SetLastError(numbers.winsock);
    errno = numbers.system;
}

LogFile StandardError() noexcept {
    return StandardErrorFile;
}

LogFile OpenLogFile(const char* path, unsigned int& error) noexcept {
    Call call("OpenLogFile");
    const Answer& answer = call.Quoted(path).Play();
    call.Finish();
    error = static_cast<unsigned int>(answer.error);
    if (call.IsFailure()) return NoLogFile;
    const LogFile file = OpenInMemory(path);
    Scripted::OpenInLedger(LedgerEntry(file));
    return file;
}

std::size_t WriteLogFile(LogFile file, const char* bytes, std::size_t count) noexcept {
    Call call("WriteLogFile");
    const Answer& answer = call.Number(file).Quoted(bytes, static_cast<int>(count)).Play();
    call.Finish();
    if (call.IsFailure()) return 0;
    return Append(file, bytes, call.IsUsual() ? count : static_cast<std::size_t>(answer.result));
}

bool EndsWithinLine(LogFile file) noexcept {
    const auto lock = Scripted::LockState();
    const std::string* const contents = ContentsOf(file);
    return contents != nullptr && !contents->empty() && !contents->ends_with('\n');
}

void CloseLogFile(LogFile file) noexcept {
    Call call("CloseLogFile");
    call.Number(file).Play();
    call.Finish();
    Scripted::CloseInLedger(LedgerEntry(file));
    const auto lock = Scripted::LockState();
    logFiles.open.erase(file);
}

}  // namespace System

namespace Scripted {

int CancellationsHeld() {
    return System::cancellationsHeld;
}

std::string LogFileContents(const std::string& path) {
    const auto lock = LockState();
    const auto found = System::logFiles.contents.find(path);
    return found == System::logFiles.contents.end() ? "" : found->second;
}

std::string StandardErrorContents() {
    return LogFileContents("standard error");
}

}  // namespace Scripted
