#include "Host/HostProgram.h"

#include "Support/Certificates.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace ZuHost
{

namespace
{

class HostProgramTest : public testing::Test
{
protected:
    HostProgramTest()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zu-host-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }

    ~HostProgramTest() override
    {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    /// Runs the host, without plug-ins unless the arguments name some, and records its output up to the end of the
    /// start.
    int Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"zucontrol-host", "--http", "127.0.0.1:0", "--log", "error", "--plugins",
                                     folder.string(), "--data", (folder / "data").string()});
        return RunHost(words, output, errors, [this] {
            ++runs;
            outputWhenUp = output.str();
        });
    }

    std::filesystem::path folder;
    std::ostringstream output;
    std::ostringstream errors;
    std::string outputWhenUp;
    int runs = 0;
};

} // namespace

TEST_F(HostProgramTest, IsReadyAndEndsInOrder)
{
    EXPECT_EQ(Run({}), 0);

    EXPECT_TRUE(std::regex_match(outputWhenUp, std::regex("listening http 127\\.0\\.0\\.1:[1-9]\\d*\nready\n")))
        << outputWhenUp;
    EXPECT_EQ(errors.str(), "");
    EXPECT_EQ(runs, 1);
}

TEST_F(HostProgramTest, EndsInOrderBehindWhatIsNoException)
{
    std::vector<std::string> const words{"zucontrol-host", "--http", "127.0.0.1:0",
                                         "--log",          "error",  "--plugins",
                                         folder.string(),  "--data", (folder / "data").string()};

    EXPECT_EQ(RunHost(words, output, errors, [] { throw 42; }), 1);

    EXPECT_EQ(errors.str(), "zucontrol-host: exception of an unknown type\n");
}

TEST_F(HostProgramTest, ScansWhenAskedTo)
{
    EXPECT_EQ(Run({"--start", "--rate", "1000"}), 0);
    EXPECT_EQ(Run({"--start", "--rate", "0"}), 0);

    EXPECT_EQ(runs, 2);
    EXPECT_EQ(errors.str(), "");
}

TEST_F(HostProgramTest, ShowsHelpAndVersionAndDoesNotRun)
{
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_EQ(output.str().rfind("usage: zucontrol-host", 0), 0u);

    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_NE(output.str().find("zucontrol-host 1."), std::string::npos);
    EXPECT_EQ(runs, 0);
}

struct BadInputCase
{
    char const* name;
    std::vector<std::string> words;
    char const* line;
};

class HostProgramBadInput : public HostProgramTest, public testing::WithParamInterface<BadInputCase>
{
};

TEST_P(HostProgramBadInput, IsOneClearLineAndStatusTwo)
{
    EXPECT_EQ(Run(GetParam().words), 2);

    EXPECT_EQ(errors.str(), std::string("zucontrol-host: ") + GetParam().line + "\n");
    EXPECT_EQ(output.str(), "");
    EXPECT_EQ(runs, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Every, HostProgramBadInput,
    testing::Values(
        BadInputCase{"Option", {"--nonsense"}, "option '--nonsense' is not known or takes no value"},
        BadInputCase{"Folder", {"--plugins", "nowhere"}, "option '--plugins': there is no folder 'nowhere'"},
        BadInputCase{"Replay", {"--replay", "nowhere.pcd"}, "nowhere.pcd: No such file or directory"},
        BadInputCase{"Http",
                     {"--http", "localhost:8080"},
                     "The REST service cannot listen on localhost:8080: the address is not an IP address"},
        BadInputCase{
            "HttpForAll",
            {"--http", "0.0.0.0:8080"},
            "The REST service does not listen on 0.0.0.0:8080 without encryption: give --https 0.0.0.0:8080 in "
            "place of --http, or --insecure as well"},
        BadInputCase{"Token",
                     {"--http", "0.0.0.0:0", "--token", "nowhere.token"},
                     "option '--token': nowhere.token: No such file or directory"},
        BadInputCase{"Certificate",
                     {"--https", "127.0.0.1:0", "--certificate", "nowhere.pem", "--key", "nowhere.key"},
                     "the certificate nowhere.pem cannot be read: No such file or directory"},
        BadInputCase{"Enable", {"--enable", "Nobody"}, "there is no protocol 'Nobody' (no plug-in offers one)"},
        BadInputCase{"Param", {"--param", "Nobody.port=1"}, "there is no protocol 'Nobody' (no plug-in offers one)"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(HostProgramTest, ListensForAllWithAToken)
{
    std::filesystem::path const file = folder / "token";
    std::ofstream(file) << "0123456789abcdef\n";
    std::filesystem::permissions(file, std::filesystem::perms(0600));

    EXPECT_EQ(Run({"--http", "0.0.0.0:0", "--insecure", "--token", file.string()}), 0);

    EXPECT_EQ(outputWhenUp.rfind("listening http 0.0.0.0:", 0), 0u) << outputWhenUp;
}

TEST_F(HostProgramTest, ListensForHttpsWithACertificate)
{
    ZuTest::TestCertificate({}).Write(folder, "host");

    EXPECT_EQ(Run({"--https", "127.0.0.1:0", "--certificate", (folder / "host.pem").string(), "--key",
                   (folder / "host.key").string()}),
              0)
        << errors.str();

    std::regex const expected("listening http 127\\.0\\.0\\.1:[1-9]\\d*\nlistening https 127\\.0\\.0\\.1:[1-9]\\d*\n"
                              "fingerprint https SHA256(:[0-9A-F]{2}){32}\nready\n");
    EXPECT_TRUE(std::regex_match(outputWhenUp, expected)) << outputWhenUp;
}

TEST_F(HostProgramTest, MakesItsOwnCertificateInTheDataFolder)
{
    EXPECT_EQ(Run({"--https", "127.0.0.1:0"}), 0) << errors.str();

    std::regex const expected("listening http .*\nlistening https 127\\.0\\.0\\.1:[1-9]\\d*\n"
                              "fingerprint https SHA256(:[0-9A-F]{2}){32}\n"
                              "fingerprint authority SHA256(:[0-9A-F]{2}){32}\nready\n");
    EXPECT_TRUE(std::regex_match(outputWhenUp, expected)) << outputWhenUp;
    EXPECT_TRUE(std::filesystem::exists(folder / "data" / "tls" / "authority.pem"));
}

TEST_F(HostProgramTest, TellsThatThePortOfTheRestServiceIsTaken)
{
    std::ostringstream innerErrors;
    std::ostringstream innerOutput;
    std::string taken;
    int status = 0;
    std::vector<std::string> const words{"zucontrol-host",          "--http", "127.0.0.1:0", "--log", "error", "--data",
                                         (folder / "data").string()};
    EXPECT_EQ(RunHost(words, output, errors,
                      [&] {
                          std::string const text = output.str();
                          taken = text.substr(15, text.find('\n') - 15); // behind "listening http "
                          status = RunHost({"zucontrol-host", "--http", taken, "--data", (folder / "inner").string()},
                                           innerOutput, innerErrors, [] { FAIL(); });
                      }),
              0);

    EXPECT_EQ(status, 1);
    EXPECT_EQ(innerErrors.str(),
              "zucontrol-host: The REST service cannot listen on " + taken + ": Address already in use\n");
    EXPECT_EQ(innerOutput.str(), "");
}

TEST_F(HostProgramTest, TellsThatAnotherHostHasTheDataFolder)
{
    int status = 0;
    std::ostringstream innerErrors;
    std::string const data = (folder / "data").string();
    EXPECT_EQ(RunHost({"zucontrol-host", "--http", "127.0.0.1:0", "--log", "error", "--data", data}, output, errors,
                      [&] {
                          status = RunHost({"zucontrol-host", "--http", "127.0.0.1:0", "--data", data}, output,
                                           innerErrors, [] { FAIL(); });
                      }),
              0);

    EXPECT_EQ(status, 2);
    EXPECT_EQ(innerErrors.str(), "zucontrol-host: The data folder '" + data + "' belongs to another host that runs\n");
}

TEST_F(HostProgramTest, ReplaysARangeImage)
{
    std::filesystem::path const file = folder / "part.pcd";
    std::ofstream(file) << "VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\nWIDTH 1\nHEIGHT 2\n"
                           "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS 2\nDATA ascii\n0 0 1\nnan nan nan\n";

    EXPECT_EQ(Run({"--start", "--replay", file.string()}), 0);

    EXPECT_EQ(runs, 1);
}

} // namespace ZuHost
