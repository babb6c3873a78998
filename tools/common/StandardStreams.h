// The process's standard streams as unbuffered bytes. Each system has its own source.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace VelSockTools {

// If the program was started with a standard stream closed, makes that stream fail when it is used,
// so that the first socket does not get its number. Makes a write to a closed pipe fail instead of
// ending the process.
void PrepareStandardStreams();

// Whether a read of standard input would not block.
bool InputIsReady();

// Waits for bytes and returns how many were read, at most size; 0 at the end of the input. Throws
// Failure with LocalFailure.
std::size_t ReadInput(char* buffer, std::size_t size);

// Returns how many bytes standard input still has, if it is a file.
std::optional<unsigned long long> InputSize();

// Whether people see what is written there.
bool InputIsTerminal();
bool OutputIsTerminal();
bool ErrorsAreOnTerminal();

// Writes all of the bytes. Throws Failure with LocalFailure.
void WriteOutput(std::string_view bytes);

}  // namespace VelSockTools
