#include "Host/CommandLine/ConfigurationFile.h"
#include "Host/CommandLine/Options.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace ZuHost
{

class ConfigurationFileTest : public testing::Test
{
protected:
    void Write(std::string const& content) const
    {
        std::ofstream(file, std::ios::binary) << content;
    }

    Options Parse(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"zucontrol-host", "--config", file.string()});
        return ParseOptions(words);
    }

    std::vector<std::string> FaultsOf(std::string const& content) const
    {
        Write(content);
        std::vector<std::string> faults = ReadConfiguration({"zucontrol-host", "--config", file.string()}).faults;
        for (std::string& fault : faults)
        {
            EXPECT_EQ(fault.find(file.string()), 0u) << fault;
            fault.erase(0, file.string().size());
        }
        return faults;
    }

    ZuTest::ScratchFolder const folder;
    std::filesystem::path const file = folder / "host.toml";
};

TEST_F(ConfigurationFileTest, HasEveryOptionThatIsNotOfTheCommandLineAlone)
{
    Write("http = '[::1]:0'\nhttps = '0.0.0.0:8443'\ncertificate = 'c'\nkey = 'k'\ninsecure = true\n"
          "keep-alive = 2\ntoken = 't'\nlogin-notice = 'n'\ndata = 'd'\njob = 'line 3'\nplugins = ['a', 'b']\n"
          "plugin-keys = 'p'\ntrail-days = 3\ntrail-mib = 4\nallow-core-dumps = true\n"
          "deployment = 'virtual-brackle'\nreplay = 'x.pcd'\nstill = false\noperation-limit = 90\nstop-limit = 5\n"
          "rate = 0.5\nstart = true\nenable = ['ModbusTcp', 'AsciiTcp']\nlog = 'error'\n"
          "[param.ModbusTcp]\nport = 1502\naddress = '::1'\n[param.AsciiTcp]\nx = true\ny = 1.5\n");

    Options const options = Parse({});

    for (OptionForm const& form : OptionForms())
    {
        bool const isGiven = std::any_of(options.given.begin(), options.given.end(),
                                         [&form](auto const& given) { return given.form == &form; });
        bool const isExpected = form.scope != OptionForm::Scope::COMMAND_LINE && form.name != std::string_view("still");
        EXPECT_EQ(isGiven, isExpected || form.name == std::string_view("config")) << form.name;
    }
    EXPECT_EQ(options.httpAddress, "::1");
    EXPECT_EQ(options.keepAliveSeconds, 2u);
    EXPECT_EQ(options.pluginFolders, (std::vector<std::filesystem::path>{"a", "b"}));
    EXPECT_EQ(options.deployment, Deployment::VIRTUAL_BRACKLE);
    EXPECT_FALSE(options.partStandsStill);
    EXPECT_EQ(options.rateHz, 0.5);
    EXPECT_TRUE(options.start);
    EXPECT_EQ(options.enabledTypes, (std::vector<std::string>{"ModbusTcp", "AsciiTcp"}));
    EXPECT_EQ(options.logLevel, LogLevel::ERROR);
    EXPECT_EQ(options.configurationFile, file);
    EXPECT_EQ(options.settings, (std::vector<ParameterSetting>{{"ModbusTcp", "port", "1502"},
                                                               {"ModbusTcp", "address", "::1"},
                                                               {"AsciiTcp", "x", "true"},
                                                               {"AsciiTcp", "y", "1.5"}}));
}

TEST_F(ConfigurationFileTest, GivesWayToTheCommandLine)
{
    Write("rate = 10\nlog = 'error'\nplugins = ['a', 'b']\nenable = ['ModbusTcp']\n[param.ModbusTcp]\nport = 1\n");

    Options const options = Parse({"--rate", "20", "--plugins", "c", "--param", "ModbusTcp.port=2"});

    EXPECT_EQ(options.rateHz, 20);
    EXPECT_EQ(options.logLevel, LogLevel::ERROR);
    EXPECT_EQ(options.pluginFolders, std::vector<std::filesystem::path>{"c"});
    EXPECT_EQ(options.enabledTypes, std::vector<std::string>{"ModbusTcp"});
    EXPECT_EQ(options.settings, (std::vector<ParameterSetting>{{"ModbusTcp", "port", "1"},
                                                               {"ModbusTcp", "port", "2"}})); // the last holds
}

TEST_F(ConfigurationFileTest, TellsEveryFaultWithItsLine)
{
    EXPECT_EQ(
        FaultsOf("htp = '127.0.0.1:1'\n"
                 "rate = 'fast'\n"
                 "start = 'yes'\n"
                 "enable = [['a']]\n"
                 "data = true\n"
                 "help = true\n"
                 "colour = 'red'\n"
                 "job = ''\n"
                 "[param]\n"
                 "ModbusTcp = 1\n"
                 "AsciiTcp.port = [1]\n"),
        (std::vector<std::string>{
            ", line 1: 'htp' is no key; the nearest one is 'http'",
            ", line 2: 'rate': 'fast' is no number of profiles per second from 0 to 100000",
            ", line 3: 'start' needs true or false", ", line 4: 'enable' needs a list of texts",
            ", line 5: 'data' needs a text or a number", ", line 6: 'help' is an option of the command line alone",
            ", line 7: 'colour' is no key",
            ", line 8: 'job': '' cannot be the name of a job: 1 to 63 bytes of UTF-8, no '/', '\\', '..', control "
            "or format character, no dot at the head, and at most one '.zpjob' at the end",
            ", line 10: 'param.ModbusTcp' needs a table of parameters",
            ", line 11: 'param.AsciiTcp.port' needs a text, a number, true or false"}));
    EXPECT_EQ(FaultsOf("param = 1\n"),
              std::vector<std::string>{
                  ", line 1: 'param' needs a table for each type of protocol, such as [param.ModbusTcp]"});
}

TEST_F(ConfigurationFileTest, TellsTheLineThatIsNoToml)
{
    std::vector<std::string> const faults = FaultsOf("rate = 10\nrate = 20\n");

    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].find(", line 2: "), 0u) << faults[0];
    EXPECT_EQ(FaultsOf("start = \n").at(0).find(", line 1: "), 0u);
    EXPECT_EQ(FaultsOf(std::string("a\0b", 3)).at(0).find(", line 1: "), 0u);
}

TEST_F(ConfigurationFileTest, TellsWhyAFileCannotBeRead)
{
    EXPECT_EQ(ReadConfiguration({"zucontrol-host", "--config", "/nowhere/host.toml"}).faults,
              std::vector<std::string>{"/nowhere/host.toml cannot be read: No such file or directory"});
    EXPECT_EQ(ReadConfiguration({"zucontrol-host", "--config", folder.path.string()}).faults,
              std::vector<std::string>{folder.path.string() + " cannot be read: Is a directory"});
    EXPECT_EQ(FaultsOf("#" + std::string(ConfigurationFile::MAX_BYTES, 'x')),
              std::vector<std::string>{" is larger than 1 MiB"});
}

TEST_F(ConfigurationFileTest, RefusesAStartWithTheFirstFault)
{
    Write("rate = 'fast'\nhtp = 1\n");
    try
    {
        Parse({"--rate", "20"}); // the fault counts even where the command line holds
        FAIL() << "not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::BAD_ARGUMENT);
        EXPECT_EQ(exception.what(),
                  file.string() + ", line 1: 'rate': 'fast' is no number of profiles per second from 0 to 100000");
    }
}

TEST_F(ConfigurationFileTest, RefusesOptionsThatContradictThoseOfTheCommandLine)
{
    Write("still = true\n");
    EXPECT_THROW(Parse({"--replay", "x.pcd"}), Zu::Exception);
}

TEST_F(ConfigurationFileTest, IsNotReadForAText)
{
    EXPECT_EQ(ParseOptions({"zucontrol-host", "--config", "/nowhere", "--help"}).request, Options::Request::SHOW_HELP);
    EXPECT_EQ(ParseOptions({"zucontrol-host", "--config", "/nowhere", "--check-config"}).request,
              Options::Request::CHECK_CONFIGURATION);
}

} // namespace ZuHost
