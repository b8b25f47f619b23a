#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace
{

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> allocatedBytes{0};

} // namespace

void* operator new(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size != 0 ? size : 1))
    {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace Zu::Params
{

namespace
{

/// As the records that there are very many of.
struct Item : Group
{
    Item()
    {
        Register("id", "Id", id);
        Register("size", "Size", size);
        Register("source", "Source", source);
        Register("offset", "Offset", offset);
        Register("length", "Length", length);
    }

    Value<uint16> id{65535};
    Value<uint16> size;
    Value<std::string> source;
    Value<uint16> offset;
    Value<uint16> length;
};

class Memory : public testing::Test
{
protected:
    Memory()
    {
        Item const first; // brings keys and titles, which all share
        Restart();
    }

    void Restart()
    {
        allocationsBefore = allocations;
        bytesBefore = allocatedBytes;
    }

    std::size_t Allocations() const
    {
        return allocations - allocationsBefore;
    }

    std::size_t Bytes() const
    {
        return allocatedBytes - bytesBefore;
    }

    std::shared_ptr<Item> const kept = std::make_shared<Item>(); // holds the texts

private:
    std::size_t allocationsBefore = 0;
    std::size_t bytesBefore = 0;
};

} // namespace

TEST_F(Memory, TakesLittleForARecord)
{
    auto const item = std::make_shared<Item>();

    EXPECT_LE(Bytes(), 1024u);
    EXPECT_LE(Allocations(), 3u);
}

TEST_F(Memory, TakesNoneToCopyARecord)
{
    auto const item = std::make_shared<Item>();
    kept->id = 7;
    Restart();

    item->CopyValues(*kept);
    item->size = 9;

    EXPECT_EQ(Allocations(), 0u);
    EXPECT_EQ(item->id, 7);
}

TEST_F(Memory, TakesNoneToSetTheMinimumThatIsThereAtBirth)
{
    kept->id.EnableMinimum(true).SetMinimum(0);

    EXPECT_EQ(Allocations(), 0u);
}

} // namespace Zu::Params
