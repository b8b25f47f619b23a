#include "Ctl/Settings/SensorsFile.h"

#include "Ctl/Outcome/Failure.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

namespace ZuCtl
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;

class SensorsFiles : public testing::Test
{
protected:
    SensorsFile Read(std::string const& text, mode_t mode = 0600)
    {
        std::ofstream(file) << text;
        chmod(file.c_str(), mode);
        return SensorsFile::Read(file);
    }

    std::string RefusalOf(std::string const& text, mode_t mode = 0600)
    {
        try
        {
            Read(text, mode);
        }
        catch (Failure const& failure)
        {
            EXPECT_EQ(failure.Status(), ExitStatus::LOCAL_FILE);
            return failure.what();
        }
        return "";
    }

    ZuTest::ScratchFolder folder;
    std::filesystem::path const file = folder.path / "sensors.toml";
};

} // namespace

TEST_F(SensorsFiles, NameSensors)
{
    SensorsFile const sensors = Read("default = 'line1'\n"
                                     "[sensors.line1]\n"
                                     "url = 'https://10.0.0.7:8443'\n"
                                     "token = 'zc_abc'\n"
                                     "authority = 'line1.pem'\n"
                                     "[sensors.line2]\n"
                                     "url = 'http://127.0.0.1:8080'\n"
                                     "tokenFile = '/run/token'\n"
                                     "fingerprint = 'SHA256:00'\n");

    EXPECT_EQ(sensors.DefaultName(), "line1");
    NamedSensor const& first = sensors.Find("line1");
    EXPECT_EQ(first.url, "https://10.0.0.7:8443");
    EXPECT_EQ(first.token, "zc_abc");
    EXPECT_EQ(first.authorityFile, folder.path / "line1.pem");
    NamedSensor const& second = sensors.Find("line2");
    EXPECT_EQ(second.tokenFile, "/run/token");
    EXPECT_EQ(second.fingerprint, "SHA256:00");
}

TEST_F(SensorsFiles, NameTheKnownSensorsWhenOneIsMissing)
{
    SensorsFile const sensors = Read("[sensors.a]\nurl='x'\n[sensors.b]\nurl='y'\n");
    try
    {
        sensors.Find("c");
        ADD_FAILURE();
    }
    catch (Failure const& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::USAGE);
        EXPECT_THAT(failure.what(), EndsWith("; it has a, b"));
    }
}

TEST_F(SensorsFiles, AreEmptyWithoutAFileAtTheUsualPlace)
{
    char const* const before = std::getenv("XDG_CONFIG_HOME");
    std::string const kept = before != nullptr ? before : "";
    setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1);
    EXPECT_EQ(SensorsFile::ReadUsual().DefaultName(), "");
    before != nullptr ? setenv("XDG_CONFIG_HOME", kept.c_str(), 1) : unsetenv("XDG_CONFIG_HOME");
}

TEST_F(SensorsFiles, AreRefusedIfANamedFileIsMissing)
{
    try
    {
        SensorsFile::Read(folder.path / "none");
        ADD_FAILURE();
    }
    catch (Failure const& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::LOCAL_FILE);
        EXPECT_THAT(failure.what(), HasSubstr("cannot be read: No such file"));
    }
}

TEST_F(SensorsFiles, AreRefusedWithFileLineAndReason)
{
    EXPECT_THAT(RefusalOf("[sensors.a]\nurl = 'x'\n", 0640), HasSubstr("others can read it"));
    EXPECT_THAT(RefusalOf("a = \n"), HasSubstr("sensors.toml, line 1: "));
    EXPECT_THAT(RefusalOf("\ndefualt = 'a'\n"),
                EndsWith("line 2: 'defualt' is not known; known are default and sensors"));
    EXPECT_THAT(RefusalOf("default = 1\n"), EndsWith("line 1: 'default' is no text"));
    EXPECT_THAT(RefusalOf("sensors = 1\n"), EndsWith("line 1: 'sensors' is no table"));
    EXPECT_THAT(RefusalOf("[sensors]\na = 1\n"), EndsWith("line 2: 'a' is no table"));
    EXPECT_THAT(RefusalOf("[sensors.a]\ntoken = 'x'\n"), EndsWith("the sensor 'a' has no url"));
    EXPECT_THAT(RefusalOf("[sensors.a]\nurl = 'x'\npasword = 'x'\n"),
                HasSubstr("line 3: 'pasword' is not known; known are url"));
}

TEST_F(SensorsFiles, LieInTheFolderOfConfigurations)
{
    std::string const before = std::getenv("XDG_CONFIG_HOME") != nullptr ? std::getenv("XDG_CONFIG_HOME") : "";
    setenv("XDG_CONFIG_HOME", "/configuration", 1);
    EXPECT_EQ(SensorsFile::UsualPlace(), "/configuration/zucontrol/sensors.toml");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("HOME", "/home/anna", 1);
    EXPECT_EQ(SensorsFile::UsualPlace(), "/home/anna/.config/zucontrol/sensors.toml");
    before.empty() ? unsetenv("XDG_CONFIG_HOME") : setenv("XDG_CONFIG_HOME", before.c_str(), 1);
}

} // namespace ZuCtl
