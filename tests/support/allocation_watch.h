#pragma once

#include <cstddef>

// What a program takes from operator new, with its libraries. Part of every program that is linked with
// allocation_watch.cpp, which replaces the operators.

namespace tv2_tests
{

/// How often operator new was called.
long AllocationCount();

/// How many bytes were asked of operator new in all, freed or not.
std::size_t AllocatedBytes();

/// While it lives: the most bytes that were taken at one time beyond those that were taken when it began. One at a
/// time.
class AllocationPeak
{
public:
    AllocationPeak();
    std::size_t Bytes() const;

private:
    std::size_t before_;
};

/// While it lives, the call of operator new after `calls_before` others throws std::bad_alloc. One at a time.
class AllocationFailure
{
public:
    explicit AllocationFailure(long calls_before);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// Whether that call was made.
    bool Struck() const;
};

} // namespace tv2_tests
