#include "Support/AllocationCounter.h"

#include "Support/AllocationFailure.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local uint64 allocations = 0;
thread_local uint64 allocatedBytes = 0;
thread_local uint64 untilFailure = 0; // allocations up to the failing one; 0: none fails

void* CountedAllocateOrNull(std::size_t size) noexcept
{
    ++allocations;
    allocatedBytes += size;
    if (untilFailure > 0 && --untilFailure == 0)
    {
        return nullptr;
    }
    return std::malloc(size > 0 ? size : 1);
}

void* CountedAllocate(std::size_t size)
{
    if (void* const memory = CountedAllocateOrNull(size))
    {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return CountedAllocate(size);
}

void* operator new[](std::size_t size)
{
    return CountedAllocate(size);
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    return CountedAllocateOrNull(size);
}

void* operator new[](std::size_t size, std::nothrow_t const&) noexcept
{
    return CountedAllocateOrNull(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace ZuTest
{

AllocationCounter::AllocationCounter() : countBefore(allocations), bytesBefore(allocatedBytes)
{
}

uint64 AllocationCounter::Count() const
{
    return allocations - countBefore;
}

uint64 AllocationCounter::Bytes() const
{
    return allocatedBytes - bytesBefore;
}

AllocationFailure::AllocationFailure(uint64 number)
{
    untilFailure = number;
}

AllocationFailure::~AllocationFailure()
{
    untilFailure = 0;
}

bool AllocationFailure::HasHappened() const
{
    return untilFailure == 0;
}

} // namespace ZuTest
