#include "Plugins/Common/AccessList.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PluginCommon
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

struct Membership
{
    char const* name;
    char const* list;
    char const* address;
    bool isMember;
};

class AccessListMembers : public testing::TestWithParam<Membership>
{
};

TEST_P(AccessListMembers, AreThoseOfItsNetworks)
{
    AccessList const list(GetParam().list, "allowedClients");

    EXPECT_EQ(list.Contains(boost::asio::ip::make_address(GetParam().address)), GetParam().isMember);
}

INSTANTIATE_TEST_SUITE_P(
    Table, AccessListMembers,
    testing::Values(Membership{"OneAddress", "10.0.0.7", "10.0.0.7", true},
                    Membership{"AnotherAddress", "10.0.0.7", "10.0.0.8", false},
                    Membership{"FirstOfANetwork", "192.168.4.0/22", "192.168.4.0", true},
                    Membership{"LastOfANetwork", "192.168.4.0/22", "192.168.7.255", true},
                    Membership{"BehindANetwork", "192.168.4.0/22", "192.168.8.0", false},
                    Membership{"BeforeANetwork", "192.168.4.0/22", "192.168.3.255", false},
                    Membership{"WholeBytes", "192.168.4.0/24", "192.168.5.1", false},
                    Membership{"SecondEntry", "10.0.0.7, 192.168.0.0/24 ,fd00::/8", "192.168.0.9", true},
                    Membership{"ThirdEntry", "10.0.0.7,192.168.0.0/24,fd00::/8", "fdff::1", true},
                    Membership{"AllOfVersion4", "0.0.0.0/0", "203.0.113.9", true},
                    Membership{"AllOfVersion4AreNoVersion6", "0.0.0.0/0", "2001:db8::1", false},
                    Membership{"AllOfVersion6", "::/0", "2001:db8::1", true},
                    Membership{"AllOfVersion6AreNoVersion4", "::/0", "10.0.0.7", false},
                    Membership{"AllOfVersion6AreNoMappedVersion4", "::/0", "::ffff:10.0.0.7", false},
                    Membership{"MappedClient", "10.0.0.0/8", "::ffff:10.1.2.3", true},
                    Membership{"MappedClientElsewhere", "10.0.0.0/8", "::ffff:11.1.2.3", false},
                    Membership{"MappedEntry", "::ffff:10.0.0.7", "10.0.0.7", true},
                    Membership{"MappedNetwork", "::ffff:10.0.0.0/104", "10.9.9.9", true},
                    Membership{"MappedNetworkElsewhere", "::ffff:10.0.0.0/104", "11.9.9.9", false},
                    Membership{"OddBitsOfVersion6", "2001:db8:8000::/33", "2001:db8:ffff::1", true},
                    Membership{"OddBitsOfVersion6Elsewhere", "2001:db8:8000::/33", "2001:db8:7fff::1", false},
                    Membership{"OneOfVersion6", "2001:db8::1/128", "2001:db8::1", true},
                    Membership{"OneOfVersion4", "10.0.0.7/32", "10.0.0.6", false},
                    Membership{"ScopeOfTheClient", "fe80::/10", "fe80::1%1", true}),
    [](auto const& tested) { return std::string(tested.param.name); });

struct RefusedList
{
    char const* name;
    char const* text;
    char const* refusal;
};

class RefusedAccessLists : public testing::TestWithParam<RefusedList>
{
};

TEST_P(RefusedAccessLists, NameTheParameterAndTheEntry)
{
    EXPECT_EQ(RefusalOf([] { AccessList(GetParam().text, "writers"); }), (Refusal{-997, GetParam().refusal}));
}

#define NO_NETWORK_TEXT " is neither an IP address nor a network such as 192.168.0.0/24 or fd00::/8"
#define NO_PREFIX_4 " has no prefix length from 0 to 32"

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedAccessLists,
    testing::Values(
        RefusedList{"Name", "plc-7", "writers: \"plc-7\"" NO_NETWORK_TEXT},
        RefusedList{"SecondEntry", "10.0.0.1, 10.0.0.300", "writers: \"10.0.0.300\"" NO_NETWORK_TEXT},
        RefusedList{"EmptyEntry", "10.0.0.1,,10.0.0.2", "writers: \"\"" NO_NETWORK_TEXT},
        RefusedList{"CommaAtTheEnd", "10.0.0.1,", "writers: \"\"" NO_NETWORK_TEXT},
        RefusedList{"BlankBetween", "10.0.0.1 10.0.0.2", "writers: \"10.0.0.1 10.0.0.2\"" NO_NETWORK_TEXT},
        RefusedList{"LeadingZero", "010.0.0.1", "writers: \"010.0.0.1\"" NO_NETWORK_TEXT},
        RefusedList{"ShortAddress", "10.1", "writers: \"10.1\"" NO_NETWORK_TEXT},
        RefusedList{"Scope", "fe80::1%1", "writers: \"fe80::1%1\"" NO_NETWORK_TEXT},
        RefusedList{"Port", "10.0.0.1:502", "writers: \"10.0.0.1:502\"" NO_NETWORK_TEXT},
        RefusedList{"PrefixAlone", "/8", "writers: \"/8\"" NO_NETWORK_TEXT},
        RefusedList{"NoPrefix", "10.0.0.0/", "writers: \"10.0.0.0/\"" NO_PREFIX_4},
        RefusedList{"LongPrefix", "10.0.0.0/33", "writers: \"10.0.0.0/33\"" NO_PREFIX_4},
        RefusedList{"NegativePrefix", "10.0.0.0/-1", "writers: \"10.0.0.0/-1\"" NO_PREFIX_4},
        RefusedList{"PrefixWithZero", "10.0.0.0/08", "writers: \"10.0.0.0/08\"" NO_PREFIX_4},
        RefusedList{"PrefixAndMore", "10.0.0.0/8/8", "writers: \"10.0.0.0/8/8\"" NO_PREFIX_4},
        RefusedList{"HugePrefix", "10.0.0.0/4294967304", "writers: \"10.0.0.0/4294967304\"" NO_PREFIX_4},
        RefusedList{"Mask", "10.0.0.0/255.0.0.0", "writers: \"10.0.0.0/255.0.0.0\"" NO_PREFIX_4},
        RefusedList{"LongPrefixOfVersion6", "fd00::/129", "writers: \"fd00::/129\" has no prefix length from 0 to 128"},
        RefusedList{
            "AddressWithinANetwork", "192.168.0.7/24",
            "writers: \"192.168.0.7/24\" is an address within a network: behind the prefix all bits of a network "
            "are 0"},
        RefusedList{
            "AddressWithinANetworkOfVersion6", "fd00::1/8",
            "writers: \"fd00::1/8\" is an address within a network: behind the prefix all bits of a network are "
            "0"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(AccessList, IsEmptyWithoutAnEntry)
{
    EXPECT_TRUE(AccessList().IsEmpty());
    EXPECT_TRUE(AccessList("", "writers").IsEmpty());
    EXPECT_TRUE(AccessList(" \t ", "writers").IsEmpty());
    EXPECT_FALSE(AccessList("::1", "writers").IsEmpty());
}

TEST(AccessList, HasABoundedNumberOfNetworks)
{
    std::string text = "10.0.0.0";
    for (std::size_t i = 1; i < AccessList::MOST_NETWORKS; ++i)
    {
        text += ", 10.0.0." + std::to_string(i);
    }
    EXPECT_NO_THROW(AccessList(text, "writers"));

    EXPECT_EQ(RefusalOf([&] { AccessList(text + ", 10.0.0.255", "writers"); }),
              (Refusal{-997, "writers: there are more than 64 networks"}));
}

TEST(AccessList, ShowsTheBeginOfALongEntry)
{
    EXPECT_EQ(RefusalOf([&] { AccessList(std::string(1000, 'x'), "writers"); }),
              (Refusal{-997, "writers: \"" + std::string(64, 'x') + "\"" NO_NETWORK_TEXT}));
}

} // namespace PluginCommon
