#include "ZuApi/Params/StructBase.h"

#include "Support/Refusal.h"
#include "Support/SealedRecord.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <barrier>
#include <cstdlib>
#include <latch>
#include <memory>
#include <thread>
#include <typeinfo>

namespace Zu::Params
{

using Properties::JsonSerializer;
using ZuTest::Brush;
using ZuTest::Palette;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::Stroke;
using Json = nlohmann::json;

TEST(StructBase, GivesItsMembersTitleAndSortOrder)
{
    Brush const brush;

    EXPECT_EQ(brush.width.title, "Width");
    EXPECT_EQ(brush.name.title, "name"); // an empty title is replaced by the key
    EXPECT_EQ(brush.width.sortOrder, 0u);
    EXPECT_EQ(brush.name.sortOrder, 100u);
    EXPECT_EQ(brush.hard.sortOrder, 200u); // continues after the last member of the base
    EXPECT_EQ(brush.nextSortOrder, 300u);
}

TEST(StructBase, GivesEqualSortOrdersToRecordsOfOneClass)
{
    Palette const one;
    Palette const two;

    EXPECT_EQ(JsonSerializer::SerializeSchema(one), JsonSerializer::SerializeSchema(two));
    EXPECT_EQ(one.pen.sortOrder, 200u);
    EXPECT_EQ(one.pen.title, "Pen");
}

TEST(StructBase, GivesTheRegisteredMemberBack)
{
    Group group;
    Value<bool> member;

    EXPECT_EQ(&group.Register("member", "Member", member), &member);
}

TEST(StructBase, KeepsTitleAndSortOrderOfAMemberThatComesBack)
{
    Stroke stroke;

    stroke.Deregister("width");
    EXPECT_EQ(JsonSerializer::Serialize(stroke), (Json{{"name", ""}}));
    stroke.Register("width", stroke.width);

    EXPECT_EQ(JsonSerializer::Serialize(stroke), (Json{{"name", ""}, {"width", 1}}));
    EXPECT_EQ(stroke.width.title, "Width");
    EXPECT_EQ(stroke.width.sortOrder, 0u);
    EXPECT_EQ(stroke.nextSortOrder, 200u);
}

TEST(StructBase, ShowsItsTypeNameUnlessThatIsEmpty)
{
    Group const named("Point");
    Group const nameless("");

    EXPECT_EQ(JsonSerializer::SerializeSchema(named), (Json{{"type", "object"},
                                                            {"extendedType", "Point"},
                                                            {"title", ""},
                                                            {"sortOrder", 0},
                                                            {"properties", Json::object()}}));
    EXPECT_EQ(nameless.Schema()->Find("extendedType"), nullptr);
}

TEST(StructBase, CopiesMembersAttributesAndItsCounter)
{
    Brush source;
    source.width = 30;
    source.title = "Brush";
    source.extendedType = "Other";
    source.nextSortOrder = 900;
    source.EnableUsed(true).EnableReadOnly();
    Stroke target; // has only some of the members

    target.CopyValues(source);

    EXPECT_EQ(target.width, 30);
    EXPECT_EQ(target.title, "Brush");
    EXPECT_EQ(target.extendedType, "Other");
    EXPECT_EQ(target.nextSortOrder, 900u);
    EXPECT_NE(target.Schema()->Find("used"), nullptr);
    EXPECT_NE(target.Schema()->Find("readOnly"), nullptr);
}

TEST(StructBase, LeavesMembersThatTheOtherLacks)
{
    Stroke const source;
    Brush target;
    target.hard = true;

    target.CopyValues(source);

    EXPECT_TRUE(target.hard.Get());
}

TEST(StructBase, CopiesAVisibilityWithoutEnteringIt)
{
    Stroke source;
    source.EnableVisibility(true).visibility->Set(5);
    Stroke target;

    target.CopyValues(source);

    EXPECT_TRUE(target.IsVisibilityEnabled());
    EXPECT_EQ(target.visibility->Get(), 5u);
    EXPECT_EQ(target.Schema()->Find("visibility"), nullptr);
    EXPECT_EQ(RefusalOf([&] { target.EnableUsed(true); }),
              (Refusal{-997, "Visibility is already enabled, cannot enable used."}));
}

TEST(StructBase, HasEitherUsedOrVisibility)
{
    Stroke usedOne;
    Stroke visibleOne;
    usedOne.EnableUsed(true);
    visibleOne.EnableVisibility(true);

    EXPECT_EQ(RefusalOf([&] { usedOne.EnableVisibility(true); }),
              (Refusal{-997, "Used is already enabled, cannot enable visibility."}));
    EXPECT_EQ(RefusalOf([&] { visibleOne.EnableUsed(true); }),
              (Refusal{-997, "Visibility is already enabled, cannot enable used."}));
    EXPECT_NO_THROW(usedOne.EnableVisibility(false));
    EXPECT_EQ(RefusalOf([&] { usedOne.ClearVisibility(); }),
              (Refusal{-997, "Visibility not enabled, cannot clear visibility types"}));
}

TEST(StructBase, RefusesToCopyWhatIsNoRecord)
{
    Stroke stroke;
    Value<bool> const value;
    Properties::Structure const bare(false);

    EXPECT_THROW(stroke.CopyValues(value), std::bad_cast);
    EXPECT_THROW(stroke.CopyValues(bare), std::bad_cast);
}

TEST(StructBase, SaysNothingAboutItsMembersWithItsReadOnlyMark)
{
    Stroke stroke;
    stroke.EnableReadOnly().readOnly = true;
    Json const document{{"width", 9}};

    JsonSerializer::Validate(stroke, document);
    JsonSerializer::Deserialize(stroke, document);

    EXPECT_EQ(stroke.width, 9);
}

TEST(StructBase, IsDescribedToManyReadersAtOnce)
{
    constexpr int READERS = 4;
    Palette palette;
    palette.strokes.Resize(20);
    palette.pen.EnableVisibility(true);
    Palette const& shared = palette;
    std::latch begin(READERS);
    std::vector<Json> schemas(READERS);
    std::vector<std::thread> readers;
    for (Json& schema : schemas)
    {
        readers.emplace_back([&] {
            begin.arrive_and_wait();
            schema = JsonSerializer::SerializeSchema(shared);
            EXPECT_EQ(shared.pen.width.GetMinimum().Get(), 0);
            EXPECT_EQ(JsonSerializer::Serialize(shared).at("strokes").size(), 20u);
        });
    }
    for (auto& reader : readers)
    {
        reader.join();
    }

    for (Json const& schema : schemas)
    {
        EXPECT_EQ(schema, schemas.front());
    }
    EXPECT_EQ(schemas.front().at("properties").at("strokes").at("items").size(), 20u);
}

TEST(StructBase, StoresNothingInAMemberThatIsRegisteredAgainAsItStands)
{
    std::string const longTitle(256, 't'); // no literal: the text pool does not keep it for good
    ZuTest::SealedRecord<Stroke> stroke;
    Group().Register("pen", longTitle, stroke.Get());
    ASSERT_TRUE(stroke.Seal());

    EXPECT_EXIT(
        {
            Group().Register("pen", longTitle, stroke.Get());
            std::_Exit(stroke.Get().title == longTitle ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(StructBase, StoresNothingWhenItIsRead)
{
    ZuTest::SealedRecord<Palette> palette;
    palette.Get().strokes.Resize(2);
    Json const document = JsonSerializer::Serialize(palette.Get());
    Json const schema = JsonSerializer::SerializeSchema(palette.Get()); // the first call makes the nodes of the schema
    ASSERT_TRUE(palette.Seal());

    EXPECT_EXIT(
        {
            bool const isSame = JsonSerializer::Serialize(palette.Get()) == document &&
                                JsonSerializer::SerializeSchema(palette.Get()) == schema;
            std::_Exit(isSame ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(StructBase, KeepsTheNodesOfAMemberThatIsRegisteredAgainBesideReaders)
{
    constexpr int ROUNDS = 2'000;
    std::string const longTitle(256, 't');
    std::unique_ptr<Stroke> stroke;
    int lostNodes = 0;
    auto const beginRound = [&]() noexcept {
        if (stroke != nullptr)
        {
            Properties::Structure const& schema = *stroke->Schema();
            lostNodes += schema.Find("title") != &stroke->title.Node() ? 1 : 0;
            lostNodes += schema.Find("sortOrder") != &stroke->sortOrder.Node() ? 1 : 0;
        }
        stroke = std::make_unique<Stroke>();
        Group().Register("pen", longTitle, *stroke);
    };
    beginRound();
    std::barrier round(2, beginRound);
    std::thread plainReader([&] {
        for (int i = 0; i < ROUNDS; ++i)
        {
            for (int read = 0; read < 20; ++read) // repeated, so that some reads meet the creation of the schema
            {
                Group().Register("pen", longTitle, *stroke);
            }
            EXPECT_EQ(stroke->title, longTitle);
            round.arrive_and_wait();
        }
    });
    for (int i = 0; i < ROUNDS; ++i)
    {
        EXPECT_EQ(JsonSerializer::Serialize(*stroke->Schema()).at("title"), longTitle);
        round.arrive_and_wait();
    }
    plainReader.join();

    EXPECT_EQ(lostNodes, 0);
}

} // namespace Zu::Params
