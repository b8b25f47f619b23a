#include "Plugins/Common/RoleTable.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <string>

namespace PluginCommon
{

using ZuCommon::Role;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

struct KnownRole
{
    char const* name;
    char const* text;
    Role role;
};

class RoleTableRoles : public testing::TestWithParam<KnownRole>
{
};

TEST_P(RoleTableRoles, AreThoseOfTheProtocolAndOfTheTable)
{
    RoleTable const table(" Maintenance = engineer ,SCADA=viewer, Schicht 3=operator, IT=administrator, a=b=viewer");

    EXPECT_EQ(table.RoleOf(GetParam().text), GetParam().role);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RoleTableRoles,
    testing::Values(KnownRole{"Viewer", "Viewer", Role::VIEWER}, KnownRole{"Operator", "Operator", Role::OPERATOR},
                    KnownRole{"Engineer", "Engineer", Role::ENGINEER},
                    KnownRole{"Administrator", "Administrator", Role::ADMINISTRATOR},
                    KnownRole{"FirstEntry", "Maintenance", Role::ENGINEER},
                    KnownRole{"SecondEntry", "SCADA", Role::VIEWER},
                    KnownRole{"WithBlanks", "Schicht 3", Role::OPERATOR},
                    KnownRole{"LastEntry", "IT", Role::ADMINISTRATOR}, KnownRole{"WithSign", "a=b", Role::VIEWER},
                    KnownRole{"SmallLetters", "viewer", Role::NONE}, KnownRole{"Unknown", "Boss", Role::NONE},
                    KnownRole{"None", "none", Role::NONE}, KnownRole{"Empty", "", Role::NONE},
                    KnownRole{"BlankBehind", "Viewer ", Role::NONE}),
    [](auto const& tested) { return std::string(tested.param.name); });

#define NO_ENTRY " is no entry such as Maintenance=engineer: the roles are viewer, operator, engineer and administrator"

struct RefusedTable
{
    char const* name;
    char const* table;
    char const* refusal;
};

class RefusedRoleTables : public testing::TestWithParam<RefusedTable>
{
};

TEST_P(RefusedRoleTables, NameTheEntry)
{
    EXPECT_EQ(RefusalOf([] { RoleTable(GetParam().table); }), (Refusal{-997, GetParam().refusal}));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedRoleTables,
    testing::Values(RefusedTable{"NoSign", "Maintenance", "roles: \"Maintenance\"" NO_ENTRY},
                    RefusedTable{"NoText", "SCADA=viewer, =viewer", "roles: \"=viewer\"" NO_ENTRY},
                    RefusedTable{"NoRole", "Maintenance=", "roles: \"Maintenance=\"" NO_ENTRY},
                    RefusedTable{"UnknownRole", "Maintenance=boss", "roles: \"Maintenance=boss\"" NO_ENTRY},
                    RefusedTable{"RoleNone", "Maintenance=none", "roles: \"Maintenance=none\"" NO_ENTRY},
                    RefusedTable{"Capitals", "Maintenance=Engineer", "roles: \"Maintenance=Engineer\"" NO_ENTRY},
                    RefusedTable{"EmptyEntry", "a=viewer,", "roles: \"\"" NO_ENTRY},
                    RefusedTable{"TwoRoles", "a=viewer, a=operator",
                                 "roles: \"a=operator\" names a text that has a role already"},
                    RefusedTable{"OfTheProtocol", "Viewer=administrator",
                                 "roles: \"Viewer=administrator\" names a text that has a role already"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(RoleTable, HasABoundedNumberOfEntries)
{
    std::string table = "0=viewer";
    for (std::size_t i = 1; i < RoleTable::MOST_ENTRIES; ++i)
    {
        table += "," + std::to_string(i) + "=viewer";
    }
    EXPECT_EQ(RoleTable(table).RoleOf("63"), Role::VIEWER);

    EXPECT_EQ(RefusalOf([&] { RoleTable(table + ",64=viewer"); }),
              (Refusal{-997, "roles: there are more than 64 entries"}));
}

} // namespace PluginCommon
