#pragma once

#include <cstddef>
#include <memory_resource>

namespace tv2_tests
{

/// Counts what is taken from it.
class Counter final : public std::pmr::memory_resource
{
public:
    int pieces = 0;
    int taken = 0;

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override
    {
        ++pieces;
        ++taken;
        return std::pmr::new_delete_resource()->allocate(size, alignment);
    }
    void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override
    {
        --pieces;
        std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

} // namespace tv2_tests
