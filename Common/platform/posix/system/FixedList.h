// A list of at most a fixed number of elements that needs no allocation.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace Posix {

// Only the elements that were added exist, so that room for many costs nothing. The caller adds no
// more than there is room for.
template <class Element, std::size_t Room>
class FixedList {
public:
    FixedList() noexcept = default;
    ~FixedList() { std::destroy(begin(), end()); }
    FixedList(const FixedList&) = delete;
    FixedList& operator=(const FixedList&) = delete;

    // Returns the element in the list.
    Element& Add(Element&& element) noexcept {
        Element& added = *std::construct_at(end(), std::move(element));
        ++count_;
        return added;
    }

    std::size_t Count() const noexcept { return count_; }
    Element& operator[](std::size_t index) noexcept { return begin()[index]; }
    Element* begin() noexcept { return Elements(); }
    Element* end() noexcept { return begin() + count_; }
    const Element* begin() const noexcept { return Elements(); }
    const Element* end() const noexcept { return begin() + count_; }

private:
    Element* Elements() noexcept { return static_cast<Element*>(static_cast<void*>(memory_)); }
    const Element* Elements() const noexcept {
        return static_cast<const Element*>(static_cast<const void*>(memory_));
    }

    std::size_t count_ = 0;
    alignas(Element) std::byte memory_[Room * sizeof(Element)];
};

}  // namespace Posix
