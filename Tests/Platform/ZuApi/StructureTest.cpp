#include "ZuApi/Structure.h"

#include "Support/Refusal.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/ReferenceArray.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Zu::Properties
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

struct Pair : Structure
{
    Pair(uint16 newFirst, uint16 newSecond) : Structure(true), first(newFirst), second(newSecond)
    {
    }

    Value<uint16> first;
    Value<uint16> second;
};

std::vector<std::string> KeysOf(Structure const& structure)
{
    std::vector<std::string> keys;
    for (uint64 i = 0; i < structure.Count(); ++i)
    {
        keys.push_back(structure.KeyAt(i));
    }
    return keys;
}

} // namespace

TEST(Structure, KeepsItsChildrenInOrderOfRegistration)
{
    Pair pair(1, 2);

    Node const& registered = pair.Register("z", pair.first);
    pair.Register("a", pair.second);

    EXPECT_EQ(&registered, &pair.first);
    EXPECT_EQ(KeysOf(pair), (std::vector<std::string>{"z", "a"}));
    EXPECT_EQ(pair.Find("a"), &pair.second);
    EXPECT_EQ(pair.Find("b"), nullptr);
}

TEST(Structure, PutsAChildInThePlaceOfOneWithItsKey)
{
    Pair pair(1, 2);
    Value<bool> other;
    pair.Register("z", pair.first);
    pair.Register("a", pair.second);

    pair.Register("z", other);

    EXPECT_EQ(KeysOf(pair), (std::vector<std::string>{"z", "a"}));
    EXPECT_EQ(pair.Find("z"), &other);
}

TEST(Structure, RemovesAChildAndDoesNothingForAnAbsentOne)
{
    Pair pair(1, 2);
    pair.Register("z", pair.first);
    pair.Register("a", pair.second);

    pair.Deregister("z");
    pair.Deregister("z");

    EXPECT_EQ(KeysOf(pair), (std::vector<std::string>{"a"}));
}

TEST(Structure, RefusesAPlaceBehindTheLastChild)
{
    Pair pair(1, 2);
    pair.Register("a", pair.first);

    EXPECT_EQ(RefusalOf([&] { pair.At(1); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { pair.KeyAt(1); }), (Refusal{-999, ""}));
}

TEST(Structure, CopiesChildrenByKeyAndPassesOverWhatTheOtherLacks)
{
    Pair target(1, 2);
    Pair source(10, 20);
    target.Register("a", target.first);
    target.Register("only here", target.second);
    source.Register("only there", source.first);
    source.Register("a", source.second);

    target.CopyValues(source);

    EXPECT_EQ(target.first, 20);
    EXPECT_EQ(target.second, 2);
    EXPECT_THROW(target.CopyValues(source.first), std::bad_cast);
}

TEST(Structure, ShowsItsTypeUnlessItIsBare)
{
    Structure const described(true);
    Structure const bare(false);

    ASSERT_EQ(KeysOf(*described.Schema()), (std::vector<std::string>{"type"}));
    EXPECT_EQ(dynamic_cast<Internal::NodeType&>(described.Schema()->At(0)).Get(), "object");
    EXPECT_EQ(bare.Schema()->Count(), 0u);
}

TEST(Structure, PassesWriteOnlyOnToItsChildren)
{
    Pair pair(1, 2);
    pair.Register("a", pair.first);

    pair.SetWriteOnly(true);

    EXPECT_TRUE(pair.first.IsWriteOnly());
    EXPECT_FALSE(pair.second.IsWriteOnly());
}

TEST(NodeSchema, TakesPutsAndDropsEntries)
{
    Value<bool> value;
    Value<std::string> hint("one");
    Value<std::string> otherHint("two");

    value.RegisterSchema("hint", hint);
    value.RegisterSchema("hint", otherHint, false); // in the place of the first
    EXPECT_EQ(KeysOf(*value.Schema()), (std::vector<std::string>{"type", "hint"}));
    EXPECT_EQ(value.Schema()->Find("hint"), &otherHint);

    value.DeregisterSchema("hint");
    value.DeregisterSchema("hint");
    EXPECT_EQ(KeysOf(*value.Schema()), (std::vector<std::string>{"type"}));
}

TEST(NodeSchema, CopiesValuesOfEntriesThatBothHaveAndNoReferences)
{
    Value<bool> target;
    Value<bool> source(true);
    Value<std::string> targetHint("mine");
    Value<std::string> sourceHint("theirs");
    Value<std::string> extra("extra");
    target.RegisterSchema("hint", targetHint);
    source.RegisterSchema("hint", sourceHint);
    source.RegisterSchema("extra", extra);

    target.CopyValues(source);

    EXPECT_EQ(target.Schema()->Find("hint"), &targetHint);
    EXPECT_EQ(targetHint, "theirs");
    EXPECT_EQ(target.Schema()->Find("extra"), nullptr);
}

TEST(NodeSchema, MayOutliveWhatItRefersTo)
{
    Value<bool> value;
    {
        Value<std::string> hint;
        value.RegisterSchema("hint", hint);
        value.DeregisterSchema("hint");
    }

    EXPECT_EQ(value.Schema()->Find("hint"), nullptr);
}

TEST(ReferenceArray, RefersToStructuresInOrder)
{
    Structure one(true);
    Structure two(true);
    Structure three(true);
    Internal::ReferenceArray array;
    array.Add(&one);
    array.Add(&two);
    array.Add(&three);

    array.Remove(0);
    array.Pop();

    ASSERT_EQ(array.Count(), 1u);
    EXPECT_EQ(&array.At(0), &two);
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
}

TEST(ReferenceArray, RefusesWhatIsNotThere)
{
    Internal::ReferenceArray array;
    Value<bool> const stranger;

    EXPECT_EQ(RefusalOf([&] { array.Remove(0); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { array.Pop(); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { array.At(0); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([&] { array.Add(nullptr); }), (Refusal{-997, ""}));
    EXPECT_THROW(array.CopyValues(stranger), std::bad_cast);
}

} // namespace Zu::Properties
