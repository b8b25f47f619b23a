#include "Host/Store/HostileArchives.h"

#include "Host/Store/Archive.h"
#include "Host/Store/ArchiveFile.h"
#include "Host/Store/DataFolder.h"
#include "Host/Store/DocumentCheck.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <ctime>

namespace ZuHost
{

namespace
{

using Files = ArchiveContents::Files;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

constexpr char const* DOCUMENT = "controls/One/config.json";

/// The processor time of this thread since construction.
class Stopwatch final
{
public:
    double Seconds() const
    {
        return Now() - start;
    }

private:
    static double Now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    }

    double const start = Now();
};

struct HostileCase
{
    char const* label;
    std::string (*make)();
    char const* fault; ///< found before a row is read
};

class HostileArchives : public testing::TestWithParam<HostileCase>
{
protected:
    HostileArchives()
    {
        ZuTest::WriteBytes(folder.JobFile(JobName("job")), bytes);
    }

    ArchiveFile Open()
    {
        return {folder, folder.JobFile(JobName("job"))};
    }

    // A file is opened a few times, and each time may use the bound.
    static constexpr double MOST_SECONDS = 4.0 * static_cast<double>(SqliteFile::MAX_PROCESSOR_USEC) / 1e6;

    ZuTest::ScratchFolder scratch;
    DataFolder const folder{scratch.path};
    std::string const bytes = GetParam().make();
};

} // namespace

TEST_P(HostileArchives, AreRefusedAsUploadsWithinTheBound)
{
    Stopwatch const watch;

    Refusal const refusal = RefusalOf([&] { ArchiveFile::Checked("job", bytes); });

    EXPECT_EQ(refusal, (Refusal{Zu::Status::BAD_FORMAT, std::string("What was sent is no job: ") + GetParam().fault}));
    EXPECT_LT(watch.Seconds(), MOST_SECONDS);
}

TEST_P(HostileArchives, AreReadWithinTheBoundAndReplacedByTheNextSave)
{
    Stopwatch const watch;
    ArchiveFile file = Open();

    EXPECT_EQ(RefusalOf([&] { file.Read(); }).status, Zu::Status::BAD_FORMAT);
    file.Save({{DOCUMENT, "{}"}}, {DOCUMENT}, false);

    EXPECT_LT(watch.Seconds(), MOST_SECONDS);
    EXPECT_EQ(Open().Read().files, (Files{{DOCUMENT, "{}"}}));
    EXPECT_EQ(ZuTest::BytesOf(scratch / "job.zpjob.damaged-1"), bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Every, HostileArchives,
    testing::Values(HostileCase{"SlowCheck", ZuTest::ArchiveWithSlowCheck, "its schema is that of no archive: 'sqlar'"},
                    HostileCase{"HiddenCheck", ZuTest::ArchiveWithHiddenCheck,
                                "its schema is that of no archive: 'slow0'"},
                    HostileCase{"EndlessRows", ZuTest::ArchiveWithEndlessRows,
                                "*** in database main ***?On tree page 10 cell 99: Rowid 100 out of order"},
                    HostileCase{"EndlessSchema", ZuTest::ArchiveWithEndlessSchema,
                                "The file 'job' cannot be used: reading it takes longer than 2000 ms"}),
    [](auto const& tested) { return std::string(tested.param.label); });

TEST(HostileArchive, IsRefusedBeforeMemoryIsAllocatedForWhatItClaims)
{
    constexpr unsigned ROWS = 3'000; // without a check of the claims, each row costs the filling of 16 MiB
    std::string const bytes = ZuTest::ArchiveOfClaims(ROWS, DocumentCheck::MAX_BYTES);
    Stopwatch const watch;

    Refusal const refusal = RefusalOf([&] { ArchiveFile::Checked("job", bytes); });

    EXPECT_EQ(refusal, (Refusal{Zu::Status::BAD_FORMAT, "What was sent is no job: '1': its content is damaged"}));
    EXPECT_LT(watch.Seconds(), 1.0);
}

TEST(HostileArchive, IsRefusedWhenItHasMoreRowsThanMayBeRead)
{
    std::string const bytes = ZuTest::ArchiveOfClaims(Archive::MAX_ROWS + 1, DocumentCheck::MAX_BYTES);

    EXPECT_EQ(RefusalOf([&] { ArchiveFile::Checked("job", bytes); }),
              (Refusal{Zu::Status::BAD_FORMAT, "What was sent is no job: there is too much in it"}));
}

TEST(HostileArchive, IsNeitherReadNorCopiedToMemoryWhenItsFileIsTooLong)
{
    ZuTest::ScratchFolder const scratch;
    DataFolder const folder(scratch.path);
    ArchiveFile file(folder, scratch / "job.zpjob");
    file.Save({{DOCUMENT, "{}"}}, {DOCUMENT}, false);
    std::filesystem::resize_file(scratch / "job.zpjob", Archive::MAX_FILE_BYTES + 1); // takes no room on the disk

    Refusal const expected{Zu::Status::BAD_FORMAT, "The file 'job.zpjob' is longer than 268435456 bytes"};
    EXPECT_EQ(RefusalOf([&] { file.Read(); }), expected);
    EXPECT_EQ(RefusalOf([&] { file.Image(); }), expected);
    EXPECT_EQ(RefusalOf([&] { file.CopyTo(scratch / "copy.zpjob"); }), expected);
}

} // namespace ZuHost
