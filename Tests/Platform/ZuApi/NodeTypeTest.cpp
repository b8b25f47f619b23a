#include "ZuApi/NodeType.h"

#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Zu::Properties::Internal
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(NodeType, CannotBeMadeWriteOnly)
{
    NodeType node("string");

    EXPECT_EQ(RefusalOf([&] { node.SetWriteOnly(true); }), (Refusal{-982, ""}));
    EXPECT_EQ(RefusalOf([&] { node.SetWriteOnly(false); }), (Refusal{1, ""}));

    EXPECT_FALSE(node.IsWriteOnly());
}

TEST(NodeType, CannotBeReadIn)
{
    NodeType node("string");

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Deserialize(node, nlohmann::json("number")); }), (Refusal{-996, ""}));
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(node, nlohmann::json("string")); }), (Refusal{-996, ""}));

    EXPECT_EQ(node.Get(), "string");
}

TEST(NodeType, CopiesTheName)
{
    NodeType node("string");

    node.CopyValues(NodeType("number"));

    EXPECT_EQ(node.Get(), "number");
    EXPECT_EQ(JsonSerializer::Serialize(node), nlohmann::json("number"));
}

TEST(NodeType, KeepsItsNameWhenItIsShared)
{
    NodeType& shared = NodeType::Shared(NodeType::Kind::BOOLEAN);

    shared.CopyValues(NodeType("boolean"));
    EXPECT_EQ(RefusalOf([&] { shared.CopyValues(NodeType("number")); }),
              (Refusal{-982, "The type of a value cannot be changed."}));

    EXPECT_EQ(shared.Get(), "boolean");
}

TEST(NodeType, DescribesItselfWithNothing)
{
    EXPECT_EQ(NodeType("string").Schema()->Count(), 0u);
}

} // namespace Zu::Properties::Internal
