#include "Host/Store/DataFolder.h"

#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <optional>

namespace ZuHost
{

using ZuTest::BytesOf;
using ZuTest::WriteBytes;

TEST(DataFolder, IsMadeWhenItIsNotThere)
{
    ZuTest::ScratchFolder const scratch;

    DataFolder const folder(scratch / "a/b");

    EXPECT_TRUE(std::filesystem::is_directory(scratch / "a/b"));
    EXPECT_EQ(folder.JobFile(JobName("table")), scratch / "a/b/table.zpjob");
    EXPECT_EQ(folder.SettingsFile(), scratch / "a/b/settings.zpset");
}

TEST(DataFolder, BelongsToOneHostAtATime)
{
    ZuTest::ScratchFolder const scratch;
    std::optional<DataFolder> first(std::in_place, scratch.path);

    EXPECT_EQ(ZuTest::RefusalOf([&] { DataFolder second(scratch.path); }),
              (ZuTest::Refusal{Zu::Status::BAD_ARGUMENT,
                               "The data folder '" + scratch.path.string() + "' belongs to another host that runs"}));

    first.reset();
    DataFolder const next(scratch.path);
}

TEST(DataFolder, SaysWhatCannotBeAFolder)
{
    ZuTest::ScratchFolder const scratch;
    WriteBytes(scratch / "file", "x");

    ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { DataFolder folder(scratch / "file"); });

    EXPECT_EQ(refusal.status, Zu::Status::BAD_ARGUMENT);
    EXPECT_NE(refusal.text.find((scratch / "file").string()), std::string::npos);
}

TEST(DataFolder, ListsJobsAndNothingElse)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    for (char const* const name : {"b.zpjob", "a.zpjob", "settings.zpset", "a.zpjob.damaged-1", "a.zpjob.zpjob",
                                   ".hidden.zpjob", "a.zpjob-journal"})
    {
        WriteBytes(scratch / name, "");
    }
    std::filesystem::create_directory(scratch / "folder.zpjob");

    EXPECT_EQ(folder.Jobs(), (std::vector<JobName>{JobName("a"), JobName("b")}));
}

TEST(DataFolder, InstallsANewFileInTheOldPlace)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    WriteBytes(scratch / "job.zpjob", "old");
    WriteBytes(scratch / "job.zpjob-journal", "of the old one");
    WriteBytes(folder.NewFile(), "left by a crash");

    std::filesystem::path const made = folder.NewFile();
    EXPECT_FALSE(std::filesystem::exists(made));
    WriteBytes(made, "new");
    folder.Install(made, folder.JobFile(JobName("job")));

    EXPECT_EQ(BytesOf(scratch / "job.zpjob"), "new");
    EXPECT_FALSE(std::filesystem::exists(scratch / "job.zpjob-journal"));
    EXPECT_FALSE(std::filesystem::exists(made));
}

TEST(DataFolder, MakesItsFolderForTheOwnerAloneAndTellsOfAWideOne)
{
    using Perms = std::filesystem::perms;
    ZuTest::ScratchFolder const scratch;
    DataFolder const made(scratch / "new");
    EXPECT_EQ(std::filesystem::status(scratch / "new").permissions(), Perms::owner_all);
    EXPECT_EQ(made.WideAccess(), "");

    std::filesystem::permissions(scratch.path, Perms::owner_all | Perms::others_read);
    DataFolder const wide(scratch.path);
    EXPECT_EQ(wide.WideAccess(), "Other users can reach the data folder '" + scratch.path.string() +
                                     "'. To keep them out: chmod 700 " + scratch.path.string());
}

TEST(DataFolder, KeepsTheSettingsAndTheTrailToTheirOwner)
{
    using Perms = std::filesystem::perms;
    constexpr Perms PRIVATE = Perms::owner_read | Perms::owner_write;
    ZuTest::ScratchFolder const scratch;
    WriteBytes(scratch / "settings.zpset", "");
    WriteBytes(scratch / "audit.zplog", "");
    std::filesystem::permissions(scratch / "settings.zpset", Perms::others_read, std::filesystem::perm_options::add);
    DataFolder const folder(scratch.path);
    EXPECT_EQ(std::filesystem::status(folder.SettingsFile()).permissions(), PRIVATE);
    EXPECT_EQ(std::filesystem::status(folder.TrailFile()).permissions(), PRIVATE);

    WriteBytes(folder.NewFile(), "new");
    std::filesystem::permissions(scratch / ".new-archive", Perms::others_read, std::filesystem::perm_options::add);
    folder.Install(scratch / ".new-archive", folder.SettingsFile());
    EXPECT_EQ(std::filesystem::status(folder.SettingsFile()).permissions(), PRIVATE);
}

TEST(DataFolder, KeepsEachDamagedFileUnderANameOfItsOwn)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    WriteBytes(scratch / "job.zpjob", "damaged");

    EXPECT_EQ(folder.KeepDamaged(folder.JobFile(JobName("job"))), scratch / "job.zpjob.damaged-1");
    EXPECT_EQ(folder.KeepDamaged(folder.JobFile(JobName("job"))), scratch / "job.zpjob.damaged-2");

    EXPECT_EQ(BytesOf(scratch / "job.zpjob.damaged-2"), "damaged");
    EXPECT_EQ(BytesOf(scratch / "job.zpjob"), "damaged");
}

TEST(DataFolder, KeepsTheFiveNewestDamagedFilesOfAFile)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    WriteBytes(scratch / "other.zpjob.damaged-1", "of another job");
    WriteBytes(scratch / "job.zpjob.damaged-x", "of a person");

    for (int number = 1; number <= 12; ++number)
    {
        WriteBytes(scratch / "job.zpjob", std::to_string(number));
        folder.KeepDamaged(folder.JobFile(JobName("job")));
        std::filesystem::remove(scratch / "job.zpjob");
    }

    for (int number = 1; number <= 12; ++number)
    {
        std::string const name = "job.zpjob.damaged-" + std::to_string(number);
        EXPECT_EQ(BytesOf(scratch / name), number > 7 ? std::to_string(number) : "") << name;
    }
    EXPECT_TRUE(std::filesystem::exists(scratch / "other.zpjob.damaged-1"));
    EXPECT_TRUE(std::filesystem::exists(scratch / "job.zpjob.damaged-x"));
}

TEST(DataFolder, TakesACopyOnlyWithinTheQuota)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    WriteBytes(scratch / "large.zpjob", "");
    std::filesystem::resize_file(scratch / "large.zpjob", DataFolder::QUOTA_BYTES); // takes no room on the disk
    WriteBytes(folder.NewFile(), "new");

    EXPECT_EQ(
        ZuTest::RefusalOf([&] { folder.InstallCopy(scratch / ".new-archive", folder.JobFile(JobName("copy"))); }),
        (ZuTest::Refusal{Zu::Status::FULL, "The data folder would hold 2 jobs and 1073741827 bytes in all; it may "
                                           "hold 1000 and 1073741824: delete a job"}));
    EXPECT_FALSE(std::filesystem::exists(scratch / ".new-archive"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "copy.zpjob"));

    WriteBytes(folder.NewFile(), "new");
    folder.InstallCopy(scratch / ".new-archive", folder.JobFile(JobName("large"))); // in the place of the large one
    EXPECT_EQ(BytesOf(scratch / "large.zpjob"), "new");
}

TEST(DataFolder, TakesAThousandJobs)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    for (std::size_t number = 0; number < DataFolder::MAX_JOBS; ++number)
    {
        WriteBytes(scratch / (std::to_string(number) + ".zpjob"), "");
    }
    WriteBytes(folder.NewFile(), "new");

    EXPECT_EQ(ZuTest::RefusalOf([&] { folder.InstallCopy(scratch / ".new-archive", folder.JobFile(JobName("copy"))); }),
              (ZuTest::Refusal{Zu::Status::FULL, "The data folder would hold 1001 jobs and 3 bytes in all; it may hold "
                                                 "1000 and 1073741824: delete a job"}));
    WriteBytes(folder.NewFile(), "new");
    folder.InstallCopy(scratch / ".new-archive", folder.JobFile(JobName("0")));
    EXPECT_EQ(BytesOf(scratch / "0.zpjob"), "new");
}

TEST(DataFolder, RemovesAFileWithWhatACrashLeftBesideIt)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    WriteBytes(scratch / "job.zpjob", "");
    WriteBytes(scratch / "job.zpjob-journal", "");

    folder.Remove(folder.JobFile(JobName("job")));

    EXPECT_TRUE(std::filesystem::is_empty(scratch.path));
    EXPECT_EQ(ZuTest::RefusalOf([&] { folder.Remove(folder.JobFile(JobName("job"))); }).status, Zu::Status::NOT_FOUND);
}

} // namespace ZuHost
