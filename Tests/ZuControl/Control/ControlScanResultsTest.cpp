#include "ZuControl/Control/ControlScanResults.h"

#include "Support/AllocationCounter.h"
#include "Support/CallLog.h"
#include "Support/Latch.h"
#include "Support/NoNewThreads.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ResultSets.h"
#include "ZuApi/Logging.h"
#include "ZuCore/ResultHub.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZuControl
{

using ZuTest::Items;
using ZuTest::MakeSet;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlScanResultsTest : public testing::Test
{
protected:
    using Id = std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId>;

    /// Adds a handler that records each set as "number:source0,source2".
    Id Listen(int32 protocol)
    {
        return results.AddResultHandler(
            [this, protocol](void* list) {
                for (Items const& set : ZuTest::BatchOf(list))
                {
                    std::string call = std::to_string(protocol) + ":";
                    for (ZuTest::Item const& item : set)
                    {
                        call += item.first + std::to_string(item.second);
                    }
                    calls.Add(call);
                }
            },
            ZuEthernetProtocol{protocol});
    }

    Id ListenWithAClient(int32 protocol, std::vector<std::string> sources)
    {
        Id const id = Listen(protocol);
        results.UpdateOutputMap(ZuEthernetProtocol{protocol}, std::move(sources));
        results.UpdateClientCount(ZuEthernetProtocol{protocol}, 1);
        return id;
    }

    void Publish(std::vector<std::string> const& sources, bool fromLiveSimulation = false)
    {
        auto const set = MakeSet(sources, fromLiveSimulation);
        results.ProcessResultSet(set.get());
    }

    static ScanOutputMap::Texts MapOf(std::vector<std::string> const& sources)
    {
        ScanOutputMap::Texts map;
        for (std::string const& source : sources)
        {
            ControlScanResults::AddToMap(map, source);
        }
        return map;
    }

    static void TakeOut(ScanOutputMap::Texts& map, std::string const& source)
    {
        ControlScanResults::RemoveFromMap(map, source);
    }

    ZuTest::CallLog calls;
    ControlScanResults results{nullptr, nullptr};
};

TEST_F(ControlScanResultsTest, MapsASourceByItsHashAndKeepsTheFirstTextOfANumber)
{
    // Two texts with the same 64-bit hash.
    std::string const first = "8yn0iYCKYHlIj4-BwPqk";
    std::string const second = "GReLUrM4wMqfg9yzV3KQ";
    ASSERT_EQ(ScanOutputMap::NumericId(first), ScanOutputMap::NumericId(second));

    EXPECT_EQ(MapOf({"foobar", first, "", second, "foobar"}),
              (ScanOutputMap::Texts{{0x85944171f73967e8u, "foobar"},
                                    {0xcbf29ce484222325u, ""},
                                    {ScanOutputMap::NumericId(first), first}}));
}

TEST_F(ControlScanResultsTest, TakesASourceOutOfAMapAndNoErrorWhenItIsNotThere)
{
    ScanOutputMap::Texts map = MapOf({"a", "b"});

    TakeOut(map, "a");
    TakeOut(map, "a");
    TakeOut(map, "c");

    EXPECT_EQ(map, MapOf({"b"}));
}

TEST_F(ControlScanResultsTest, GivesEachProtocolItsShareInTheOrderOfTheSet)
{
    ListenWithAClient(1, {"a", "c"});
    ListenWithAClient(2, {"b"});

    Publish({"c", "b", "a", "d"});

    EXPECT_TRUE(calls.WaitFor("1:c0a2"));
    EXPECT_TRUE(calls.WaitFor("2:b1"));
}

TEST_F(ControlScanResultsTest, DeliversADataSourceTwiceThatIsTwiceInTheSet)
{
    ListenWithAClient(1, {"a"});

    Publish({"a", "b", "a"});

    EXPECT_TRUE(calls.WaitFor("1:a0a2"));
}

TEST_F(ControlScanResultsTest, GivesNothingWithoutAMapWithAnEmptyOneOrWithoutAClient)
{
    Listen(1); // no map
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    ListenWithAClient(2, {});
    ListenWithAClient(3, {"a"});
    results.UpdateClientCount(ZuEthernetProtocol{3}, 0);
    ListenWithAClient(4, {"a"});

    Publish({"a"});

    ASSERT_TRUE(calls.WaitFor("4:a0"));
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"4:a0"}));
}

TEST_F(ControlScanResultsTest, SendsNoSetWithoutAWantedItem)
{
    ListenWithAClient(1, {"a"});

    Publish({"x", "y"});
    Publish({});
    Publish({"a"});

    ASSERT_TRUE(calls.WaitFor("1:a0"));
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"1:a0"}));
}

TEST_F(ControlScanResultsTest, FiltersLiveSimulationsOutOncePerProtocolWithClients)
{
    ListenWithAClient(1, {"a"});
    ListenWithAClient(2, {"a"});
    ListenWithAClient(3, {"a"});
    results.UpdateClientCount(ZuEthernetProtocol{3}, 0);
    Listen(4); // no map
    ZuTest::LogRecorder const log;

    Publish({"a"}, true);

    auto const line =
        ZuTest::Info("ZuControl::ControlScanResults::ProcessResultSet", "Live simulation data filtered out.");
    EXPECT_EQ(log.Lines(), (std::vector{line, line}));
    Publish({"a"});
    ASSERT_TRUE(calls.WaitFor("1:a0"));
    EXPECT_EQ(calls.Count("1:a0"), 1u);
}

TEST_F(ControlScanResultsTest, ReleasesAllThatItTookAndKeepsNoReferenceToTheSet)
{
    Id const id = ListenWithAClient(1, {"a"});
    auto const set = MakeSet({"a", "b"});
    auto* const item = ZuCore::ResultSet_At(set.get(), 0);
    auto* const info = ZuCore::ResultItem_ResultInfo(item);
    auto* const msgInfo = ZuCore::ResultItem_MsgInfo(item);

    results.ProcessResultSet(set.get());
    ASSERT_TRUE(calls.WaitFor("1:a0"));
    results.RemoveResultHandler(id); // joins the thread

    EXPECT_EQ(wObject_RefCount(set.get()), 1u);
    EXPECT_EQ(wObject_RefCount(info), 1u);
    EXPECT_EQ(wObject_RefCount(msgInfo), 1u);
    EXPECT_EQ(ZuTest::ItemsOf(set.get()), (Items{{"a", 0}, {"b", 1}}));
}

TEST_F(ControlScanResultsTest, AllocatesAtMostOnceForASetAndNeverForAnItem)
{
    constexpr std::size_t BURST = 50; // fits into one list of the dispatcher
    std::vector<std::string> sources;
    for (int i = 0; i < 64; ++i)
    {
        sources.push_back("source/" + std::to_string(i));
    }
    results.AddResultHandler(
        [this](void* list) {
            for (uint64 i = 0; i < wArrayList_Count(*static_cast<wArrayList*>(list)); ++i)
            {
                calls.Add("set");
            }
        },
        ZuEthernetProtocol{1});
    results.UpdateOutputMap(ZuEthernetProtocol{1}, sources);
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    auto const set = MakeSet(sources);
    auto const publishBurst = [&] {
        for (std::size_t i = 0; i < BURST; ++i)
        {
            results.ProcessResultSet(set.get());
        }
    };
    publishBurst();
    ASSERT_TRUE(calls.WaitFor("set", BURST));

    ZuTest::AllocationCounter const allocations;
    publishBurst();
    uint64 const count = allocations.Count();

    EXPECT_LE(count, BURST);
    EXPECT_TRUE(calls.WaitFor("set", 2 * BURST));
}

TEST_F(ControlScanResultsTest, ReplacesAProtocolsMap)
{
    ListenWithAClient(1, {"a"});

    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"b"});
    Publish({"a", "b"});

    EXPECT_TRUE(calls.WaitFor("1:b1"));
}

TEST_F(ControlScanResultsTest, KeepsAMapThatCameBeforeTheFirstHandler)
{
    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
    Listen(1);
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);

    Publish({"a"});

    EXPECT_TRUE(calls.WaitFor("1:a0"));
}

TEST_F(ControlScanResultsTest, RefusesCountAndRemovalWithoutADispatcher)
{
    EXPECT_EQ(RefusalOf([this] { results.UpdateClientCount(ZuEthernetProtocol{7}, 1); }),
              (Refusal{-999, "Failed to find dispatcher of protocol:7."}));
    EXPECT_EQ(RefusalOf([this] {
                  results.RemoveResultHandler({ZuEthernetProtocol{-7}, {}});
              }),
              (Refusal{-999, "Failed to find dispatcher of protocol:-7."}));
}

TEST_F(ControlScanResultsTest, DropsTheClientCountWithTheLastHandlerAndKeepsTheMap)
{
    Id const id = ListenWithAClient(1, {"a"});
    results.RemoveResultHandler(id);
    Listen(1);

    Publish({"a"}); // no client: the count starts at 0 again
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    Publish({"b", "a"});

    ASSERT_TRUE(calls.WaitFor("1:a1"));
    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"1:a1"}));
}

TEST_F(ControlScanResultsTest, LogsComingAndGoingOfHandlersInOrder)
{
    ZuTest::LogRecorder const log;

    Id const first = Listen(1);
    Id const second = Listen(1);
    results.RemoveResultHandler(first);
    results.RemoveResultHandler(second);

    auto const added = ZuTest::Info("ZuControl::ControlScanResults::AddResultHandler",
                                    "ControlScanResults::AddResultHandler new handler registered for protocol:1");
    auto const removed = ZuTest::Info("ZuControl::ControlScanResults::RemoveResultHandler",
                                      "ControlScanResults::RemoveResultHandler handler removed for protocol:1");
    auto const gone = ZuTest::Info("ZuControl::ControlScanResults::RemoveResultHandler",
                                   "ControlScanResults::dispatcher removed for protocol:1");
    EXPECT_EQ(log.Lines(), (std::vector{added, added, removed, gone, removed}));
}

TEST_F(ControlScanResultsTest, ChangesAMapWhileARemovalWaitsForARunningHandler)
{
    ZuTest::Latch release;
    auto const id = results.AddResultHandler(
        [&](void*) {
            calls.Add("held");
            release.Wait();
        },
        ZuEthernetProtocol{1});
    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    Publish({"a"});
    ASSERT_TRUE(calls.WaitFor("held"));
    std::thread removing([&] { results.RemoveResultHandler(id); });

    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"b"}); // would hang here

    release.Open();
    removing.join();
}

TEST_F(ControlScanResultsTest, ShowsEitherTheOldOrTheNewMapToAPublisherOnAnotherThread)
{
    Id const id = ListenWithAClient(1, {"a", "b"});
    std::thread publishing([this] {
        for (int i = 0; i < 2000; ++i)
        {
            Publish({"a", "b", "c", "d"});
        }
    });

    for (int i = 0; i < 2000; ++i)
    {
        results.UpdateOutputMap(ZuEthernetProtocol{1},
                                i % 2 == 0 ? std::vector<std::string>{"c", "d"} : std::vector<std::string>{"a", "b"});
    }
    publishing.join();
    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"e"});
    Publish({"e"});
    ASSERT_TRUE(calls.WaitFor("1:e0"));
    results.RemoveResultHandler(id);

    EXPECT_EQ(calls.Count("1:a0b1") + calls.Count("1:c2d3"), 2000u);
}

class ControlScanResultsHub : public testing::TestWithParam<bool>
{
};

TEST_P(ControlScanResultsHub, ListensAsTheHubWantsAndLeavesNothingBehind)
{
    ZuTest::LogRecorder const log;
    ZuTest::CallLog calls;
    ZuCore::ResultHub hub(GetParam());
    auto const set = MakeSet({"a"});
    {
        ControlScanResults results(&hub, nullptr);
        EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuControl::ControlScanResults::ControlScanResults",
                                                         "ControlScanResults constructed.")}));
        results.AddResultHandler([&](void*) { calls.Add("came"); }, ZuEthernetProtocol{1});
        results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
        results.UpdateClientCount(ZuEthernetProtocol{1}, 1);

        hub.Publish(set.get());

        EXPECT_TRUE(calls.WaitFor("came"));
    }
    hub.Publish(set.get()); // a handler left behind would call the destroyed fan-out
}

INSTANTIATE_TEST_SUITE_P(Kinds, ControlScanResultsHub, testing::Bool(),
                         [](auto const& tested) { return tested.param ? "Synchronous" : "Asynchronous"; });

TEST(ControlScanResults, SaysThatThereIsNoHub)
{
    ZuTest::LogRecorder const log;

    ControlScanResults const results(nullptr, nullptr);

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Warning("ZuControl::ControlScanResults::ControlScanResults",
                                                        "No resultHub to listen to.")}));
}

TEST(ControlScanResults, EndsWhileAHubPublishes)
{
    for (bool const synchronous : {true, false})
    {
        ZuCore::ResultHub hub(synchronous);
        std::atomic<bool> publish{true};
        std::thread publishing([&] {
            auto const set = MakeSet({"a"});
            while (publish)
            {
                hub.Publish(set.get());
            }
        });
        for (int i = 0; i < 20; ++i)
        {
            ZuTest::CallLog calls;
            ControlScanResults results(&hub, nullptr);
            auto const id = results.AddResultHandler([&](void*) { calls.Add("came"); }, ZuEthernetProtocol{1});
            results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
            results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
            EXPECT_TRUE(calls.WaitFor("came"));
            if (i % 2 == 0)
            {
                results.RemoveResultHandler(id);
            }
        }
        publish = false;
        publishing.join();
    }
}

TEST_F(ControlScanResultsTest, TakesNoLockForASetWithNothingInIt)
{
    ZuTest::Latch release;
    auto const id = results.AddResultHandler(
        [&](void*) {
            calls.Add("held");
            release.Wait();
        },
        ZuEthernetProtocol{1});
    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    Publish({"a"});
    ASSERT_TRUE(calls.WaitFor("held"));
    std::thread removing([&] { results.RemoveResultHandler(id); }); // waits for the handler and holds the lock

    Publish({}); // would hang here
    results.ProcessResultSet(nullptr);

    release.Open();
    removing.join();
}

namespace
{

/// Blocks a thread that logs this line until `release` opens.
class HoldingSink final : public Zu::Logging::ISink
{
public:
    explicit HoldingSink(std::string heldText) : text(std::move(heldText))
    {
    }

    bool Wants(uint64 /*flags*/) const override
    {
        return true;
    }

    void Write(Zu::Logging::Entry const& entry) override
    {
        if (entry.text == text)
        {
            inside.Open();
            release.Wait();
        }
    }

    ZuTest::Latch inside;
    ZuTest::Latch release;

private:
    std::string const text;
};

} // namespace

TEST_F(ControlScanResultsTest, ChangesAMapWhileASetIsOnItsWayThrough)
{
    ListenWithAClient(1, {"a"});
    auto const sink = std::make_shared<HoldingSink>("Live simulation data filtered out.");
    Zu::Logging::AddSink(sink);
    std::thread publishing([this] { Publish({"a"}, true); });
    ASSERT_TRUE(sink->inside.Wait()); // the publishing thread is in the log call

    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"b"}); // would hang here

    sink->release.Open();
    publishing.join();
    Zu::Logging::RemoveSink(sink);
    Publish({"a", "b"});
    EXPECT_TRUE(calls.WaitFor("1:b1"));
}

TEST_F(ControlScanResultsTest, HasNoDispatcherWhenItsThreadCannotBeMade)
{
    {
        ZuTest::NoNewThreads const none;
        EXPECT_EQ(RefusalOf([this] { Listen(1); }), (Refusal{0, ""}));
    }
    EXPECT_EQ(RefusalOf([this] { results.UpdateClientCount(ZuEthernetProtocol{1}, 1); }),
              (Refusal{-999, "Failed to find dispatcher of protocol:1."}));

    ListenWithAClient(1, {"a"});
    Publish({"a"});

    EXPECT_TRUE(calls.WaitFor("1:a0"));
}

TEST_F(ControlScanResultsTest, CountsWhatComesAndWhatItHandsOnAndForgetsNoDispatcher)
{
    Id const first = ListenWithAClient(1, {"a"});
    ListenWithAClient(2, {"a", "b"});

    Publish({"a", "b", "c"});
    Publish({});
    Publish({"c"});

    EXPECT_EQ(results.SetCount(), 2u);
    EXPECT_EQ(results.ItemCount(), 4u);
    EXPECT_EQ(results.ItemsHandedOnCount(), 3u);
    ASSERT_TRUE(calls.WaitFor("1:a0"));
    results.RemoveResultHandler(first);
    EXPECT_EQ(results.CountersOf(ZuEthernetProtocol{1})->batches, 1u);
    EXPECT_EQ(results.CountersOf(ZuEthernetProtocol{1})->resultSets, 1u);
    EXPECT_EQ(results.CountersOf(ZuEthernetProtocol{3})->batches, 0u);
}

TEST_F(ControlScanResultsTest, GoesOnWithOthersWhenAHandlerThrew)
{
    results.AddResultHandler([](void*) { ZU_THROW(-3, "handler"); }, ZuEthernetProtocol{1});
    results.UpdateOutputMap(ZuEthernetProtocol{1}, {"a"});
    results.UpdateClientCount(ZuEthernetProtocol{1}, 1);
    ListenWithAClient(2, {"a"});

    Publish({"a"});
    Publish({"x", "a"});

    EXPECT_TRUE(calls.WaitFor("2:a0"));
    EXPECT_TRUE(calls.WaitFor("2:a1"));
}

} // namespace ZuControl
