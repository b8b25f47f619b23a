#include "ZuControl/Control/ProtocolFaults.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <new>

namespace ZuControl
{

using Names = std::vector<std::string>;

TEST(ProtocolFaults, GivesWhatTheOperationGives)
{
    ProtocolFaults faults;
    int number = 7;

    int& given = faults.Call("get", [&]() -> int& { return number; });
    std::string const text = faults.Call(
        "read", [](char const* word) { return std::string(word); }, "word");

    EXPECT_EQ(&given, &number);
    EXPECT_EQ(text, "word");
    EXPECT_EQ(faults.Operations(), Names{});
}

TEST(ProtocolFaults, KeepsEachOperationThatFailsUntilItSucceeds)
{
    ProtocolFaults faults;
    EXPECT_THROW(faults.Call("b", [] { throw 42; }), int);
    EXPECT_THROW(faults.Call("a", [] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_THROW(faults.Call("a", [] { throw 42; }), int);
    EXPECT_EQ(faults.Operations(), (Names{"a", "b"}));

    faults.Call("a", [] {});
    EXPECT_EQ(faults.Operations(), Names{"b"});
    faults.Call("b", [] { return 1; });

    EXPECT_EQ(faults.Operations(), Names{});
}

TEST(ProtocolFaults, TakesARefusalForNoFault)
{
    ProtocolFaults faults;

    EXPECT_THROW(faults.Call("a", [] { ZU_THROW(Zu::Status::BUSY, "not now"); }), Zu::Exception);
    EXPECT_THROW(faults.Call("b", [] { static_cast<void>(nlohmann::json(1).at("key")); }), nlohmann::json::exception);

    EXPECT_EQ(faults.Operations(), Names{});
}

TEST(ProtocolFaults, KnowsNoRefusalOfWhatIsOnlyTold)
{
    ProtocolFaults faults;

    EXPECT_THROW(faults.Tell("a", [] { ZU_THROW(Zu::Status::BUSY, "not now"); }), Zu::Exception);

    EXPECT_EQ(faults.Operations(), Names{"a"});
}

TEST(ProtocolFaults, LeavesAFaultBehindARefusalOfTheSameOperation)
{
    ProtocolFaults faults;
    EXPECT_THROW(faults.Call("a", [] { throw 42; }), int);

    EXPECT_THROW(faults.Call("a", [] { ZU_THROW(Zu::Status::BUSY); }), Zu::Exception);

    EXPECT_EQ(faults.Operations(), Names{"a"});
}

} // namespace ZuControl
