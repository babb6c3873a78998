// The local host's settings, read key by key.
#pragma once

#include "VelBase/ReturnWString.h"
#include "VelRegistry/KeyList.h"

#include <memory>

namespace Registry {
struct Key;
}

namespace VelRegistry {

// Closes a key of the platform at the end of its owner's life.
struct SystemKeyClose {
    void operator()(Registry::Key* key) const noexcept;
};
using SystemKeyOwner = std::unique_ptr<Registry::Key, SystemKeyClose>;

// The root keys (hives). Any other number may be passed; it stands for the system's own root of
// that number, or for one without keys.
enum RootHives : int { ROOT_LOCAL_MACHINE = 3 };

// An open key, owned by whoever opened it and closed with Release; KeyOwner below does that at the
// end of a scope.
//
// Every operation throws KeyException if the system cannot answer. That something does not exist is
// an answer.
class Key {
public:
    // Whether there is a sub-key of this name.
    bool HasSubKey(const unsigned short* name) const;

    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // Returns the sub-key, owned by the caller, or null if there is none. The flag has no effect;
    // pass false.
    Key* OpenSubKey(const unsigned short* name, bool flag) const;

    // Whether there is a value of this name.
    bool HasValue(const unsigned short* name) const;

    // Returns the value's text; empty if there is no such value.
    VelBase::ReturnWString ReadText(const unsigned short* name) const;

    // Returns the names of the sub-keys. The caller deletes the list.
    KeyList* ListSubKeys() const;

    // Closes the key and deletes the object.
    void Release() noexcept;

private:
    friend Key* OpenKeyFromRoot(RootHives root, const unsigned short* path, bool flag);

    Key(SystemKeyOwner key, VelBase::ReturnWString path) noexcept;
    ~Key();

    static Key* MakeUnlessMissing(SystemKeyOwner key, VelBase::ReturnWString path);
    SystemKeyOwner OpenSystemSubKey(const unsigned short* name) const;

    SystemKeyOwner key_;
    VelBase::ReturnWString path_;  // for failure texts
};

// Returns the key at the path, owned by the caller, or null if there is none. The flag has no
// effect; pass false. Throws KeyException.
Key* OpenKeyFromRoot(RootHives root, const unsigned short* path, bool flag);

// Closes a key at the end of a scope.
struct KeyRelease {
    void operator()(Key* key) const noexcept { key->Release(); }
};
using KeyOwner = std::unique_ptr<Key, KeyRelease>;

}  // namespace VelRegistry
