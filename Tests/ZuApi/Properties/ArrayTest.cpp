#include "ZuApi/Properties/Array.h"

#include "Support/Refusal.h"
#include "ZuApi/Params/Palette.h"
#include "ZuApi/ReferenceArray.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace Zu::Properties
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::Stroke;

namespace
{

class PropertiesArray : public testing::Test
{
protected:
    void Observe()
    {
        array.AddObserver([this](Node& node) { counts.push_back(dynamic_cast<Array<Stroke>&>(node).Count()); });
    }

    /// Sets the widths of the elements to 1, 2 and so on.
    void Fill(uint16 count)
    {
        array.Resize(count);
        for (uint16 i = 0; i < count; ++i)
        {
            array.At(i).width = static_cast<uint16>(i + 1);
        }
    }

    void ExpectWidths(std::vector<uint16> const& expected) const
    {
        std::vector<uint16> widths;
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            widths.push_back(array[i].width);
        }
        EXPECT_EQ(widths, expected);
    }

    /// Expects that the schema refers to the schemas of the present elements, in order.
    void ExpectItemsInStep() const
    {
        auto const& items = dynamic_cast<Internal::ReferenceArray const&>(*array.Schema()->Find("items"));
        ASSERT_EQ(items.Count(), array.Count());
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            EXPECT_EQ(&items.At(i), array[i].Schema());
        }
    }

    Array<Stroke> array;
    std::vector<uint64> counts; // the counts that the observers read
};

} // namespace

TEST_F(PropertiesArray, RunsItsObserversOnceBeforeItGrowsAndBehindEachNewElement)
{
    Observe();

    array.Resize(3);

    EXPECT_EQ(counts, (std::vector<uint64>{0, 1, 2, 3}));
}

TEST_F(PropertiesArray, RunsItsObserversOnceBeforeItShrinks)
{
    Fill(3);
    Observe();

    array.Resize(1);

    EXPECT_EQ(counts, (std::vector<uint64>{3}));
    ExpectWidths({1});
}

TEST_F(PropertiesArray, RunsNoObserverForThePresentCount)
{
    Fill(2);
    Observe();

    array.Resize(2);

    EXPECT_TRUE(counts.empty());
}

TEST_F(PropertiesArray, RemovesOneElementBehindItsObservers)
{
    Fill(3);
    Observe();

    array.Remove(1);

    ExpectWidths({1, 3});
    EXPECT_EQ(counts, (std::vector<uint64>{3}));
}

TEST_F(PropertiesArray, RefusesAnIndexBehindTheLast)
{
    Fill(2);
    Observe();

    EXPECT_EQ(RefusalOf([this] { array.Remove(2); }), (Refusal{-999, ""}));
    EXPECT_EQ(RefusalOf([this] { array.At(2); }), (Refusal{-999, ""}));

    EXPECT_TRUE(counts.empty());
    ExpectWidths({1, 2});
}

TEST_F(PropertiesArray, ClearsBehindItsObservers)
{
    Fill(2);
    Observe();

    array.Clear();

    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(counts, (std::vector<uint64>{2}));
}

TEST_F(PropertiesArray, KeepsItsSchemaInStepOnceThatIsMade)
{
    Fill(2);
    ExpectItemsInStep();

    array.Resize(5);
    ExpectItemsInStep();
    array.Remove(0);
    ExpectItemsInStep();
    array.Resize(1);
    ExpectItemsInStep();
    array.Clear();
    ExpectItemsInStep();
}

TEST_F(PropertiesArray, CopiesTheElementsAndNotTheirSchemas)
{
    Fill(3);
    Array<Stroke> source;
    source.Resize(2);
    source[0].width = 70;
    source[1].width = 80;
    array.Schema();
    source.Schema();

    array.CopyValues(source);

    ExpectWidths({70, 80});
    ExpectItemsInStep();
}

TEST_F(PropertiesArray, RefusesToCopyWhatIsNoArray)
{
    Value<bool> const stranger;

    EXPECT_THROW(array.CopyValues(stranger), std::bad_cast);
}

TEST_F(PropertiesArray, StopsACopyWhenAnObserverTakesElementsAway)
{
    Array<Stroke> source;
    source.Resize(2);
    source[0].width = 9; // differs, so that the observer below runs
    array.Resize(2);
    array[0].width.AddObserver([this](Node&) { array.Remove(1); });

    EXPECT_EQ(RefusalOf([&] { array.CopyValues(source); }), (Refusal{-999, ""}));

    ExpectWidths({9});
}

TEST_F(PropertiesArray, MakesElementsWithAFactoryOfItsOwn)
{
    Array<Stroke> made([] {
        auto stroke = std::make_unique<Stroke>();
        stroke->width = 44;
        return stroke;
    });
    Array<Stroke> broken([] { return std::unique_ptr<Stroke>(); });

    EXPECT_EQ(made.Add().width, 44);
    EXPECT_EQ(RefusalOf([&] { broken.Resize(1); }), (Refusal{-997, "The factory of an array makes no elements."}));
    EXPECT_EQ(broken.Count(), 0u);
}

} // namespace Zu::Properties
