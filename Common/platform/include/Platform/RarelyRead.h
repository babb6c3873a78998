// A value that only the rare ways out of a frequent call read.
#pragma once

// Volatile keeps it in memory: in a register it would have to survive the system call, and that
// register be saved and restored around each.
template <class Value>
using RarelyRead = volatile Value;
