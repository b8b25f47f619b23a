#include "ZuApi/Params/Array.h"

#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <typeinfo>

namespace Zu::Params
{

using Properties::JsonSerializer;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::Stroke;
using Json = nlohmann::json;

TEST(ParamsArray, DescribesItselfAndItsElements)
{
    Array<Stroke> array;
    array.title = "Strokes";
    array.sortOrder = 200;
    array.EnableReadOnly().EnableUsed(true);

    EXPECT_EQ(JsonSerializer::SerializeSchema(array), (Json{{"type", "array"},
                                                            {"title", "Strokes"},
                                                            {"sortOrder", 200},
                                                            {"readOnly", false},
                                                            {"used", false},
                                                            {"items", Json::array()}}));
    array.Add();
    EXPECT_EQ(JsonSerializer::SerializeSchema(array).at("items"),
              Json::array({JsonSerializer::SerializeSchema(Stroke())}));
}

TEST(ParamsArray, HasEitherUsedOrVisibility)
{
    Array<Stroke> usedOne;
    Array<Stroke> visibleOne;
    usedOne.EnableUsed(true);
    visibleOne.EnableVisibility(true);

    EXPECT_EQ(RefusalOf([&] { usedOne.EnableVisibility(true); }),
              (Refusal{-997, "Used is already enabled, cannot enable visibility."}));
    EXPECT_EQ(RefusalOf([&] { visibleOne.EnableUsed(true); }),
              (Refusal{-997, "Visibility is already enabled, cannot enable used."}));
    EXPECT_NO_THROW(usedOne.EnableVisibility(false));
    EXPECT_NE(visibleOne.Schema()->Find("visibility"), nullptr);
}

TEST(ParamsArray, CopiesElementsAttributesAndTypeName)
{
    Array<Stroke> source;
    source.Add().width = 12;
    source.title = "Strokes";
    source.extendedType = "Stroke";
    source.EnableVisibility(true).visibility->Set(3);
    Array<Stroke> array;

    array.CopyValues(source);

    ASSERT_EQ(array.Count(), 1u);
    EXPECT_EQ(array[0].width, 12);
    EXPECT_EQ(array.title, "Strokes");
    EXPECT_EQ(array.extendedType, "Stroke");
    EXPECT_TRUE(array.IsVisibilityEnabled());
    EXPECT_EQ(array.visibility->Get(), 3u);
    EXPECT_EQ(array.Schema()->Find("visibility"), nullptr); // a copy does not enter it
    EXPECT_EQ(array.Schema()->Find("extendedType"), nullptr);
}

TEST(ParamsArray, RefusesACopyOfAnArrayOfOtherElements)
{
    Array<Stroke> array;
    Array<ZuTest::Palette> const stranger;

    EXPECT_THROW(array.CopyValues(stranger), std::bad_cast);
}

} // namespace Zu::Params
