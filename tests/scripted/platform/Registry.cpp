// The registry of the seam, over the tree that the test made.
#include <Platform/Registry.h>

#include <algorithm>
#include <map>
#include <memory>

#include "Call.h"
#include "scripted/RegistryTree.h"
#include "support/Text.h"

namespace Registry {

namespace {

using Scripted::Call;

struct Node {
    std::u16string name;
    std::map<std::u16string, std::u16string> values;  // by folded names
    std::vector<std::unique_ptr<Node>> children;
};

std::u16string Folded(std::u16string name) {
    for (char16_t& unit : name)
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    return name;
}

Node* Child(Node& node, const std::u16string& name) {
    for (const auto& child : node.children)
        if (Folded(child->name) == Folded(name)) return child.get();
    return nullptr;
}

// The node at the path; where add says so the missing ones are made.
Node* Descend(Node* node, const std::u16string& path, bool add) {
    for (std::size_t start = 0; node != nullptr && start <= path.size();) {
        const std::size_t end = std::min(path.find(u'\\', start), path.size());
        const std::u16string name = path.substr(start, end - start);
        Node* child = Child(*node, name);
        if (child == nullptr && add)
            child = node->children.emplace_back(std::make_unique<Node>(Node{name, {}, {}})).get();
        node = child;
        start = end + 1;
    }
    return node;
}

}  // namespace

// Keys are kept after their end, so that what uses or ends an ended key is recorded and does no
// harm.
struct Key {
    int number;
    Node* node;
};

namespace {

struct State {
    std::map<int, Node> hives;
    std::vector<std::unique_ptr<Key>> keys;
};

State state;

const bool forgotten = Scripted::AtReset(Scripted::ForgetRegistry);

std::string LedgerEntry(const Key& key) {
    return "registry key " + std::to_string(key.number);
}

Key* Open(Node* node) {
    if (node == nullptr) return nullptr;
    const auto lock = Scripted::LockState();
    const int number = static_cast<int>(state.keys.size()) + 1;
    return state.keys.emplace_back(std::make_unique<Key>(Key{number, node})).get();
}

// Ends a call with the error number that it reports; false when that is a failure.
bool Finish(Call& call, const Scripted::Answer& answer, unsigned int& error) {
    call.Finish();
    error = static_cast<unsigned int>(answer.error);
    return !call.IsFailure();
}

Key* OpenAndEnter(Node* node) {
    Key* const key = Open(node);
    if (key != nullptr) Scripted::OpenInLedger(LedgerEntry(*key));
    return key;
}

}  // namespace

Key* OpenKey(int hive, const unsigned short* path, unsigned int& error) {
    Call call("OpenKey");
    const Scripted::Answer& answer = call.Number(hive).Quoted(path).Play();
    if (!Finish(call, answer, error)) return nullptr;
    const auto found = state.hives.find(hive);
    if (found == state.hives.end()) return nullptr;
    return OpenAndEnter(Descend(&found->second, Support::Text(path), false));
}

Key* OpenSubKey(Key& key, const unsigned short* name, unsigned int& error) {
    Call call("OpenSubKey");
    const Scripted::Answer& answer = call.Number(key.number).Quoted(name).Play();
    if (!Finish(call, answer, error)) return nullptr;
    return OpenAndEnter(Descend(key.node, Support::Text(name), false));
}

void CloseKey(Key* key) noexcept {
    Call call("CloseKey");
    call.Number(key->number).Play();
    call.Finish();
    Scripted::CloseInLedger(LedgerEntry(*key));
}

bool ReadValue(Key& key, const unsigned short* name, System::WideUnits* text, unsigned int& error) {
    Call call("ReadValue");
    call.Number(key.number).Quoted(name);
    if (text == nullptr) call.Plain("null");
    const Scripted::Answer& answer = call.Play();
    if (!Finish(call, answer, error)) return false;
    const auto found = key.node->values.find(Folded(Support::Text(name)));
    if (found == key.node->values.end()) return false;
    const Scripted::Counted counted;
    if (text != nullptr) text->assign(found->second.begin(), found->second.end());
    return true;
}

std::vector<System::WideUnits> SubKeyNames(Key& key, unsigned int& error) {
    Call call("SubKeyNames");
    const Scripted::Answer& answer = call.Number(key.number).Play();
    if (!Finish(call, answer, error)) return {};
    const Scripted::Counted counted;
    std::vector<System::WideUnits> names;
    for (const auto& child : key.node->children)
        names.emplace_back(child->name.begin(), child->name.end());
    return names;
}

}  // namespace Registry

namespace Scripted {

namespace {

std::u16string Widened(const std::string& text) {
    return {text.begin(), text.end()};
}

Registry::Node& NodeAt(int hive, const std::string& path) {
    return *Registry::Descend(&Registry::state.hives[hive], Widened(path), true);
}

}  // namespace

void ForgetRegistry() {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    Registry::state = {};
}

RegistryTree& RegistryTree::Key(const std::string& path) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    NodeAt(hive_, path);
    return *this;
}

RegistryTree& RegistryTree::Value(const std::string& path, const std::string& name,
                                  std::u16string text) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    NodeAt(hive_, path).values[Registry::Folded(Widened(name))] = std::move(text);
    return *this;
}

}  // namespace Scripted
