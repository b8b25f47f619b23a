#include "Support/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local uint64 allocations = 0;

void* CountedAllocate(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size > 0 ? size : 1))
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

AllocationCounter::AllocationCounter() : before(allocations)
{
}

uint64 AllocationCounter::Count() const
{
    return allocations - before;
}

} // namespace ZuTest
