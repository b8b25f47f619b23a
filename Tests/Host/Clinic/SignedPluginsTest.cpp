#include "Host/Clinic/SignedPlugins.h"

#include "Host/Clinic/PluginClinic.h"
#include "Host/Clinic/TestSigner.h"
#include "Support/DescriptorLimit.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Exception.h"
#include "ZuPlugin/PluginManager.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZuHost
{

namespace
{

std::filesystem::path FileOf(char const* name)
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

class SignedPluginsTest : public testing::Test
{
protected:
    SignedPluginsTest()
    {
        ZuTest::WriteBytes(keyFile, signer.Pem());
        plugins = std::make_shared<SignedPlugins>(PluginKeys(keyFile));
    }

    void Sign(std::filesystem::path const& file) const
    {
        ZuTest::WriteBytes(file.string() + ".sig", signer.Sign(ZuTest::BytesOf(file)));
    }

    std::filesystem::path Copy(std::filesystem::path const& file, std::string const& name) const
    {
        std::filesystem::copy_file(file, folder / name);
        return folder / name;
    }

    std::string RefusalOf(std::filesystem::path const& file) const
    {
        return plugins->Admit(file);
    }

    std::string Refused(std::filesystem::path const& file, std::string const& reason) const
    {
        return "Plug-in " + file.string() + " was refused: " + reason;
    }

    ZuTest::ScratchFolder folder;
    std::filesystem::path const keyFile = folder / "keys";
    std::filesystem::path const file = folder / "x.so";
    TestSigner const signer;
    std::shared_ptr<SignedPlugins> plugins;
};

} // namespace

TEST_F(SignedPluginsTest, AdmitsASignedFileAndTellsItsKey)
{
    ZuTest::WriteBytes(file, "bytes");
    Sign(file);

    EXPECT_EQ(RefusalOf(file), "");
    EXPECT_EQ(ZuTest::BytesOf(plugins->LoadPath(file)), "bytes");
    EXPECT_EQ(plugins->SignerOf(file), "signed by key 1 in " + keyFile.string());
}

TEST_F(SignedPluginsTest, RefusesAMissingWrongCutOrForeignSignature)
{
    std::string const wrong = "its signature x.so.sig was made for another file, or by no key in " + keyFile.string();
    ZuTest::WriteBytes(file, "bytes");
    EXPECT_EQ(RefusalOf(file), Refused(file, "it has no signature x.so.sig, and --plugin-keys asks for one"));

    ZuTest::WriteBytes(file.string() + ".sig", "");
    EXPECT_EQ(RefusalOf(file), Refused(file, "it has no signature x.so.sig, and --plugin-keys asks for one"));

    ZuTest::WriteBytes(file.string() + ".sig", signer.Sign("other bytes"));
    EXPECT_EQ(RefusalOf(file), Refused(file, wrong));

    ZuTest::WriteBytes(file.string() + ".sig", signer.Sign("bytes").substr(1));
    EXPECT_EQ(RefusalOf(file), Refused(file, wrong));

    ZuTest::WriteBytes(file.string() + ".sig", signer.Sign("bytes") + "x");
    EXPECT_EQ(RefusalOf(file), Refused(file, wrong));

    ZuTest::WriteBytes(file.string() + ".sig", TestSigner().Sign("bytes"));
    EXPECT_EQ(RefusalOf(file), Refused(file, wrong));
    EXPECT_EQ(ZuTest::RefusalOf([&] { plugins->LoadPath(file); }).status, Zu::Status::NOT_FOUND);
}

TEST_F(SignedPluginsTest, RefusesAFileThatCannotBeRead)
{
    ZuTest::WriteBytes(file.string() + ".sig", signer.Sign(""));
    EXPECT_EQ(RefusalOf(file), Refused(file, "it cannot be read: No such file or directory"));

    ZuTest::WriteBytes(file, "");
    EXPECT_EQ(RefusalOf(file), Refused(file, "it cannot be read: it is empty"));

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(RefusalOf(file), Refused(file, "it cannot be read: Is a directory"));
}

TEST_F(SignedPluginsTest, RefusesAFileWithoutEnd)
{
    std::filesystem::create_symlink("/dev/zero", file);
    ZuTest::WriteBytes(file.string() + ".sig", signer.Sign("bytes"));

    EXPECT_EQ(RefusalOf(file), Refused(file, "it cannot be read: it is larger than 256 MiB"));
}

TEST_F(SignedPluginsTest, RefusesAFileThatItHasNoRoomFor)
{
    ZuTest::WriteBytes(file, "bytes");
    Sign(file);
    std::string refusal;
    bool isFreeAgain = false;
    {
        ZuTest::DescriptorLimit const one(1); // for the file, and none for its copy
        refusal = RefusalOf(file);
        isFreeAgain = close(open("/dev/null", O_RDONLY | O_CLOEXEC)) == 0;
    }

    EXPECT_EQ(refusal, Refused(file, "it cannot be read: Too many open files"));
    EXPECT_TRUE(isFreeAgain) << "the refusal closes the file";
    EXPECT_EQ(RefusalOf(file), "") << "there is room again";
}

TEST_F(SignedPluginsTest, KeepsACopyThatCannotBeChanged)
{
    ZuTest::WriteBytes(file, "bytes");
    SealedFile const copy(file);

    int const writer = open(copy.Path().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    EXPECT_EQ(pwrite(writer, "x", 1, 0), -1);
    EXPECT_EQ(ftruncate(writer, 1), -1);
    EXPECT_EQ(ftruncate(writer, 100), -1);
    close(writer);
    EXPECT_EQ(copy.Bytes(), "bytes");
}

TEST_F(SignedPluginsTest, LoadsTheCheckedBytesAlthoughTheFileWasSwappedBetweenCheckAndLoad)
{
    std::filesystem::path const plugin = Copy(FileOf("plugins/asciitcp.so"), "plugin.so");
    Sign(plugin);
    PluginClinic::Admission const admission =
        PluginClinic(Deployment::PHYSICAL_SENSOR, PluginClinic::LONGEST_SILENCE, plugins).Admit({plugin});
    ASSERT_EQ(admission.files, (std::vector{plugin})) << admission.complaints.at(0).sentence;

    std::filesystem::remove(plugin);
    Copy(FileOf("tests/abortinginitialiser/abortinginitialiser.so"), "plugin.so"); // would end this process

    ZuPlugin::PluginManager manager;
    EXPECT_TRUE(manager.LoadFile(plugin.string(), admission.LoadPath(plugin).string()));
    ASSERT_EQ(manager.Count(), 1u);
    EXPECT_EQ(manager.At(0).Path(), plugin.string());
}

TEST_F(SignedPluginsTest, AreAskedForByTheClinicBeforeAnyCodeRuns)
{
    std::filesystem::path const plugin = Copy(FileOf("tests/abortinginitialiser/abortinginitialiser.so"), "plugin.so");
    PluginClinic const clinic(Deployment::PHYSICAL_SENSOR, PluginClinic::LONGEST_SILENCE, plugins);
    std::string const sentence = Refused(plugin, "it has no signature plugin.so.sig, and --plugin-keys asks for one");

    PluginClinic::Admission const admission = clinic.Admit({plugin});
    ASSERT_EQ(admission.complaints.size(), 1u);
    EXPECT_EQ(admission.complaints[0].sentence, sentence);
    EXPECT_TRUE(admission.files.empty());

    PluginClinic::CheckUp const checkUp = clinic.Check(plugin);
    EXPECT_FALSE(checkUp.isSound);
    EXPECT_EQ(checkUp.report, sentence);
}

TEST_F(SignedPluginsTest, AreToldByTheCheckOfAPlugin)
{
    std::filesystem::path const plugin = Copy(FileOf("plugins/asciitcp.so"), "plugin.so");
    Sign(plugin);
    PluginClinic const clinic(Deployment::PHYSICAL_SENSOR, PluginClinic::LONGEST_SILENCE, plugins);

    PluginClinic::CheckUp const checkUp =
        clinic.Check(plugin, {FileOf("plugins/modbustcp.so")}); // no signature: not run

    EXPECT_TRUE(checkUp.isSound) << checkUp.report;
    EXPECT_TRUE(checkUp.report.ends_with(plugin.string() + " is signed by key 1 in " + keyFile.string() + "\n"))
        << checkUp.report;
}

} // namespace ZuHost
