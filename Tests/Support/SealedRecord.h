#pragma once

#include <cstddef>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace ZuTest
{

/// A record in memory pages of its own, which a test can make read-only. A write to a read-only record ends the process
/// with a segmentation fault. Memory that the record allocates elsewhere is not protected.
/// A death test ends its child with `std::_Exit`: a leak check would not find the pages.
template <typename Record>
class SealedRecord
{
public:
    template <typename... Args>
    explicit SealedRecord(Args&&... args) : memory(Map()), record(new (memory) Record(std::forward<Args>(args)...))
    {
    }

    ~SealedRecord()
    {
        Protect(PROT_READ | PROT_WRITE);
        record->~Record();
        munmap(memory, Bytes());
    }

    SealedRecord(SealedRecord const&) = delete;
    SealedRecord& operator=(SealedRecord const&) = delete;

    Record& Get() const
    {
        return *record;
    }

    /// Makes the record read-only from now on.
    bool Seal()
    {
        return Protect(PROT_READ);
    }

private:
    static std::size_t Bytes()
    {
        auto const page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        return (sizeof(Record) + page - 1) / page * page;
    }

    static void* Map()
    {
        void* const mapped = mmap(nullptr, Bytes(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
        {
            throw std::bad_alloc();
        }
        return mapped;
    }

    bool Protect(int protection)
    {
        return mprotect(memory, Bytes(), protection) == 0;
    }

    void* const memory;
    Record* const record;
};

} // namespace ZuTest
