#include "ZuApi/JsonTextWriter.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace Zu::Properties
{

namespace
{

using Json = nlohmann::json;

std::string DumpOf(Json const& value)
{
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

TEST(JsonTextWriter, SeesEachByteWhereverItStands)
{
    JsonTextWriter writer;
    for (std::size_t size = 1; size <= 20; ++size)
    {
        for (std::size_t place = 0; place < size; ++place)
        {
            for (unsigned byte = 0; byte < 256; ++byte)
            {
                std::string text(size, 'x');
                text[place] = static_cast<char>(byte);
                writer.WriteString(text);
                ASSERT_EQ(writer.Take(), DumpOf(text)) << size << ", " << place << ", " << byte;
            }
        }
    }
}

TEST(JsonTextWriter, SeparatesMembersAndElements)
{
    JsonTextWriter writer;
    writer.BeginObject();
    writer.NextMember("a \"b\"");
    writer.BeginArray();
    writer.NextElement();
    writer.BeginArray();
    writer.EndArray();
    writer.NextElement();
    writer.BeginObject();
    writer.EndObject();
    writer.NextElement();
    writer.WriteText("[{");
    writer.NextElement();
    writer.WriteBool(false);
    writer.EndArray();
    writer.NextMember("");
    writer.WriteJson("null");
    writer.NextLabelledMember("\"c\":");
    writer.WriteInt32(-1);
    writer.EndObject();

    EXPECT_EQ(writer.Take(), R"({"a \"b\"":[[],{},"[{",false],"":null,"c":-1})");
}

TEST(JsonTextWriter, WritesTheLongestNumbers)
{
    JsonTextWriter writer;
    writer.WriteInt64(std::numeric_limits<int64>::min());
    writer.WriteJson(" ");
    writer.WriteUint64(std::numeric_limits<uint64>::max());
    writer.WriteJson(" ");
    writer.WriteInt32(std::numeric_limits<int32>::min());
    writer.WriteJson(" ");
    writer.WriteUint32(std::numeric_limits<uint32>::max());
    writer.WriteJson(" ");
    writer.WriteUint16(std::numeric_limits<uint16>::max());

    EXPECT_EQ(writer.Take(), "-9223372036854775808 18446744073709551615 -2147483648 4294967295 65535");
}

TEST(JsonTextWriter, TakesBackWhatCameLast)
{
    JsonTextWriter writer;
    writer.BeginArray();
    writer.NextElement();
    writer.WriteBool(true);
    std::size_t const kept = writer.Size();
    writer.NextElement();
    writer.WriteText(std::string(5'000, 'x')); // far beyond the first room

    writer.Cut(kept);
    writer.EndArray();

    EXPECT_EQ(kept, 5U);
    EXPECT_EQ(writer.Written(1, 4), "true");
    EXPECT_EQ(writer.Take(), "[true]");
}

TEST(JsonTextWriter, BeginsAnewWhenItsTextIsTaken)
{
    JsonTextWriter writer;
    EXPECT_EQ(writer.Take(), "");
    for (std::size_t const size : {std::size_t{0}, std::size_t{3}, std::size_t{10'000}, std::size_t{7}})
    {
        std::string const text(size, 'y');
        writer.WriteString(text);
        EXPECT_EQ(writer.Size(), size + 2);
        EXPECT_EQ(writer.Take(), '"' + text + '"');
    }
}

} // namespace Zu::Properties
