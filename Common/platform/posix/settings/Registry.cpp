// The settings on systems without a registry: a tree of files and, if that says nothing about the
// host's network, the settings of the system's resolver.
//
// Cancellation of the thread is deferred during each operation: none takes long, and a descriptor
// that a cancelled call had just opened would leak.
#include "Platform/Registry.h"

#include "settings/RegistryKey.h"
#include "settings/ResolverKeys.h"
#include "settings/TreeKeys.h"
#include "system/Descriptors.h"

namespace {

using namespace Posix;

// As soon as the tree has the parameters' key, only the tree counts.
std::unique_ptr<Registry::Key> OpenMachineKey(Name path, unsigned int& error) {
    const std::optional<Name> parameters = ResolverParametersPath(path);
    if (!parameters || OpenTreeKey(*parameters, error) != nullptr || error != 0) return nullptr;
    return OpenResolverKey(path, error);
}

}  // namespace

Registry::Key* Registry::OpenKey(int hive, const unsigned short* path, unsigned int& error) {
    const CancellationGuard whole;
    error = 0;
    if (hive != LocalMachine) return nullptr;
    const Name name = NameOf(path);
    std::unique_ptr<Key> key = OpenTreeKey(name, error);
    if (key == nullptr && error == 0) key = OpenMachineKey(name, error);
    return key.release();
}

Registry::Key* Registry::OpenSubKey(Key& key, const unsigned short* name, unsigned int& error) {
    const CancellationGuard whole;
    return key.Open(NameOf(name), error).release();
}

void Registry::CloseKey(Key* key) noexcept {
    delete key;
}

bool Registry::ReadValue(Key& key, const unsigned short* name, System::WideUnits* text,
                         unsigned int& error) {
    const CancellationGuard whole;
    return key.Read(NameOf(name), text, error);
}

std::vector<System::WideUnits> Registry::SubKeyNames(Key& key, unsigned int& error) {
    const CancellationGuard whole;
    return key.SubKeys(error);
}
