#include "Host/Store/Archive.h"
#include "Host/Store/ForgetfulDisk.h"
#include "Host/Store/SqliteFile.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Files = ArchiveContents::Files;
using ZuTest::ForgetfulDisk;

constexpr char const* FILE_NAME = "/job.zpjob";
constexpr int NOTHING = -1;
constexpr int GENERATIONS = 3;

/// Two documents of several pages each, which compress badly.
Files DocumentsOf(int generation)
{
    Files files;
    for (char const* const name : {"controls/One/config.json", "controls/Two/config.json"})
    {
        std::mt19937 chance(static_cast<uint32>(generation));
        std::string text = std::to_string(generation) + ":";
        while (text.size() < 5'000 + 1'000 * static_cast<std::size_t>(generation))
        {
            text += std::to_string(chance());
        }
        files.emplace(name, text);
    }
    return files;
}

/// Returns the generation that an archive holds. Expects the documents of that generation and no others.
int GenerationIn(ArchiveContents const& contents)
{
    EXPECT_TRUE(contents.faults.empty()) << contents.faults.begin()->second;
    if (contents.entries.empty() && contents.lastGood.empty())
    {
        return NOTHING;
    }
    int const generation = std::stoi(contents.entries.begin()->second);
    EXPECT_EQ(contents.entries, DocumentsOf(generation));
    EXPECT_EQ(contents.lastGood, DocumentsOf(generation));
    return generation;
}

void Save(int generation)
{
    Archive(FILE_NAME, Access::CREATE).Write(DocumentsOf(generation), DocumentsOf(generation));
}

/// Saves one generation after another until the power fails. Returns the last generation that was saved without an
/// error.
int SaveUntilTheCut()
{
    int saved = NOTHING;
    try
    {
        for (int generation = 0; generation < GENERATIONS; ++generation)
        {
            Save(generation);
            saved = generation;
        }
    }
    catch (Zu::Exception const&) // the power is off
    {
    }
    return saved;
}

/// Expects that the archive holds generation `saved` or the next one, complete.
void ExpectAtLeast(int saved, std::string const& when)
{
    Archive archive(FILE_NAME, Access::CREATE);
    EXPECT_EQ(archive.FindFault(), "") << when;
    int const found = GenerationIn(archive.Read());
    EXPECT_TRUE(found == saved || found == saved + 1) << found << " instead of " << saved << ' ' << when;
}

} // namespace

class PowerCut : public testing::TestWithParam<ForgetfulDisk::Memory>
{
};

TEST_P(PowerCut, AtAnyOperationLeavesTheOldStateOrTheNewOne)
{
    uint64 cuts = 0;
    for (uint64 operation = 1;; ++operation)
    {
        uint64 done = 0;
        for (uint32 seed = 0; seed < (GetParam() == ForgetfulDisk::Memory::SOME ? 4U : 1U); ++seed)
        {
            ForgetfulDisk disk;
            disk.CutPowerAt(operation);
            int const saved = SaveUntilTheCut();
            done = disk.Operations();
            disk.Restart(GetParam(), seed);

            ExpectAtLeast(saved, "at operation " + std::to_string(operation) + ", seed " + std::to_string(seed));
            Save(GENERATIONS); // saving works again
            EXPECT_EQ(GenerationIn(Archive(FILE_NAME, Access::CREATE).Read()), GENERATIONS);
            ASSERT_FALSE(HasFailure());
        }
        if (done < operation)
        {
            break; // all saves ended before the power cut
        }
        ++cuts;
    }
    EXPECT_GT(cuts, 45U); // each save makes about fifteen operations or more
}

/// Cuts the power again while the journal of the first cut is rolled back.
TEST_P(PowerCut, DuringTheRecoveryFromAnotherLosesNothing)
{
    for (uint64 first = 1; first < 60; first += 5)
    {
        for (uint64 second = 1; second < 12; ++second)
        {
            ForgetfulDisk disk;
            disk.CutPowerAt(first);
            int const saved = SaveUntilTheCut();
            disk.Restart(GetParam(), 1);
            disk.CutPowerAt(second);
            try
            {
                Archive(FILE_NAME, Access::CREATE).Read();
            }
            catch (Zu::Exception const&) // the power is off again
            {
            }
            disk.Restart(GetParam(), 2);

            ExpectAtLeast(saved, "at operations " + std::to_string(first) + " and " + std::to_string(second));
            ASSERT_FALSE(HasFailure());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryDisk, PowerCut, testing::Values(ForgetfulDisk::Memory::NONE, ForgetfulDisk::Memory::SOME),
                         [](auto const& tested) {
                             return std::string(tested.param == ForgetfulDisk::Memory::NONE ? "ForgetsAll"
                                                                                            : "ForgetsSome");
                         });

/// Proves that the simulated disk loses data: with "synchronous = OFF" the last save is lost.
TEST(PowerCutWithoutCare, LosesWhatWasSaidToBeSaved)
{
    for (char const* const care : {"PRAGMA synchronous = FULL", "PRAGMA synchronous = OFF"})
    {
        ForgetfulDisk disk;
        {
            SqliteFile file(FILE_NAME, Access::CREATE);
            file.Run("CREATE TABLE kept(value)");
            file.Run(care);
            file.Run("INSERT INTO kept VALUES(1)");
        }
        disk.Restart(ForgetfulDisk::Memory::NONE, 0);

        SqliteFile file(FILE_NAME, Access::CREATE);
        EXPECT_EQ(ZuHost::SqliteStatement(file, "SELECT * FROM kept").Step(), false) << care;
    }
}

} // namespace ZuHost
