#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace TEV2_PLAYBACK
{

/// What the contents of a block are described with. A function that takes an array for everything it needs is called
/// twice: with a plan that measures, then with one that places.
class BlockPlan
{
public:
    BlockPlan() = default;
    explicit BlockPlan(std::byte* block) : block_(block) {}

    /// Room for `count` elements, aligned for vectors. Empty while measuring. The elements are not initialised.
    template <typename Element>
    std::span<Element> Take(std::size_t count)
    {
        static_assert(std::is_trivially_copyable_v<Element> && alignof(Element) <= kAlignment);
        const std::size_t begin = size_;
        size_ += (count * sizeof(Element) + kAlignment - 1) / kAlignment * kAlignment;
        return block_ == nullptr ? std::span<Element>()
                                 : std::span<Element>(reinterpret_cast<Element*>(block_ + begin), count);
    }

    std::size_t Size() const { return size_; }

    static constexpr std::size_t kAlignment = 64;

private:
    std::byte* block_ = nullptr;
    std::size_t size_ = 0;
};

/// Memory from a resource, given back at the end.
class Block
{
public:
    Block() = default;

    /// Throws what the resource throws where there is no memory.
    Block(std::size_t size, std::pmr::memory_resource* memory)
        : memory_(memory),
          size_(size),
          begin_(static_cast<std::byte*>(memory->allocate(size, BlockPlan::kAlignment)))
    {
    }
    Block(Block&& other) noexcept
        : memory_(other.memory_),
          size_(std::exchange(other.size_, 0)),
          begin_(std::exchange(other.begin_, nullptr))
    {
    }
    Block& operator=(Block&& other) noexcept
    {
        std::swap(memory_, other.memory_);
        std::swap(size_, other.size_);
        std::swap(begin_, other.begin_);
        return *this;
    }
    ~Block()
    {
        if (begin_ != nullptr)
            memory_->deallocate(begin_, size_, BlockPlan::kAlignment);
    }

    std::byte* Begin() const { return begin_; }
    std::size_t Size() const { return size_; }
    std::pmr::memory_resource* Memory() const { return memory_; }

private:
    std::pmr::memory_resource* memory_ = nullptr;
    std::size_t size_ = 0;
    std::byte* begin_ = nullptr;
};

} // namespace TEV2_PLAYBACK
