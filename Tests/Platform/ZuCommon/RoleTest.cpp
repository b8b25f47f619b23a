#include "ZuCommon/Role.h"

#include <gtest/gtest.h>

using ZuCommon::Role;
using ZuCommon::RoleName;
using ZuCommon::RoleOfName;

TEST(Role, GrowsFromReadingToAdministration)
{
    EXPECT_LT(Role::NONE, Role::VIEWER);
    EXPECT_LT(Role::VIEWER, Role::OPERATOR);
    EXPECT_LT(Role::OPERATOR, Role::ENGINEER);
    EXPECT_LT(Role::ENGINEER, Role::ADMINISTRATOR);
}

TEST(Role, HasANameThatIsFoundAgain)
{
    EXPECT_STREQ("none", RoleName(Role::NONE));
    EXPECT_STREQ("viewer", RoleName(Role::VIEWER));
    EXPECT_STREQ("operator", RoleName(Role::OPERATOR));
    EXPECT_STREQ("engineer", RoleName(Role::ENGINEER));
    EXPECT_STREQ("administrator", RoleName(Role::ADMINISTRATOR));
    EXPECT_EQ(Role::VIEWER, RoleOfName("viewer"));
    EXPECT_EQ(Role::OPERATOR, RoleOfName("operator"));
    EXPECT_EQ(Role::ENGINEER, RoleOfName("engineer"));
    EXPECT_EQ(Role::ADMINISTRATOR, RoleOfName("administrator"));
}

TEST(Role, OfAnotherNameIsNone)
{
    for (char const* const name : {"", "none", "Viewer", "viewer ", "root"})
    {
        EXPECT_FALSE(RoleOfName(name).has_value()) << name;
    }
}
