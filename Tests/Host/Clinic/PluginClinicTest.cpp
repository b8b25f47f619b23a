#include "Host/Clinic/PluginClinic.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using Paths = std::vector<std::filesystem::path>;

constexpr std::chrono::milliseconds SHORT_SILENCE{2000}; // longer than any step, short for a test of a hang

std::filesystem::path FileOf(char const* name)
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

std::filesystem::path Troubled(std::string const& trouble)
{
    return FileOf("tests") / trouble / (trouble + ".so");
}

/// `text` with the path of `file` in place of "FILE".
std::string SentenceOf(std::string text, std::filesystem::path const& file)
{
    return text.replace(text.find("FILE"), 4, file.string());
}

/// A faulty plug-in, the sentence that reports the fault, and whether the host finds the fault at admission.
struct TroubleCase
{
    char const* name;
    std::filesystem::path file;
    bool isFoundAtAdmission;
    char const* sentence; ///< a part of the report
};

std::vector<TroubleCase> AllTroubles()
{
    constexpr bool AT_ADMISSION = true;
    constexpr bool LATER = false;
    return {
        {"NoFile", "/nowhere.so", AT_ADMISSION, "Plug-in FILE was refused: there is no such file"},
        {"NoEntry", FileOf("TestPlugins/NoEntryPoints.so"), AT_ADMISSION,
         "Plug-in FILE was refused: it is no plug-in: it has no entry point ZuPlugin_Abi"},
        {"WrongAbi", FileOf("TestPlugins/OtherAbi.so"), AT_ADMISSION,
         "Plug-in FILE was refused: it was built for 'something else' and not for '"},
        {"NoObject", FileOf("TestPlugins/EmptyMaker.so"), AT_ADMISSION,
         "Plug-in FILE was refused: it does not give its plug-in number 1 of 1 (status 1)"},
        {"ThrowingMaker", FileOf("TestPlugins/ThrowingMaker.so"), AT_ADMISSION,
         "Plug-in FILE was refused: no licence for 100%s"},
        {"MissingDependency", FileOf("TestPlugins/MissingDependency.so"), AT_ADMISSION,
         "Plug-in FILE was refused: the system says: libTestDependency.so: cannot open shared object file"},
        {"AbortingInitialiser", Troubled("abortinginitialiser"), AT_ADMISSION,
         "Plug-in FILE ended the process with signal 6 (Aborted) while it was being loaded"},
        {"ExitingInitialiser", Troubled("exitinginitialiser"), AT_ADMISSION,
         "Plug-in FILE ended the process with status 0 while it was being loaded"},
        {"HangingInitialiser", Troubled("hanginginitialiser"), AT_ADMISSION,
         "Plug-in FILE came to no end within 2000 ms while it was being loaded"},
        {"MissingFactory", Troubled("missingfactory"), AT_ADMISSION,
         "Plug-in FILE failed (Failed to create protocol Troubled) while it was being made"},
        {"EmptyFactory", Troubled("emptyfactory"), AT_ADMISSION,
         "Plug-in FILE failed (Failed to create protocol Troubled) while it was being made"},
        {"ThrowingFactory", FileOf("tests/throwingfactory/throwingfactory.so"), AT_ADMISSION,
         "Plug-in FILE failed (no licence for this protocol) while it was being made"},
        {"ThrowingConstructor", Troubled("throwingconstructor"), AT_ADMISSION,
         "Plug-in FILE failed (no licence for this sensor) while it was being made"},
        {"AbortingConstructor", Troubled("abortingconstructor"), AT_ADMISSION,
         "Plug-in FILE ended the process with signal 6 (Aborted) while it was being made"},
        {"TakenNumber", Troubled("takennumber"), AT_ADMISSION,
         "Plug-in FILE was refused: its protocol Troubled has the number 1 of ModbusTcp in "},
        {"HostsNumber", Troubled("hostsnumber"), AT_ADMISSION,
         "Plug-in FILE was refused: its protocol Troubled has the number -1 of the host"},
        {"TwinNumbers", Troubled("twinnumbers"), AT_ADMISSION,
         "Plug-in FILE was refused: its protocol Twin has the number 110 of Troubled in "},
        {"BadName", Troubled("badname"), LATER,
         "Plug-in FILE failed (the type name \"Troubled type\" may have letters and digits only) while it was being "
         "asked for "
         "its names"},
        {"TakenName", Troubled("takenname"), LATER,
         "Plug-in FILE was refused: its protocol ModbusTcp has the type name of a protocol in "},
        {"NoProtocol", FileOf("TestPlugins/Good.so"), LATER,
         "Plug-in FILE failed (it offers no protocol for this kind of system) while it was being started"},
        {"ThrowingStart", Troubled("throwingstart"), LATER, "no cable) while it was being started"},
        {"FailingStart", Troubled("failingstart"), LATER, ") while it was being started"},
        {"ThrowingResults", Troubled("throwingresults"), LATER,
         "Plug-in FILE failed (no appetite) while it was being fed with results"},
        {"ForeignResults", Troubled("foreignresults"), LATER,
         "Plug-in FILE threw something that is no exception while it was being fed with results"},
        {"LoggedError", Troubled("loggederror"), LATER,
         "Plug-in FILE wrote an error to the log (these results are bad) while it was being tried"},
        {"HangingStop", Troubled("hangingstop"), LATER,
         "Plug-in FILE came to no end within 2000 ms while it was being stopped"},
        {"ThrowingStop", Troubled("throwingstop"), LATER, "no way back) while it was being stopped"},
        {"AbortingDestructor", Troubled("abortingdestructor"), LATER,
         "Plug-in FILE ended the process with signal 6 (Aborted) while it was being made a second time"},
        {"KeptProtocol", Troubled("keptprotocol"), LATER,
         "Plug-in FILE failed (it keeps a protocol that nobody needs any more) while it was being destroyed"},
    };
}

class TroubledPlugin : public testing::TestWithParam<TroubleCase>
{
};

} // namespace

TEST_P(TroubledPlugin, IsFoundByTheCheckWithASentence)
{
    PluginClinic::CheckUp const checkUp = PluginClinic(Deployment::PHYSICAL_SENSOR, SHORT_SILENCE)
                                              .Check(GetParam().file, {FileOf("plugins/modbustcp.so")});

    EXPECT_FALSE(checkUp.isSound);
    std::string const sentence = GetParam().sentence;
    EXPECT_NE(
        checkUp.report.find(sentence.starts_with("Plug-in FILE") ? SentenceOf(sentence, GetParam().file) : sentence),
        std::string::npos)
        << checkUp.report;
    EXPECT_NE(checkUp.report.find(GetParam().file.string()), std::string::npos) << checkUp.report;
}

TEST_P(TroubledPlugin, IsNotAdmittedWhereItWouldHarmTheStart)
{
    Paths const files{FileOf("plugins/modbustcp.so"), GetParam().file, FileOf("samples/example.so")};

    PluginClinic::Admission const admission = PluginClinic(Deployment::PHYSICAL_SENSOR, SHORT_SILENCE).Admit(files);

    if (!GetParam().isFoundAtAdmission)
    {
        EXPECT_EQ(admission.files, files);
        EXPECT_TRUE(admission.complaints.empty());
        return;
    }
    EXPECT_EQ(admission.files, (Paths{files[0], files[2]}));
    ASSERT_EQ(admission.complaints.size(), 1u);
    EXPECT_EQ(admission.complaints[0].file, files[1]);
    EXPECT_EQ(admission.complaints[0].sentence.find(SentenceOf(GetParam().sentence, GetParam().file)), 0u)
        << admission.complaints[0].sentence;
}

INSTANTIATE_TEST_SUITE_P(Every, TroubledPlugin, testing::ValuesIn(AllTroubles()),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(PluginClinic, TellsWhatASoundPluginOffers)
{
    PluginClinic::CheckUp const checkUp =
        PluginClinic(Deployment::PHYSICAL_SENSOR).Check(FileOf("plugins/modbustcp.so"));

    EXPECT_TRUE(checkUp.isSound);
    EXPECT_EQ(
        checkUp.report.find(FileOf("plugins/modbustcp.so").string() +
                            " offers\n"
                            "  ModbusTcp (Modbus TCP), protocol number 1\n"
                            "    parameters: port, address, maxClients, registerOrder, idleTimeout, makeRoomAfter, "
                            "allowedClients, writers, readOnly, security, certificateFile, keyFile, authorityFile, "
                            "revocationFile, roles, queueDepth\n"
                            "    register assemblies: registerAssembly-0\n"
                            "    commands: orderTest\n"
                            "    metrics: controlDrops, listening, clients, acceptedClients, rejectedClients, "
                            "deniedClients, failedHandshakes, droppedClients, requests, deniedRequests, "
                            "exceptions, bytesIn, bytesOut, resultSets, commands, registersWritten, queuedResults, "
                            "queueOverflows, lastHandlingUsec, largestHandlingUsec, lifetime\n"
                            "    listens on: 127.0.0.1:"),
        0u)
        << checkUp.report;
}

TEST(PluginClinic, TakesAFileOfTheSameNameForAnotherVersionOfThePlugin)
{
    PluginClinic::CheckUp const checkUp =
        PluginClinic(Deployment::PHYSICAL_SENSOR)
            .Check(FileOf("plugins/modbustcp.so"), {FileOf("plugins/../plugins/modbustcp.so"), Troubled("badname")});

    EXPECT_TRUE(checkUp.isSound) << checkUp.report;
}

TEST(PluginClinic, AdmitsTheFirstOfTwoPluginsWithOneNumber)
{
    Paths const files{Troubled("takennumber"), FileOf("plugins/modbustcp.so"), FileOf("samples/example.so")};

    PluginClinic::Admission const admission = PluginClinic(Deployment::PHYSICAL_SENSOR).Admit(files);

    EXPECT_EQ(admission.files, (Paths{files[0], files[2]}));
    ASSERT_EQ(admission.complaints.size(), 1u);
    EXPECT_EQ(admission.complaints[0].sentence, "Plug-in " + files[1].string() +
                                                    " was refused: its protocol ModbusTcp has the number 1 of "
                                                    "Troubled in " +
                                                    files[0].string());
}

TEST(PluginClinic, ListsTheCommandsOfAPlugin)
{
    PluginClinic::CheckUp const checkUp =
        PluginClinic(Deployment::PHYSICAL_SENSOR).Check(FileOf("plugins/asciitcp.so"));

    EXPECT_TRUE(checkUp.isSound);
    EXPECT_NE(checkUp.report.find("    commands: disconnectAll, sendText\n"), std::string::npos) << checkUp.report;
}

TEST(PluginClinic, FindsTheSmallestPluginSound)
{
    PluginClinic::CheckUp const checkUp = PluginClinic(Deployment::PHYSICAL_SENSOR).Check(FileOf("samples/example.so"));

    EXPECT_TRUE(checkUp.isSound);
    EXPECT_EQ(checkUp.report, FileOf("samples/example.so").string() +
                                  " offers\n  Example (Example), protocol number 100\n    metrics: controlDrops\n");
}

TEST(PluginClinic, FindsAPluginSoundThatLooksUpHardwareInItsStart)
{
    PluginClinic::CheckUp const checkUp = PluginClinic(Deployment::PHYSICAL_SENSOR).Check(Troubled("neededhardware"));

    EXPECT_TRUE(checkUp.isSound) << checkUp.report;
}

TEST(PluginClinic, AdmitsWhatIsSoundAroundSeveralThatAreNot)
{
    Paths const files{Troubled("abortinginitialiser"), FileOf("samples/example.so"),   Troubled("abortingconstructor"),
                      Troubled("throwingconstructor"), FileOf("plugins/modbustcp.so"), Troubled("exitinginitialiser")};

    PluginClinic::Admission const admission = PluginClinic(Deployment::PHYSICAL_SENSOR).Admit(files);

    EXPECT_EQ(admission.files, (Paths{files[1], files[4]}));
    ASSERT_EQ(admission.complaints.size(), 4u);
    EXPECT_EQ(admission.complaints[0].file, files[0]);
    EXPECT_EQ(admission.complaints[1].file, files[2]);
    EXPECT_EQ(admission.complaints[2].file, files[3]);
    EXPECT_EQ(admission.complaints[3].file, files[5]);
}

TEST(PluginClinic, HasNothingToSayOfNoFiles)
{
    PluginClinic::Admission const admission = PluginClinic(Deployment::PHYSICAL_SENSOR).Admit({});

    EXPECT_TRUE(admission.files.empty());
    EXPECT_TRUE(admission.complaints.empty());
}

} // namespace ZuHost
