#include "ZuControl/Control/ControlResourceAdaptor.h"

#include "Support/CallLog.h"
#include "Support/FailAtEachAllocation.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuRest/RequestProcessor.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

constexpr uint64 LONG_USEC = 30'000'000;

/// Returns the same document for every path, and records the paths.
class FakeRequestProcessor final : public ZuRest::RequestProcessor
{
public:
    nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) override
    {
        calls.Add(path + " " + request.dump() + " '" + query + "'");
        if (onRead)
        {
            onRead();
        }
        return document;
    }

    ZuTest::CallLog calls;
    nlohmann::json document;
    std::function<void()> onRead;
};

/// A document, a path into it, and the text that the path selects.
struct PathCase
{
    char const* name;
    char const* document;
    char const* path;
    char const* text;
};

} // namespace

class ControlResourceAdaptorTest : public testing::Test
{
protected:
    static constexpr char const* BUSY = "Cannot read resource data. Another read operation is already in progress.";
    static constexpr char const* FAILED = "Failed to read resource.";

    std::string Read(std::string const& path)
    {
        std::string text;
        adaptor.Read(path, text, LONG_USEC);
        return text;
    }

    /// Repeats the read until no other read is running; a running read would refuse it.
    std::string ReadWhenIdle(std::string const& path)
    {
        auto const bound = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;
        while (true)
        {
            try
            {
                return Read(path);
            }
            catch (Zu::Exception const& exception)
            {
                if (exception.Status() != Zu::Status::BUSY || std::chrono::steady_clock::now() > bound)
                {
                    throw;
                }
                std::this_thread::yield();
            }
        }
    }

    ZuTest::LogRecorder log;
    ZuTest::Latch entered; // this member and the next ones outlive every read
    ZuTest::Latch release;
    FakeRequestProcessor processor;
    ControlResourceAdaptor adaptor{processor};
};

class ControlResourceAdaptorPath : public ControlResourceAdaptorTest, public testing::WithParamInterface<PathCase>
{
};

TEST_P(ControlResourceAdaptorPath, NamesAPartOfTheDocument)
{
    PathCase const& given = GetParam();
    processor.document = nlohmann::json::parse(given.document);

    EXPECT_EQ(Read(given.path), given.text);

    EXPECT_EQ(processor.calls.All(), (ZuTest::CallLog::Calls{"/r null ''"}));
    EXPECT_TRUE(log.Lines().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ControlResourceAdaptorPath,
    testing::Values(PathCase{"TheWhole", R"({"b": [1, 2], "a": "x"})", "/r", R"({"a":"x","b":[1,2]})"},
                    PathCase{"TheWholeBehindAnEmptyFragment", R"({"a": 1})", "/r#/", R"({"a":1})"},
                    PathCase{"ANumber", R"({"a": 1.5})", "/r#/a", "1.5"},
                    PathCase{"AStringWithItsQuotes", R"({"a": "x"})", "/r#/a", R"("x")"},
                    PathCase{"TextThatIsNotAscii", R"({"a": "\u00e9"})", "/r#/a", "\"\xC3\xA9\""},
                    PathCase{"AnObject", R"({"a": {"b": 1}})", "/r#/a", R"({"b":1})"},
                    PathCase{"AMemberThatIsNotThere", R"({"a": 1})", "/r#/b", "null"},
                    PathCase{"AMemberOfNull", "null", "/r#/b", "null"},
                    PathCase{"ALeaf", R"({"a": {"b": 7}})", "/r#/a/b", "7"},
                    PathCase{"ALeafOfAList", R"({"a": [{"b": 7}, {"b": 8}]})", "/r#/a/1/b", "8"},
                    PathCase{"ALeafThatIsNotThere", R"({"a": {"b": 7}})", "/r#/a/c", "null"},
                    PathCase{"AnObjectAtAPointerIsNoLeaf", R"({"a": {"b": {"c": 1}}})", "/r#/a/b", "null"},
                    PathCase{"AListAtAPointerIsNoLeaf", R"({"a": {"b": [1]}})", "/r#/a/b", "null"},
                    PathCase{"AnEmptyObjectAtAPointer", R"({"a": {"b": {}}})", "/r#/a/b", "null"},
                    PathCase{"AKeyWithASlashAtAPointer", R"({"a": {"b/c": 1}})", "/r#/a/b~1c", "1"},
                    PathCase{"TheSecondMarkBelongsToTheFragment", R"({"a#": {"b": 1}})", "/r#/a#/b", "1"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ControlResourceAdaptorTest, TakesASharpSignWithoutASlashForPartOfTheRoute)
{
    Read("/r#a");

    EXPECT_EQ(processor.calls.All(), (ZuTest::CallLog::Calls{"/r#a null ''"}));
}

TEST_F(ControlResourceAdaptorTest, RefusesAMemberOfAListAndSaysWhy)
{
    processor.document = {1, 2};

    EXPECT_EQ(RefusalOf([this] { Read("/r#/a"); }), (Refusal{-999, FAILED}));

    EXPECT_EQ(log.Lines(),
              (std::vector{ZuTest::Warning("ZuControl::ControlResourceAdaptor::ReadResource",
                                           "Exception processing reading resource path due to "
                                           "([json.exception.type_error.305] cannot use operator[] with a string "
                                           "argument with array)")}));
}

TEST_F(ControlResourceAdaptorTest, RefusesTextThatIsNotUtf8)
{
    processor.document = {{"a", "\xFF"}};

    EXPECT_EQ(RefusalOf([this] { Read("/r#/a"); }), (Refusal{-999, FAILED}));
}

TEST_F(ControlResourceAdaptorTest, RefusesWhatTheResourceRefusesAndReadsOn)
{
    processor.onRead = [] { ZU_THROW(Zu::Status::BUSY, "not now"); };

    std::string text = "before";
    EXPECT_EQ(RefusalOf([&] { adaptor.Read("/r", text, LONG_USEC); }), (Refusal{-999, FAILED}));

    EXPECT_EQ(text, "before");
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Warning("ZuControl::ControlResourceAdaptor::ReadResource",
                                                        "Exception processing reading resource path due to "
                                                        "(not now)")}));
    processor.onRead = nullptr;
    EXPECT_EQ(Read("/r"), "null");
}

TEST_F(ControlResourceAdaptorTest, ReadsOnBehindAResourceThatThrowsWhatIsNoException)
{
    processor.onRead = [] { throw 42; };

    EXPECT_EQ(RefusalOf([this] { Read("/r"); }), (Refusal{-999, FAILED}));

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Warning("ZuControl::ControlResourceAdaptor::ReadResource",
                                                        "Exception processing reading resource path due to "
                                                        "(exception of an unknown type)")}));
    processor.onRead = nullptr;
    EXPECT_EQ(Read("/r"), "null");
}

TEST_F(ControlResourceAdaptorTest, ReadsOnBehindAReadThatCouldNotBeQueued)
{
    std::string text;
    uint64 const allocations = ZuTest::FailAtEachAllocation([] {}, [&] { adaptor.Read("/r", text, LONG_USEC); },
                                                            [this](bool) { EXPECT_EQ(Read("/r"), "null"); });

    EXPECT_GT(allocations, 0u);
}

TEST_F(ControlResourceAdaptorTest, GivesUpWhenItsTimeIsOverAndLetsTheReadGoOn)
{
    processor.document = "late";
    processor.onRead = [this] {
        entered.Open();
        release.Wait();
    };

    std::string text = "before";
    EXPECT_EQ(RefusalOf([&] { adaptor.Read("/r", text, 1'000); }), (Refusal{-998, FAILED}));
    ASSERT_TRUE(entered.Wait());
    EXPECT_EQ(log.Lines(),
              (std::vector{ZuTest::Warning("ZuControl::ControlResourceAdaptor::Read",
                                           "Failed to read resource data due to (The task has not ended in time)")}));

    EXPECT_EQ(RefusalOf([this] { Read("/r"); }), (Refusal{-976, BUSY})); // refused at once, despite a long timeout
    release.Open();
    EXPECT_EQ(ReadWhenIdle("/r"), R"("late")");
    EXPECT_EQ(text, "before"); // the late read writes nothing into the text of the first caller
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST_F(ControlResourceAdaptorTest, WritesNothingIntoWhatACallerHasTakenAway)
{
    processor.document = std::string(100, 'x');
    processor.onRead = [this] { release.Wait(); };
    {
        auto const path = std::make_unique<std::string>("/r#/none");
        auto const text = std::make_unique<std::string>();
        EXPECT_EQ(RefusalOf([&] { adaptor.Read(*path, *text, 0); }).status, -998);
    }

    release.Open(); // the read continues; path and text of its caller are destroyed

    EXPECT_EQ(ReadWhenIdle("/r").size(), 102u);
}

TEST_F(ControlResourceAdaptorTest, RefusesAReadThatARunningReadAsksForInsteadOfWaitingForItself)
{
    Refusal inner{};
    processor.onRead = [this, &inner] { inner = RefusalOf([this] { Read("/other"); }); };

    EXPECT_EQ(Read("/r"), "null");

    EXPECT_EQ(inner, (Refusal{-976, BUSY}));
}

TEST_F(ControlResourceAdaptorTest, WaitsAtItsEndForAReadThatRuns)
{
    auto other = std::make_unique<ControlResourceAdaptor>(processor);
    processor.onRead = [this] {
        entered.Open();
        release.Wait();
        processor.calls.Add("read");
    };
    std::string text;
    EXPECT_EQ(RefusalOf([&] { other->Read("/r", text, 1'000); }).status, -998);
    ASSERT_TRUE(entered.Wait());
    std::thread releasing([this] { release.Open(); });

    other.reset();
    std::size_t const count = processor.calls.Count("read");
    releasing.join();

    EXPECT_EQ(count, 1u);
}

TEST_F(ControlResourceAdaptorTest, TakesReadsFromManyThreadsOneAtATime)
{
    processor.document = {{"a", 5}};
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    processor.onRead = [&] {
        most = std::max(most.load(), ++inside);
        --inside;
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
    {
        readers.emplace_back([this] {
            for (int k = 0; k < 50; ++k)
            {
                EXPECT_EQ(ReadWhenIdle("/r#/a"), "5");
            }
        });
    }
    for (std::thread& reader : readers)
    {
        reader.join();
    }

    EXPECT_EQ(most, 1);
    EXPECT_TRUE(log.Lines().empty());
}

} // namespace ZuControl
