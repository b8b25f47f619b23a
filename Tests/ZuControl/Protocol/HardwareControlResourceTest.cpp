#include "ZuControl/Protocol/HardwareControlResource.h"

#include "Support/ResourceFixture.h"

#include <stdexcept>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class HardwareControlResourceTest : public ZuTest::ResourceFixture
{
protected:
    HardwareControlResource resource{manager};
};

TEST_F(HardwareControlResourceTest, ListsTwoDevicesWhateverThereIs)
{
    EXPECT_EQ(resource.Document(Request({}), response), Json::object());

    EXPECT_EQ(ReferencesOf(response),
              (Calls{"embed item[] /controls/hardware/0", "embed item[] /controls/hardware/1"}));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_F(HardwareControlResourceTest, ShowsADeviceWithItsScannerAndItsOutputsInOrder)
{
    EXPECT_EQ(resource.Document(Request({{"device", "a b"}}), response), Json::parse(R"({"label": ""})"));

    EXPECT_EQ(ReferencesOf(response),
              (Calls{"link zu::scanner /scanners/a b", "embed zu:digitalOutput /controls/hardware/a%20b/digital",
                     "embed zu:analogOutput /controls/hardware/a%20b/analog",
                     "embed zu:marletOutput /controls/hardware/a%20b/marlet",
                     "embed zu:serialOutput /controls/hardware/a%20b/serial"}));
}

TEST_F(HardwareControlResourceTest, ShowsItsSchemaWhenAsked)
{
    Json const document = resource.Document(Request({{"device", "0"}}, true), response);

    EXPECT_EQ(document, Json::parse(R"({"label": "", "_schema": {
        "type": "object", "properties": {"label": {"type": "string"}}}})"));
}

TEST_F(HardwareControlResourceTest, RefusesARequestWithOtherKeysAlone)
{
    EXPECT_EQ(CausesOf([this] {
                  resource.Document(Request({{"port", "0"}}), response);
              }),
              (std::vector<Refusal>{{0, "invalid map<K, T> key"}}));
    EXPECT_THROW(resource.Document(Request({{"port", "0"}}), response), std::out_of_range);
    EXPECT_EQ(ReferencesOf(response), Calls{});
}

TEST_F(HardwareControlResourceTest, RefusesEveryUpdate)
{
    EXPECT_EQ(RefusalOf([this] {
                  resource.UpdateDocument(Request({{"device", "0"}}), Json::parse(R"({"label": "x"})"));
              }),
              (Refusal{-983, ""}));
}

} // namespace ZuControl::Protocol
