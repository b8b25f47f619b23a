#include "ZuApi/JsonTextSerializer.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuApi/JsonTextWriter.h"
#include "ZuApi/Params/Palette.h"
#include "ZuApi/ReferenceArray.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <limits>

namespace Zu::Properties
{

namespace
{

/// Records with unordered keys, one nested in the other.
struct Nest : Structure
{
    Nest() : Structure(true)
    {
        Register("zeta", number);
        Register("b", text);
        Register("Ba", inner);
        Register("a \"key\"", flag);
        Register("texts", texts);
        Register("hidden", hidden);
        Register("large", large);
        Register("small", small);
        inner.Register("y", innerNumber);
        inner.Register("x", innerText);
        hidden.SetWriteOnly(true);
    }

    Value<double> number;
    Value<std::string> text;
    Structure inner{true};
    Value<bool> flag;
    Value<std::vector<std::string>> texts;
    Value<uint32> hidden;
    Value<uint64> large;
    Value<int32> small;
    Value<uint16> innerNumber;
    Value<std::string> innerText;
};

std::string TextOf(Node const& node)
{
    JsonTextWriter writer;
    writer.WriteJson("before ");
    JsonTextSerializer(writer).Write(node);
    return writer.Take();
}

std::string DumpOf(Node const& node)
{
    return "before " + JsonSerializer::Serialize(node).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

TEST(JsonTextSerializer, WritesWhatTheLibraryDumps)
{
    Nest nest;
    EXPECT_EQ(TextOf(nest), DumpOf(nest));

    nest.large = std::numeric_limits<uint64>::max();
    nest.small = std::numeric_limits<int32>::min();
    nest.flag = true;
    for (double const number : {0.1, -0.0, 1.0, 1e300, 1e-7, 12345678.9, std::numeric_limits<double>::infinity()})
    {
        nest.number = number;
        EXPECT_EQ(TextOf(nest), DumpOf(nest));
    }
    for (std::string const& text :
         {std::string("plain"), std::string("eight by"), std::string("\"\\/\b\f\n\r\t\x01\x7F"),
          std::string("\0zero", 5), std::string("\xC3\xA4\xE2\x82\xAC"), std::string("broken \xC3")})
    {
        nest.text = text;
        nest.innerText = text + text;
        nest.texts = std::vector<std::string>{text, "", text};
        EXPECT_EQ(TextOf(nest), DumpOf(nest));
    }
}

TEST(JsonTextSerializer, WritesArraysOfStructures)
{
    ZuTest::Palette palette;
    EXPECT_EQ(TextOf(palette), DumpOf(palette));

    JsonSerializer::Deserialize(palette, nlohmann::json::parse(R"({"strokes": [{"width": 2}, {"name": "thin"}, {}]})"));

    EXPECT_EQ(TextOf(palette), DumpOf(palette));
    EXPECT_NE(TextOf(palette).find("thin"), std::string::npos);
}

TEST(JsonTextSerializer, WritesStructuresThatAreReferredTo)
{
    Nest nest;
    Structure empty(true);
    Internal::ReferenceArray array;
    EXPECT_EQ(TextOf(array), "before []");

    array.Add(&empty);
    array.Add(&nest);

    EXPECT_EQ(TextOf(array), DumpOf(array));
    EXPECT_EQ(TextOf(array).rfind("before [{},{", 0), 0u);
}

TEST(JsonTextSerializer, KeepsRecordsOfManyClassesApart)
{
    Value<uint32> number(7);
    std::array<Structure, 7> records{Structure(true), Structure(true), Structure(true), Structure(true),
                                     Structure(true), Structure(true), Structure(true)};
    for (std::size_t i = 0; i + 1 < records.size(); ++i)
    {
        records[i].Register("same", number);
        records[i].Register("of " + std::to_string(i), number);
        records[i].Register("inner", records[i + 1]); // each stands at every depth
    }
    Internal::ReferenceArray array;
    for (std::size_t i = 0; i < 5 * records.size(); ++i)
    {
        array.Add(&records[3 * i % records.size()]);
    }

    EXPECT_EQ(TextOf(array), DumpOf(array));
}

TEST(JsonTextSerializer, LooksAtEachRecordForWhatIsWriteOnly)
{
    Nest open;
    Nest closed;
    closed.text.SetWriteOnly(true);
    closed.inner.SetWriteOnly(true);
    Internal::ReferenceArray array;
    for (Nest* const one : {&open, &closed, &open})
    {
        array.Add(one);
    }

    EXPECT_EQ(TextOf(array), DumpOf(array));
}

TEST(JsonTextSerializer, LeavesWriteOnlyValuesOut)
{
    Nest nest;

    EXPECT_EQ(TextOf(nest.hidden), "before null");
    EXPECT_EQ(TextOf(nest).find("hidden"), std::string::npos);
}

} // namespace Zu::Properties
