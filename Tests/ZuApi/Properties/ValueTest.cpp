#include "ZuApi/Properties/Value.h"

#include "Support/Refusal.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Zu::Properties
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// The names that the schema of a plain value shows.
template <typename T>
std::vector<std::string> SchemaKeys()
{
    Value<T> const value;
    std::vector<std::string> keys;
    for (uint64 i = 0; i < value.Schema()->Count(); ++i)
    {
        keys.push_back(value.Schema()->KeyAt(i));
    }
    return keys;
}

} // namespace

TEST(PropertiesValue, ShowsTheOldValueToItsObservers)
{
    Value<uint32> value(5);
    std::vector<uint32> seen;
    value.AddObserver([&seen](Node& node) { seen.push_back(dynamic_cast<Value<uint32>&>(node).Get()); });

    value.Set(7);
    value = 9;

    EXPECT_EQ(seen, (std::vector<uint32>{5, 7}));
    EXPECT_EQ(value.Get(), 9u);
}

TEST(PropertiesValue, IsModifiedWhereItIsAndShowsTheOldValueToItsObservers)
{
    Value<std::vector<std::string>> value;
    auto const append = [](std::vector<std::string>& texts) { texts.emplace_back("more"); };
    value.Modify(append);
    std::vector<std::size_t> seen;
    value.AddObserver([&seen, &value](Node&) { seen.push_back(value.Get().size()); });

    value.Modify(append);

    EXPECT_EQ(seen, std::vector<std::size_t>{1});
    EXPECT_EQ(value.Get(), (std::vector<std::string>{"more", "more"}));
}

TEST(PropertiesValue, StaysAsItWasWhenAnObserverOfAModificationThrows)
{
    Value<std::vector<std::string>> value;
    value.AddObserver([](Node&) { ZU_THROW(Status::BUSY); });

    EXPECT_EQ(RefusalOf([&] { value.Modify([](auto& texts) { texts.emplace_back("more"); }); }),
              (Refusal{Status::BUSY, ""}));
    EXPECT_TRUE(value.Get().empty());
}

TEST(PropertiesValue, RunsNoObserverForAnEqualValue)
{
    Value<std::string> value("same");
    int runs = 0;
    value.AddObserver([&runs](Node&) { ++runs; });

    value.Set("same");
    value = std::string("same");

    EXPECT_EQ(runs, 0);
}

TEST(PropertiesValue, KeepsItsValueWhenAnObserverThrows)
{
    Value<int32> value(1);
    value.AddObserver([](Node&) { ZU_THROW(Status::BUSY); });

    EXPECT_EQ(RefusalOf([&] { value.Set(2); }), (Refusal{-976, ""}));

    EXPECT_EQ(value.Get(), 1);
}

TEST(PropertiesValue, StoresWhatItWasGivenEvenWhenAnObserverChangesTheSource)
{
    Value<std::string> source("a text that is too long for the string itself");
    Value<std::string> value;
    value.AddObserver([&source](Node&) { source.Set(""); });

    value.Set(source.Get());

    EXPECT_EQ(value.Get(), "a text that is too long for the string itself");
}

TEST(PropertiesValue, RunsObserversInOrderAndSurvivesOneThatRemovesItself)
{
    Value<bool> value;
    std::string order;
    Node::ObserverId second;
    value.AddObserver([&order](Node&) { order += "1"; });
    second = value.AddObserver([&](Node& node) {
        order += "2";
        node.RemoveObserver(second);
    });
    value.AddObserver([&order](Node&) { order += "3"; });

    value.Set(true);
    value.Set(false);

    EXPECT_EQ(order, "12313");
}

TEST(PropertiesValue, WritesItsStoredValueWithoutObserversThroughTheMutableRawValue)
{
    Value<uint16> value(1);
    int runs = 0;
    value.AddObserver([&runs](Node&) { ++runs; });

    value.RawValue() = 3;

    EXPECT_EQ(value.Get(), 3);
    EXPECT_EQ(runs, 0);
}

TEST(PropertiesValue, ComparesWithValuesAndWithWhatItHolds)
{
    Value<uint16> const five(5);
    Value<uint16> const six(6);
    Value<std::string> const text("text");

    EXPECT_TRUE(five == uint16{5});
    EXPECT_TRUE(five == 5);
    EXPECT_TRUE(five != 65541); // not cut to 16 bits
    EXPECT_FALSE(five == -65531);
    EXPECT_TRUE(five != six);
    EXPECT_FALSE(five == six);
    EXPECT_TRUE(text == "text");
    EXPECT_TRUE(text != std::string("other"));
}

TEST(PropertiesValue, NamesItsJsonType)
{
    EXPECT_EQ(Value<bool>::type.Get(), "boolean");
    EXPECT_EQ(Value<std::string>::type.Get(), "string");
    EXPECT_EQ(Value<double>::type.Get(), "number");
    EXPECT_EQ(Value<uint16>::type.Get(), "integer");
    EXPECT_EQ(Value<uint32>::type.Get(), "integer");
    EXPECT_EQ(Value<uint64>::type.Get(), "integer");
    EXPECT_EQ(Value<int32>::type.Get(), "integer");
    EXPECT_EQ(Value<ZuTest::Colour>::type.Get(), "integer");
    EXPECT_EQ(Value<std::vector<std::string>>::type.Get(), "array");
    EXPECT_EQ(Value<std::vector<ZuTest::Colour>>::type.Get(), "array");
    EXPECT_EQ(Value<std::vector<std::string>>::itemType.Get(), "string");
    EXPECT_EQ(Value<std::vector<ZuTest::Colour>>::itemType.Get(), "integer");
    EXPECT_EQ(Value<bool>::itemType.Get(), "");
}

TEST(PropertiesValue, ShowsItsTypeInItsSchemaAndThatOfItsItems)
{
    Value<std::vector<std::string>> const texts;

    auto const* const items = dynamic_cast<Structure const*>(texts.Schema()->Find("items"));

    EXPECT_EQ(SchemaKeys<bool>(), (std::vector<std::string>{"type"}));
    EXPECT_EQ(SchemaKeys<std::vector<std::string>>(), (std::vector<std::string>{"type", "items"}));
    ASSERT_NE(items, nullptr);
    ASSERT_EQ(items->Count(), 1u);
    EXPECT_EQ(items->KeyAt(0), "type");
    EXPECT_EQ(dynamic_cast<Internal::NodeType const&>(items->At(0)).Get(), "string");
}

TEST(PropertiesValue, CopiesTheEffectiveValueAndRefusesAnotherType)
{
    Value<uint16> value;
    Value<uint16> const source(3);
    Value<uint32> const stranger(4);

    value.CopyValues(source);

    EXPECT_EQ(value.Get(), 3);
    EXPECT_THROW(value.CopyValues(stranger), std::bad_cast);
    EXPECT_EQ(value.Get(), 3);
}

} // namespace Zu::Properties
