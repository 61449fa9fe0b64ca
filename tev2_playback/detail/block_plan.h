#pragma once

#include "tev2_playback/block.h"

#include <cstddef>
#include <new>
#include <span>
#include <type_traits>

namespace TEV2_PLAYBACK
{

/// What the contents of a block are described with. A function that takes an array for everything it needs is called
/// twice: with a plan that measures, then with one that places.
class BlockPlan
{
public:
    BlockPlan() = default;
    explicit BlockPlan(std::byte* block) : block_(block) {}

    /// Room for `count` elements, aligned for vectors. Empty while measuring. The elements are not initialised. Throws
    /// std::bad_alloc where no memory is that large.
    template <typename Element>
    std::span<Element> Take(std::size_t count)
    {
        static_assert(std::is_trivially_copyable_v<Element> && alignof(Element) <= Block::kAlignment);
        const std::size_t begin = size_;
        constexpr std::size_t kPadding = Block::kAlignment - 1;
        if (count > (static_cast<std::size_t>(-1) - kPadding - begin) / sizeof(Element))
            throw std::bad_alloc();
        size_ += (count * sizeof(Element) + kPadding) / Block::kAlignment * Block::kAlignment;
        return block_ == nullptr ? std::span<Element>()
                                 : std::span<Element>(reinterpret_cast<Element*>(block_ + begin), count);
    }

    std::size_t Size() const { return size_; }

private:
    std::byte* block_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace TEV2_PLAYBACK
