#include "Support/FailAtEachAllocation.h"
#include "Support/ResourceFixture.h"
#include "ZuControl/Protocol/ControlResource.h"

namespace ZuControl::Protocol
{

using OutOfMemoryUpdate = ZuTest::ResourceFixture;

TEST_F(OutOfMemoryUpdate, ChangesNothingOrLeavesItsBracketForTheHostToClose)
{
    ZuTest::FakeControlInstance& instance = manager.Put("a");
    auto const params = std::make_shared<ZuTest::NumbersGroup>();
    instance.params = params;
    ControlResource resource(manager);
    ZuRest::RequestInfo const request = Request({{"protocol", "a"}});
    Json const body = {{"parameters", {{"a", 7}, {"b", 70}}}};

    uint64 const allocations = ZuTest::FailAtEachAllocation(
        [&] {
            params->a.Set(1);
            params->b.Set(20);
            calls.Clear();
        },
        [&] { resource.UpdateDocument(request, body); },
        [&](bool isRefused) {
            bool const isOld = params->a.Get() == 1 && params->b.Get() == 20;
            bool const isNew = params->a.Get() == 7 && params->b.Get() == 70;
            bool const isClosed = calls.Count("BeginUpdateParameters") == calls.Count("EndUpdateParameters");
            EXPECT_TRUE(isOld || isNew || !isClosed);
            EXPECT_TRUE(isRefused || (isNew && isClosed));
        });
    EXPECT_GT(allocations, 0u);
}

} // namespace ZuControl::Protocol
