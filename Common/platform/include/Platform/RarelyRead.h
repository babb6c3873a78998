// A value that only the rare ways out of a frequent call read.
#pragma once

// Volatile keeps it on the stack. To survive the system call in a register it would need a
// callee-saved one, which every call would have to save and restore.
template <class Value>
using RarelyRead = volatile Value;
