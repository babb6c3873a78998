// The process's standard streams as bytes, unbuffered. What the operating system offers for that
// differs; each system has its own source.
#pragma once

#include <cstddef>
#include <string_view>

namespace VelSockTools {

// Makes a stream that the caller of the program has closed fail when it is used, instead of letting
// the first socket take its place; and lets a write to a closed pipe fail instead of ending the
// process.
void PrepareStandardStreams();

// True when a read of standard input would not have to wait.
bool InputIsReady();

// Waits for bytes and returns how many came, at most size; 0 at the end of the input. Throws
// Failure with LocalFailure.
std::size_t ReadInput(char* buffer, std::size_t size);

// Writes all of the bytes. Throws Failure with LocalFailure.
void WriteOutput(std::string_view bytes);

}  // namespace VelSockTools
