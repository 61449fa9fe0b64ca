#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <memory_resource>
#include <utility>

namespace TEV2_PLAYBACK
{

/// Memory from a resource, given back at the end: what clips and players consist of. Nothing for users to do.
class Block
{
public:
    static constexpr std::size_t kAlignment = 64; ///< of the beginning, for vectors and cache lines

    Block() = default;

    /// Throws what the resource throws where there is no memory.
    Block(std::size_t size, std::pmr::memory_resource* memory)
        : memory_(memory), size_(size), begin_(static_cast<std::byte*>(memory->allocate(size, kAlignment)))
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
        Block taken(std::move(other));
        std::swap(memory_, taken.memory_);
        std::swap(size_, taken.size_);
        std::swap(begin_, taken.begin_);
        return *this;
    }
    ~Block()
    {
        if (begin_ != nullptr)
            memory_->deallocate(begin_, size_, kAlignment);
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
