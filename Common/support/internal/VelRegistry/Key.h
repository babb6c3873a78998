// The machine's settings, read key by key.
#pragma once

#include "VelBase/ReturnWString.h"
#include "VelRegistry/KeyList.h"

#include <memory>

namespace Registry {
struct Key;
}

namespace VelRegistry {

// Ends a key of the platform with its owner.
struct SystemKeyClose {
    void operator()(Registry::Key* key) const noexcept;
};
using SystemKeyOwner = std::unique_ptr<Registry::Key, SystemKeyClose>;

// The hives that paths start from. Any other number may be passed and names the system's own root,
// if it has such a one; else there are no keys.
enum RootHives : int { ROOT_LOCAL_MACHINE = 3 };

// An open key, owned by whoever opened it and ended with its Release; KeyRelease below does that at
// the end of a scope. Every operation throws KeyException when the system cannot answer; that
// something is simply not there is an answer.
class Key {
public:
    // Whether there is a sub-key of this name.
    bool HasSubKey(const unsigned short* name) const;

    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    // The sub-key, owned by the caller, or null when there is none. The flag has no effect; callers
    // pass false.
    Key* OpenSubKey(const unsigned short* name, bool flag) const;

    // Whether there is a value of this name.
    bool HasValue(const unsigned short* name) const;

    // The value's text; the empty text when there is no such value.
    VelBase::ReturnWString ReadText(const unsigned short* name) const;

    // The names of the sub-keys. The caller deletes the list after use.
    KeyList* ListSubKeys() const;

    // Ends the key: the object is gone afterwards.
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

// The key at the path, owned by the caller, or null when there is none. The flag has no effect;
// callers pass false. Throws KeyException.
Key* OpenKeyFromRoot(RootHives root, const unsigned short* path, bool flag);

// Ends a key at the end of a scope.
struct KeyRelease {
    void operator()(Key* key) const noexcept { key->Release(); }
};
using KeyOwner = std::unique_ptr<Key, KeyRelease>;

}  // namespace VelRegistry
