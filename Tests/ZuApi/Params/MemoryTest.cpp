#include "Support/AllocationCounter.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <gtest/gtest.h>

#include <memory>

namespace Zu::Params
{

namespace
{

/// A record of a kind that occurs in large numbers.
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
    std::shared_ptr<Item> const kept = std::make_shared<Item>();
};

} // namespace

TEST_F(Memory, TakesLittleForARecord)
{
    ZuTest::AllocationCounter const counter;
    auto const item = std::make_shared<Item>();

    EXPECT_LE(counter.Bytes(), 1024u);
    EXPECT_LE(counter.Count(), 3u);
}

TEST_F(Memory, TakesNoneToCopyARecord)
{
    auto const item = std::make_shared<Item>();
    kept->id = 7;

    ZuTest::AllocationCounter const counter;
    item->CopyValues(*kept);
    item->size = 9;

    EXPECT_EQ(counter.Count(), 0u);
    EXPECT_EQ(item->id, 7);
}

TEST_F(Memory, TakesNoneToSetTheMinimumThatIsThereAtBirth)
{
    ZuTest::AllocationCounter const counter;
    kept->id.EnableMinimum(true).SetMinimum(0);

    EXPECT_EQ(counter.Count(), 0u);
}

TEST_F(Memory, TakesNoneToDescribeAMemberAgain)
{
    std::string const longTitle(256, 't');
    Group record;
    record.Register("item", longTitle, *kept);
    Properties::Node const& node = kept->title.Node();

    ZuTest::AllocationCounter const counter;
    record.nextSortOrder = 0;
    record.Register("item", longTitle, *kept);

    EXPECT_EQ(counter.Count(), 0u);
    EXPECT_EQ(&kept->title.Node(), &node);
}

} // namespace Zu::Params
