#include "Support/AllocationFailure.h"
#include "Support/ResourceFixture.h"
#include "ZuControl/Protocol/ControlResource.h"

namespace ZuControl::Protocol
{

using OutOfMemoryUpdate = ZuTest::ResourceFixture;

TEST_F(OutOfMemoryUpdate, ChangesNothingOrLeavesItsBracketForTheHostToClose)
{
    constexpr uint64 MOST_ALLOCATIONS = 10'000;
    ZuTest::FakeControlInstance& instance = manager.Put("a");
    auto const params = std::make_shared<ZuTest::NumbersGroup>();
    instance.params = params;
    ControlResource resource(manager);
    ZuRest::RequestInfo const request = Request({{"protocol", "a"}});
    Json const body = {{"parameters", {{"a", 7}, {"b", 70}}}};

    uint64 number = 0;
    for (bool hasFailed = true; hasFailed && number < MOST_ALLOCATIONS;)
    {
        SCOPED_TRACE("allocation " + std::to_string(++number));
        params->a.Set(1);
        params->b.Set(20);
        calls.Clear();
        bool isRefused = false;
        {
            ZuTest::AllocationFailure const failure(number);
            try
            {
                resource.UpdateDocument(request, body);
            }
            catch (std::exception const&)
            {
                isRefused = true;
            }
            hasFailed = failure.HasHappened();
        }

        bool const isOld = params->a.Get() == 1 && params->b.Get() == 20;
        bool const isNew = params->a.Get() == 7 && params->b.Get() == 70;
        bool const isClosed = calls.Count("BeginUpdateParameters") == calls.Count("EndUpdateParameters");
        EXPECT_TRUE(isOld || isNew || !isClosed);
        EXPECT_TRUE(isRefused ? hasFailed : isNew && isClosed);
    }
    EXPECT_GT(number, 1u);
    EXPECT_LT(number, MOST_ALLOCATIONS);
}

} // namespace ZuControl::Protocol
