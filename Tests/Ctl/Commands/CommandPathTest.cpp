#include "Ctl/Commands/CommandPath.h"

#include "Ctl/Outcome/Failure.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

TEST(CommandPath, LeadsToTheCommandsOfEachPart)
{
    struct Case
    {
        char const* text;
        char const* path;
    };
    Case const cases[] = {
        {"sensor/start", "/sensor/commands/start"},
        {"sensor/", "/sensor/commands"},
        {"AsciiTcp/sendText", "/controls/AsciiTcp/commands/sendText"},
        {"AsciiTcp/outputs/add", "/controls/AsciiTcp/outputs/commands/add"},
        {"ModbusTcp/registerAssembly-0/add", "/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/add"},
        {"ModbusTcp/registerAssembly-0/", "/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands"},
        {"a b/c?", "/controls/a%20b/commands/c%3F"},
        {"/jobs/line7/load", "/jobs/line7/load"},
    };
    for (Case const& one : cases)
    {
        EXPECT_EQ(CommandPath(one.text), one.path);
    }
}

TEST(CommandPath, RefusesOtherTexts)
{
    for (char const* const text : {"", "start", "sensor/a/b", "a//b", "a/b/c/d", "/a b", "/a\r\nX: y"})
    {
        EXPECT_THROW(CommandPath(text), Failure) << text;
    }
}

} // namespace ZuCtl
