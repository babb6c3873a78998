// The seam to the machine's settings: a tree of keys, each with named text values, which is only
// read.
//
// Names and paths are zero-terminated wide texts; a path's parts are separated by backslashes.
// Names compare without case. Every operation that can fail reports the system's error number in
// error, and 0 there when the thing asked for is simply not there.
#pragma once

#include "Platform/System.h"

#include <vector>

namespace Registry {

// An open key.
struct Key;

// The local machine's hive. A system may have other roots beside it; a number that is none of them
// has no keys.
inline constexpr int LocalMachine = 3;

// The key at the path below the hive, or null. The caller ends it with CloseKey.
Key* OpenKey(int hive, const unsigned short* path, unsigned int& error);
Key* OpenSubKey(Key& key, const unsigned short* name, unsigned int& error);
void CloseKey(Key* key) noexcept;

// Whether the key has the value; its text goes to text unless that is null.
bool ReadValue(Key& key, const unsigned short* name, System::WideUnits* text, unsigned int& error);

// The names of the sub-keys, in the system's order.
std::vector<System::WideUnits> SubKeyNames(Key& key, unsigned int& error);

}  // namespace Registry
