#include "Host/Clinic/PluginAccess.h"

#include "Host/Clinic/PluginClinic.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace ZuHost
{

namespace
{

using std::filesystem::perms;
using Writers = PluginAccess::Writers;
using ZuTest::ScratchFolder;

class PluginAccessTest : public testing::Test
{
protected:
    PluginAccessTest() : file(scratch / "some.so")
    {
        std::ofstream(file) << "no library";
        std::filesystem::permissions(file, perms(0644));
        std::filesystem::permissions(scratch.path, perms(0755));
    }

    ScratchFolder scratch;
    std::filesystem::path const file;
};

} // namespace

TEST_F(PluginAccessTest, LetsPassWhatOnlyItsOwnerCanWrite)
{
    EXPECT_EQ(PluginAccess::Of(file).writers, Writers::OWNER);
    EXPECT_EQ(PluginAccess::Of(file).sentence, "");
    EXPECT_EQ(PluginAccess::Of(scratch / "missing.so").writers, Writers::OWNER);
}

TEST_F(PluginAccessTest, FindsAFileAndAFolderThatOthersCanWrite)
{
    for (std::filesystem::path const& place : {file, scratch.path})
    {
        perms const before = std::filesystem::status(place).permissions();
        std::filesystem::permissions(place, before | perms::group_write);
        PluginAccess const ofGroup = PluginAccess::Of(file);
        std::filesystem::permissions(place, before | perms::group_write | perms::others_write);
        PluginAccess const ofAll = PluginAccess::Of(file);
        std::filesystem::permissions(place, before);

        EXPECT_EQ(ofGroup.writers, Writers::GROUP);
        EXPECT_NE(ofGroup.sentence.find("can be changed by the group of " + place.string() + "."), std::string::npos)
            << ofGroup.sentence;
        EXPECT_EQ(ofAll.writers, Writers::EVERYONE);
        EXPECT_NE(ofAll.sentence.find("was refused: everyone can write " + place.string() + "."), std::string::npos)
            << ofAll.sentence;
    }
}

TEST_F(PluginAccessTest, LooksBehindALink)
{
    ScratchFolder other;
    std::filesystem::create_symlink(file, other / "link.so");
    std::filesystem::permissions(scratch.path, perms(0777));

    EXPECT_EQ(PluginAccess::Of(other / "link.so").writers, Writers::EVERYONE);
}

TEST_F(PluginAccessTest, KeepsTheClinicFromLoadingWhatEveryoneCanWrite)
{
    std::filesystem::permissions(file, perms(0666));
    PluginClinic const clinic{Deployment::PHYSICAL_SENSOR};

    PluginClinic::Admission const admission = clinic.Admit({file});
    PluginClinic::CheckUp const checkUp = clinic.Check(file);

    EXPECT_TRUE(admission.files.empty());
    ASSERT_EQ(admission.complaints.size(), 1u);
    EXPECT_EQ(admission.complaints[0].sentence, PluginAccess::Of(file).sentence);
    EXPECT_FALSE(checkUp.isSound);
    EXPECT_EQ(checkUp.report, PluginAccess::Of(file).sentence);
}

} // namespace ZuHost
