#include "Host/Tls/MachineNames.h"

#include <gmock/gmock.h>

#include <array>
#include <unistd.h>

namespace ZuHost
{

using testing::Contains;
using testing::Not;

TEST(MachineNames, BeginWithTheHostNameAndHaveTheLoopbackAddresses)
{
    std::array<char, 256> hostName{};
    ASSERT_EQ(gethostname(hostName.data(), hostName.size() - 1), 0);

    auto const names = MachineNames("127.0.0.1");

    EXPECT_EQ(names.front(), hostName.data());
    for (char const* const name : {"localhost", "127.0.0.1", "::1"})
    {
        EXPECT_THAT(names, Contains(name).Times(1));
    }
}

TEST(MachineNames, HaveTheAddressOfTheListener)
{
    EXPECT_THAT(MachineNames("192.0.2.7"), Contains("192.0.2.7"));
    EXPECT_THAT(MachineNames("2001:db8::7"), Contains("2001:db8::7"));
}

TEST(MachineNames, LeaveOutAddressesThatMeanEveryAddress)
{
    for (char const* const address : {"0.0.0.0", "::"})
    {
        EXPECT_THAT(MachineNames(address), Not(Contains(address)));
    }
    EXPECT_THAT(MachineNames("::"), Not(Contains(testing::StartsWith("fe80"))));
}

} // namespace ZuHost
