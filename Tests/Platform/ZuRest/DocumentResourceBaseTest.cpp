#include "ZuRest/DocumentResourceBase.h"

#include "Support/Refusal.h"
#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"
#include "ZuRest/StreamResourceBase.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuRest
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

using Json = nlohmann::json;

struct Pair final : Zu::Params::Group
{
    Pair()
    {
        Register("left", "", left);
        Register("right", "", right);
        right.SetMinimum(10);
    }

    Zu::Params::Value<uint32> left{1};
    Zu::Params::Value<uint32> right{20};
};

class PairResource final : public DocumentResourceBase
{
public:
    using DocumentResourceBase::NodeFromJson;
    using DocumentResourceBase::NodeFromJsonAndValidate;
    using DocumentResourceBase::NodeToJson;
    using DocumentResourceBase::ValidateJsonFromNode;

    Json Document(RequestInfo const& request, ResponseInfo& /*response*/) override
    {
        return NodeToJson(pair, request);
    }

    Pair pair;
};

class StreamingPair final : public StreamResourceBase, public DocumentResourceBase
{
public:
    Json Document(RequestInfo const& /*request*/, ResponseInfo& /*response*/) override
    {
        return {};
    }

    IStreamableResource* StreamableProvider() override
    {
        return this;
    }

    uint32 StartStream(IStreamReceiver* /*receiver*/, RequestInfo const& /*request*/) override
    {
        return 0;
    }

    void StopStream(uint32 /*streamId*/) override
    {
    }
};

} // namespace

TEST(DocumentResourceBase, ShowsItsDocumentFaceAndNoOther)
{
    PairResource resource;

    EXPECT_EQ(resource.DocumentProvider(), &resource);
    EXPECT_EQ(resource.ParentProvider(), nullptr);
    EXPECT_EQ(resource.CallableProvider(), nullptr);
    EXPECT_EQ(resource.StreamableProvider(), nullptr);
}

TEST(DocumentResourceBase, StandsBesideTheStreamingBase)
{
    StreamingPair resource;
    IResource& asResource = resource;

    EXPECT_EQ(asResource.DocumentProvider(), &resource);
    EXPECT_EQ(asResource.StreamableProvider(), &resource);
    EXPECT_TRUE(resource.StartEvent().Empty());
}

TEST(DocumentResourceBase, AddsTheSchemaWhenItIsAskedFor)
{
    PairResource resource;

    Json const plain = PairResource::NodeToJson(resource.pair, RequestInfo("/pair", {}, false));
    Json const described = PairResource::NodeToJson(resource.pair, RequestInfo("/pair", {}, true));

    EXPECT_EQ(plain, Json::parse(R"({"left": 1, "right": 20})"));
    EXPECT_EQ(described.at("left"), 1);
    EXPECT_EQ(described.at("_schema").at("properties").at("right").at("minimum"), 10);
}

TEST(DocumentResourceBase, AddsNoSchemaToWhatIsNoObject)
{
    Zu::Params::Value<uint32> const number{5};

    EXPECT_EQ(PairResource::NodeToJson(number, RequestInfo("/number", {}, true)), 5);
}

TEST(DocumentResourceBase, ReadsWithoutValidation)
{
    PairResource resource;

    PairResource::NodeFromJson(resource.pair, Json{{"right", 3}});

    EXPECT_EQ(resource.pair.right.Get(), 3U);
}

TEST(DocumentResourceBase, ValidatesWithoutReading)
{
    PairResource const resource;

    EXPECT_EQ(RequestInfo("/pair", {}, false).FindKey("pair"), nullptr);
    EXPECT_THROW(PairResource::ValidateJsonFromNode(resource.pair, Json{{"left", 7}, {"right", 3}}), Zu::Exception);
    PairResource::ValidateJsonFromNode(resource.pair, Json{{"left", 7}});

    EXPECT_EQ(resource.pair.left.Get(), 1U);
    EXPECT_EQ(resource.pair.right.Get(), 20U);
}

TEST(DocumentResourceBase, ReadsNothingOfWhatItRefuses)
{
    PairResource resource;

    EXPECT_THROW(PairResource::NodeFromJsonAndValidate(resource.pair, Json{{"left", 7}, {"right", 3}}), Zu::Exception);
    EXPECT_EQ(resource.pair.left.Get(), 1U);
    PairResource::NodeFromJsonAndValidate(resource.pair, Json{{"left", 7}, {"right", 30}});

    EXPECT_EQ(resource.pair.left.Get(), 7U);
    EXPECT_EQ(resource.pair.right.Get(), 30U);
}

TEST(DocumentResourceBase, RefusesUpdatesWithoutAText)
{
    PairResource resource;

    EXPECT_EQ(RefusalOf([&] { resource.UpdateDocument(RequestInfo("/pair", {}, false), Json::object()); }),
              (Refusal{-983, ""}));
}

} // namespace ZuRest
