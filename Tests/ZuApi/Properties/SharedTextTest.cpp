#include "ZuApi/Properties/SharedText.h"

#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <thread>

namespace Zu::Properties
{

using Json = nlohmann::json;

TEST(SharedText, IsReadAndWrittenLikeAnyText)
{
    SharedText text;
    SharedText other;

    EXPECT_EQ(JsonSerializer::Serialize(text), "");
    JsonSerializer::Deserialize(text, "127.0.0.1:1502");
    EXPECT_EQ(text.Get(), "127.0.0.1:1502");
    EXPECT_EQ(JsonSerializer::SerializeSchema(text), Json({{"type", "string"}}));
    EXPECT_THROW(JsonSerializer::Validate(text, 1), Json::type_error);
    other.CopyValues(text);
    EXPECT_EQ(JsonSerializer::Serialize(other), "127.0.0.1:1502");
}

TEST(SharedText, IsReadWholeWhileItChanges)
{
    SharedText text;
    text.Set(std::string(40, 'a'));
    std::thread writer([&text] {
        for (int i = 0; i < 5000; ++i)
        {
            text.Set(std::string(40, i % 2 == 0 ? 'a' : 'b'));
        }
    });

    for (int i = 0; i < 5000; ++i)
    {
        std::string const read = text.Get();
        EXPECT_EQ(read, std::string(40, read.front()));
    }
    writer.join();
}

} // namespace Zu::Properties
