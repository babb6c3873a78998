// The seam to the local host's settings: a read-only tree of keys, each with named text values.
//
// Names and paths are zero-terminated wide strings; backslashes separate the parts of a path. Names
// are compared without case. Every operation that can fail stores the system's error number in
// error, or 0, also if what was asked for does not exist.
#pragma once

#include "Platform/System.h"

#include <vector>

namespace Registry {

// An open key.
struct Key;

// The local machine's hive. A system may have other roots; a number that is not one of them has no
// keys.
inline constexpr int LocalMachine = 3;

// Returns the key at the path below the hive, or null. The caller closes it with CloseKey.
Key* OpenKey(int hive, const unsigned short* path, unsigned int& error);
Key* OpenSubKey(Key& key, const unsigned short* name, unsigned int& error);
void CloseKey(Key* key) noexcept;

// Returns whether the key has the value, and stores its text in text unless that is null.
bool ReadValue(Key& key, const unsigned short* name, System::WideUnits* text, unsigned int& error);

// Returns the names of the sub-keys, in the system's order.
std::vector<System::WideUnits> SubKeyNames(Key& key, unsigned int& error);

}  // namespace Registry
