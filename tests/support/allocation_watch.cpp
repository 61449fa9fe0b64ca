#include "tests/support/allocation_watch.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace
{

constexpr long kNever = -1;

std::atomic<long> calls{0};
std::atomic<std::size_t> asked_bytes{0};
std::atomic<long> failing_call{kNever};
std::atomic<std::size_t> live_bytes{0};
std::atomic<std::size_t> peak_bytes{0};

std::size_t SizeOf(void* memory)
{
#if defined(_WIN32)
    return _msize(memory);
#else
    return malloc_usable_size(memory);
#endif
}

void Count(std::size_t size)
{
    const std::size_t live = live_bytes += size;
    std::size_t peak = peak_bytes;
    while (live > peak && !peak_bytes.compare_exchange_weak(peak, live))
    {
    }
}

} // namespace

namespace tv2_tests
{

long AllocationCount()
{
    return calls;
}

std::size_t AllocatedBytes()
{
    return asked_bytes;
}

AllocationPeak::AllocationPeak() : before_(live_bytes)
{
    peak_bytes = before_;
}

std::size_t AllocationPeak::Bytes() const
{
    return peak_bytes - before_;
}

AllocationFailure::AllocationFailure(long calls_before)
{
    failing_call = calls + calls_before;
}

AllocationFailure::~AllocationFailure()
{
    failing_call = kNever;
}

bool AllocationFailure::Struck() const
{
    return calls > failing_call;
}

} // namespace tv2_tests

void* operator new(std::size_t size)
{
    void* const memory = calls++ == failing_call ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    asked_bytes += size;
    Count(SizeOf(memory));
    return memory;
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr)
        live_bytes -= SizeOf(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

// The forms that stand on these two by default; sanitizers bring their own.

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return operator new(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& no_throw) noexcept
{
    return operator new(size, no_throw);
}

void operator delete[](void* memory) noexcept
{
    operator delete(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    operator delete(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    operator delete(memory);
}
