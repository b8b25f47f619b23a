#include "ZuRest/Path.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuRest
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(Path, FillsTheKeysInOrder)
{
    EXPECT_EQ(
        Path::Format("/controls/:protocol/registerAssemblies/:registerAssembly", {"ModbusTcp", "registerAssembly-0"}),
        "/controls/ModbusTcp/registerAssemblies/registerAssembly-0");
    EXPECT_EQ(Path::Format("/controls/:protocol/outputs", {"x"}), "/controls/x/outputs");
    EXPECT_EQ(Path::Format("/health", {}), "/health");
    EXPECT_EQ(Path::Format("/", {}), "/");
}

TEST(Path, EscapesWhatASegmentCannotHold)
{
    EXPECT_EQ(Path::Format("/a/:b/c", {"x/y z?#%"}), "/a/x%2Fy%20z%3F%23%25/c");
    EXPECT_EQ(Path::Format("/a/:b", {"\xC3\xA9"}), "/a/%C3%A9");
    EXPECT_EQ(Path::Format("/a/:b", {":b"}), "/a/:b");
    EXPECT_EQ(Path::Format("/a/:b", {"Az09-._~!$&'()*+,;=@"}), "/a/Az09-._~!$&'()*+,;=@");
}

TEST(Path, RefusesAnotherNumberOfValues)
{
    EXPECT_EQ(RefusalOf([] { Path::Format("/a/:b", {}); }), (Refusal{-997, "'/a/:b' does not take 0 values"}));
    EXPECT_EQ(RefusalOf([] { Path::Format("/a/:b", {"1", "2"}); }), (Refusal{-997, "'/a/:b' does not take 2 values"}));
}

} // namespace ZuRest
