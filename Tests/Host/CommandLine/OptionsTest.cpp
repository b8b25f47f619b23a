#include "Host/CommandLine/Options.h"

#include "ZuApi/Exception.h"
#include "ZuPlugin/PluginEntry.h"

#include <gtest/gtest.h>

#include <regex>

namespace ZuHost
{

namespace
{

Options Parse(std::vector<std::string> words)
{
    words.insert(words.begin(), "zucontrol-host");
    return ParseOptions(words);
}

} // namespace

TEST(Options, HasItsDefaultsWithoutAnyWord)
{
    Options const options = Parse({});

    EXPECT_EQ(options.request, Options::Request::RUN);
    EXPECT_EQ(options.httpAddress, "127.0.0.1");
    EXPECT_EQ(options.httpPort, 8080);
    EXPECT_TRUE(options.tokenFile.empty());
    EXPECT_FALSE(options.resetsAdministrator);
    EXPECT_EQ(options.dataFolder, "zucontrol-data");
    EXPECT_EQ(options.jobName.Text(), "default");
    EXPECT_TRUE(options.pluginFolders.empty());
    EXPECT_EQ(options.deployment, Deployment::PHYSICAL_SENSOR);
    EXPECT_TRUE(options.replayFile.empty());
    EXPECT_FALSE(options.partStandsStill);
    EXPECT_EQ(options.keepAliveSeconds, 15u);
    EXPECT_EQ(options.operationLimitSeconds, 60u);
    EXPECT_EQ(options.stopLimitSeconds, 30u);
    EXPECT_EQ(options.rateHz, 50);
    EXPECT_FALSE(options.start);
    EXPECT_TRUE(options.enabledTypes.empty());
    EXPECT_TRUE(options.settings.empty());
    EXPECT_EQ(options.logLevel, LogLevel::INFO);
}

TEST(Options, ReadsThoseOfTheTrailAndTheProcess)
{
    Options const none = Parse({});
    EXPECT_EQ(none.trailDays, 400u);
    EXPECT_EQ(none.trailMib, 64u);
    EXPECT_FALSE(none.allowsCoreDumps);
    EXPECT_TRUE(none.pluginKeys.empty());

    Options const options =
        Parse({"--trail-days", "3650", "--trail-mib", "1", "--allow-core-dumps", "--plugin-keys", "k"});
    EXPECT_EQ(options.trailDays, 3650u);
    EXPECT_EQ(options.trailMib, 1u);
    EXPECT_TRUE(options.allowsCoreDumps);
    EXPECT_EQ(options.pluginKeys, "k");
    EXPECT_EQ(options.words.back(), "k");
    EXPECT_TRUE(options.loginNoticeFile.empty());
    EXPECT_EQ(Parse({"--login-notice", "notice.txt"}).loginNoticeFile, "notice.txt");

    Options const check = Parse({"--check-trail", "a.zplog"});
    EXPECT_EQ(check.request, Options::Request::CHECK_TRAIL);
    EXPECT_EQ(check.checkedTrail, "a.zplog");
}

TEST(Options, ReadsEveryOption)
{
    Options const options = Parse({"--http",
                                   "0.0.0.0:80",
                                   "--token",
                                   "secret",
                                   "--reset-administrator",
                                   "--data",
                                   "d",
                                   "--job",
                                   "line 3",
                                   "--plugins",
                                   "a",
                                   "--plugins=b",
                                   "--deployment",
                                   "virtual-brackle",
                                   "--replay",
                                   "x.pcd",
                                   "--rate",
                                   "0.5",
                                   "--keep-alive",
                                   "2",
                                   "--operation-limit=90",
                                   "--stop-limit",
                                   "5",
                                   "--start",
                                   "--enable",
                                   "ModbusTcp",
                                   "--enable",
                                   "AsciiTcp",
                                   "--log=error"});

    EXPECT_EQ(options.httpAddress, "0.0.0.0");
    EXPECT_EQ(options.httpPort, 80);
    EXPECT_EQ(options.tokenFile, "secret");
    EXPECT_TRUE(options.resetsAdministrator);
    EXPECT_EQ(options.dataFolder, "d");
    EXPECT_EQ(options.jobName.Text(), "line 3");
    EXPECT_EQ(options.pluginFolders, (std::vector<std::filesystem::path>{"a", "b"}));
    EXPECT_EQ(options.deployment, Deployment::VIRTUAL_BRACKLE);
    EXPECT_EQ(options.replayFile, "x.pcd");
    EXPECT_EQ(options.keepAliveSeconds, 2u);
    EXPECT_EQ(options.operationLimitSeconds, 90u);
    EXPECT_EQ(options.stopLimitSeconds, 5u);
    EXPECT_EQ(options.rateHz, 0.5);
    EXPECT_TRUE(options.start);
    EXPECT_EQ(options.enabledTypes, (std::vector<std::string>{"ModbusTcp", "AsciiTcp"}));
    EXPECT_EQ(options.logLevel, LogLevel::ERROR);
}

TEST(Options, LetsTheSimulatedPartStandStill)
{
    EXPECT_TRUE(Parse({"--still"}).partStandsStill);
}

TEST(Options, TakesTheAddressOfVersionSixOutOfItsBrackets)
{
    Options const options = Parse({"--http", "[::1]:0"});

    EXPECT_EQ(options.httpAddress, "::1");
    EXPECT_EQ(options.httpPort, 0);
}

TEST(Options, SplitsASettingAtTheFirstPointAndTheFirstEqualsSign)
{
    Options const options =
        Parse({"--param", "ModbusTcp.port=1503", "--param", "A.group.key=x=1.5", "--param=A.empty="});

    EXPECT_EQ(options.settings, (std::vector<ParameterSetting>{
                                    {"ModbusTcp", "port", "1503"}, {"A", "group.key", "x=1.5"}, {"A", "empty", ""}}));
}

TEST(Options, KnowsEveryDeploymentAndLevel)
{
    EXPECT_EQ(Parse({"--deployment", "physical-sensor"}).deployment, Deployment::PHYSICAL_SENSOR);
    EXPECT_EQ(Parse({"--deployment", "virtual-sensor"}).deployment, Deployment::VIRTUAL_SENSOR);
    EXPECT_EQ(Parse({"--deployment", "physical-brackle"}).deployment, Deployment::PHYSICAL_BRACKLE);
    EXPECT_EQ(Parse({"--deployment", "tavrin-service-app"}).deployment, Deployment::TAVRIN_SERVICE_APP);
    EXPECT_EQ(Parse({"--log", "warning"}).logLevel, LogLevel::WARNING);
    EXPECT_EQ(Parse({"--log", "info"}).logLevel, LogLevel::INFO);
}

TEST(Options, ReadsOnBehindThePluginThatIsToBeChecked)
{
    Options const options = Parse({"--check-plugin", "a.so", "--deployment", "virtual-sensor"});

    EXPECT_EQ(options.request, Options::Request::CHECK_PLUGIN);
    EXPECT_EQ(options.checkedPlugin, "a.so");
    EXPECT_EQ(options.deployment, Deployment::VIRTUAL_SENSOR);
}

TEST(Options, StopsReadingAtARequestForHelpOrVersion)
{
    EXPECT_EQ(Parse({"--help", "--rate", "never"}).request, Options::Request::SHOW_HELP);
    EXPECT_EQ(Parse({"--start", "--version", "--nonsense"}).request, Options::Request::SHOW_VERSION);
}

TEST(Options, TakesAnAddressAndACertificateForHttps)
{
    EXPECT_EQ(Parse({}).httpsAddress, "");
    EXPECT_FALSE(Parse({}).isInsecure);

    Options const options =
        Parse({"--https", "[::]:8443", "--certificate", "host.pem", "--key", "host.key", "--insecure"});

    EXPECT_EQ(options.httpsAddress, "::");
    EXPECT_EQ(options.httpsPort, 8443);
    EXPECT_EQ(options.certificateFile, "host.pem");
    EXPECT_EQ(options.keyFile, "host.key");
    EXPECT_TRUE(options.isInsecure);
    EXPECT_EQ(options.httpAddress, "127.0.0.1");
}

TEST(Options, NamesEveryOptionInItsHelp)
{
    std::string const help = HelpText();

    for (OptionForm const& form : OptionForms())
    {
        std::string const value = form.kind == OptionForm::Kind::SWITCH ? "" : std::string(" ") + form.value;
        std::string const entry = std::string("\n  --") + form.name + value;
        std::size_t const place = help.find(entry);
        ASSERT_NE(place, std::string::npos) << form.name;
        EXPECT_TRUE(help[place + entry.size()] == ' ' || help[place + entry.size()] == '\n') << form.name;
    }
}

TEST(Options, TellsVersionCommitAndAbi)
{
    std::regex const form("zucontrol-host \\d+\\.\\d+\\.\\d+\ncommit ([0-9a-f]{40}(-dirty)?|unknown)\n(.*)\n");
    std::string const text = VersionText();
    std::smatch match;
    ASSERT_TRUE(std::regex_match(text, match, form)) << text;
    EXPECT_EQ(match[3], ZU_PLUGIN_ABI_TEXT);
}

TEST(Options, PutsTheTextsOfItsHelpBelowEachOther)
{
    std::string const help = HelpText();

    EXPECT_NE(help.find("\n  --key FILE           the private key of the certificate\n"
                        "  --insecure           let --http take any address, without encryption\n"),
              std::string::npos)
        << help;
    EXPECT_NE(help.find("\n  --reset-administrator\n"
                        "                       show a one-time code with which POST /setup makes an administrator\n"),
              std::string::npos);
    EXPECT_NE(
        help.find("\n  --replay FILE.pcd    replay a recorded range image, a row a profile, in metres, instead of the\n"
                  "                       simulated part\n"),
        std::string::npos);
}

TEST(Options, HasEachOptionWithItsTextInTheManPage)
{
    std::string const page = ManPage();

    for (OptionForm const& form : OptionForms())
    {
        std::string expected = std::string("\n--") + form.name;
        std::string help = form.help;
        for (std::string* const text : {&expected, &help})
        {
            for (std::size_t place = text->find('-'); place != std::string::npos; place = text->find('-', place + 2))
            {
                text->insert(place, "\\");
            }
        }
        EXPECT_NE(page.find(".TP\n\\fB" + expected.substr(1) + "\\fR"), std::string::npos) << form.name;
        EXPECT_NE(page.find('\n' + help + '\n'), std::string::npos) << form.name;
    }
    EXPECT_EQ(page.find(".TH ZUCONTROL\\-HOST 8 \"\" \"zucontrol\\-host 1."), 0u);
}

TEST(Options, TellsTheUnitOfAReplayedFile)
{
    EXPECT_NE(HelpText().find("a recorded range image, a row a profile, in metres"), std::string::npos);
}

struct RefusalCase
{
    char const* name;
    std::vector<std::string> words;
    char const* text;
};

class OptionsRefusal : public testing::TestWithParam<RefusalCase>
{
};

TEST_P(OptionsRefusal, NamesTheOptionAndWhatIsWrong)
{
    try
    {
        Parse(GetParam().words);
        FAIL() << "not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::BAD_ARGUMENT);
        EXPECT_STREQ(exception.what(), GetParam().text);
    }
}

#define NO_ENDPOINT(text)                                                                                              \
    "option '--http': '" text "' is not of the form ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080"

INSTANTIATE_TEST_SUITE_P(
    Every, OptionsRefusal,
    testing::Values(
        RefusalCase{"Unknown", {"--start", "--nonsense"}, "option '--nonsense' is not known or takes no value"},
        RefusalCase{"UnknownShort", {"-x"}, "option '-x' is not known or takes no value"},
        RefusalCase{"NoValueTaken", {"--start=yes"}, "option '--start=yes' is not known or takes no value"},
        RefusalCase{"ValueMissing", {"--start", "--job"}, "option '--job' needs a value"},
        RefusalCase{
            "CheckedPluginEmpty", {"--check-plugin", ""}, "option '--check-plugin' needs a value that is not empty"},
        RefusalCase{
            "CheckedTrailEmpty", {"--check-trail", ""}, "option '--check-trail' needs a value that is not empty"},
        RefusalCase{"PluginKeysEmpty", {"--plugin-keys", ""}, "option '--plugin-keys' needs a value that is not empty"},
        RefusalCase{
            "TrailDays", {"--trail-days", "3651"}, "option '--trail-days': '3651' is no number of days from 1 to 3650"},
        RefusalCase{"TrailMib", {"--trail-mib", "0"}, "option '--trail-mib': '0' is no number of MiB from 1 to 1024"},
        RefusalCase{"NoOption", {"--start", "extra"}, "'extra' is no option"},
        RefusalCase{"OperationLimitNever",
                    {"--operation-limit", "0"},
                    "option '--operation-limit': '0' is no number of seconds from 1 to 86400"},
        RefusalCase{"OperationLimitTooLong",
                    {"--operation-limit", "86401"},
                    "option '--operation-limit': '86401' is no number of seconds from 1 to 86400"},
        RefusalCase{"KeepAliveNever",
                    {"--keep-alive", "0"},
                    "option '--keep-alive': '0' is no number of seconds from 1 to 3600"},
        RefusalCase{"KeepAliveTail",
                    {"--keep-alive", "5s"},
                    "option '--keep-alive': '5s' is no number of seconds from 1 to 3600"},
        RefusalCase{"KeepAliveTooLong",
                    {"--keep-alive", "3601"},
                    "option '--keep-alive': '3601' is no number of seconds from 1 to 3600"},
        RefusalCase{"KeepAliveNegative",
                    {"--keep-alive", "-1"},
                    "option '--keep-alive': '-1' is no number of seconds from 1 to 3600"},
        RefusalCase{"RateText",
                    {"--rate", "fast"},
                    "option '--rate': 'fast' is no number of profiles per second from 0 to 100000"},
        RefusalCase{"RateTail",
                    {"--rate", "50Hz"},
                    "option '--rate': '50Hz' is no number of profiles per second from 0 to 100000"},
        RefusalCase{"RateNegative",
                    {"--rate", "-1"},
                    "option '--rate': '-1' is no number of profiles per second from 0 to 100000"},
        RefusalCase{"RateNoNumber",
                    {"--rate", "nan"},
                    "option '--rate': 'nan' is no number of profiles per second from 0 to 100000"},
        RefusalCase{"RateTooHigh",
                    {"--rate", "100001"},
                    "option '--rate': '100001' is no number of profiles per second from 0 to 100000"},
        RefusalCase{"Deployment",
                    {"--deployment", "boat"},
                    "option '--deployment': 'boat' is none of physical-sensor, virtual-sensor, physical-brackle, "
                    "virtual-brackle, tavrin-service-app"},
        RefusalCase{"Level", {"--log", "INFO"}, "option '--log': 'INFO' is none of error, warning, info"},
        RefusalCase{"JobEmpty",
                    {"--job", ""},
                    "option '--job': '' cannot be the name of a job: 1 to 63 bytes of UTF-8, no '/', '\\', '..', "
                    "control or format character, no dot at the head, and at most one '.zpjob' at the end"},
        RefusalCase{"JobSeparator",
                    {"--job", "a/b"},
                    "option '--job': 'a/b' cannot be the name of a job: 1 to 63 bytes of UTF-8, no '/', '\\', '..', "
                    "control or format character, no dot at the head, and at most one '.zpjob' at the end"},
        RefusalCase{"JobParent",
                    {"--job", ".."},
                    "option '--job': '..' cannot be the name of a job: 1 to 63 bytes of UTF-8, no '/', '\\', '..', "
                    "control or format character, no dot at the head, and at most one '.zpjob' at the end"},
        RefusalCase{
            "HttpsNoPort",
            {"--https", "0.0.0.0"},
            "option '--https': '0.0.0.0' is not of the form ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080"},
        RefusalCase{"CertificateAlone",
                    {"--https", "[::]:443", "--certificate", "a"},
                    "options '--certificate' and '--key' need each other"},
        RefusalCase{
            "KeyAlone", {"--https", "[::]:443", "--key", "a"}, "options '--certificate' and '--key' need each other"},
        RefusalCase{
            "CertificateEmpty", {"--certificate", ""}, "option '--certificate' needs a value that is not empty"},
        RefusalCase{"KeyEmpty", {"--key", ""}, "option '--key' needs a value that is not empty"},
        RefusalCase{"CertificateForNothing",
                    {"--certificate", "a", "--key", "b"},
                    "option '--certificate' needs '--https', which serves it"},
        RefusalCase{"HttpNoPort", {"--http", "127.0.0.1"}, NO_ENDPOINT("127.0.0.1")},
        RefusalCase{"HttpEmptyPort", {"--http", "127.0.0.1:"}, NO_ENDPOINT("127.0.0.1:")},
        RefusalCase{"HttpNoAddress", {"--http", ":8080"}, NO_ENDPOINT(":8080")},
        RefusalCase{"HttpPortTooHigh", {"--http", "127.0.0.1:65536"}, NO_ENDPOINT("127.0.0.1:65536")},
        RefusalCase{"HttpPortTail", {"--http", "127.0.0.1:80x"}, NO_ENDPOINT("127.0.0.1:80x")},
        RefusalCase{"HttpNoBrackets", {"--http", "::1:8080"}, NO_ENDPOINT("::1:8080")},
        RefusalCase{"HttpEmpty", {"--http", ""}, NO_ENDPOINT("")},
        RefusalCase{"TokenEmpty", {"--token", ""}, "option '--token' needs a value that is not empty"},
        RefusalCase{"DataEmpty", {"--data="}, "option '--data' needs a value that is not empty"},
        RefusalCase{"PluginsEmpty", {"--plugins", ""}, "option '--plugins' needs a value that is not empty"},
        RefusalCase{"ReplayEmpty", {"--replay="}, "option '--replay' needs a value that is not empty"},
        RefusalCase{
            "ReplayAndStill", {"--replay", "x.pcd", "--still"}, "options '--still' and '--replay' exclude each other"},
        RefusalCase{"EnableEmpty", {"--enable", ""}, "option '--enable' needs a value that is not empty"},
        RefusalCase{"ParamNoEquals", {"--param", "A.b"}, "option '--param': 'A.b' is not of the form TYPE.KEY=VALUE"},
        RefusalCase{
            "ParamNoPoint", {"--param", "A=1.5"}, "option '--param': 'A=1.5' is not of the form TYPE.KEY=VALUE"},
        RefusalCase{"ParamNoType", {"--param", ".b=1"}, "option '--param': '.b=1' is not of the form TYPE.KEY=VALUE"},
        RefusalCase{"ParamNoKey", {"--param", "A.=1"}, "option '--param': 'A.=1' is not of the form TYPE.KEY=VALUE"}),
    [](auto const& tested) { return std::string(tested.param.name); });

#undef NO_ENDPOINT

TEST(Options, TakesAJobNameOfSixtyThreeBytesAndNoLongerOne)
{
    EXPECT_EQ(Parse({"--job", std::string(63, 'j')}).jobName.Text().size(), 63u);
    EXPECT_THROW(Parse({"--job", std::string(64, 'j')}), Zu::Exception);
}

} // namespace ZuHost
