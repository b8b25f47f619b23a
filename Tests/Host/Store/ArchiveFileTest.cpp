#include "Host/Store/ArchiveFile.h"

#include "Host/Store/Archive.h"
#include "Host/Store/ArchiveTool.h"
#include "Host/Store/DataFolder.h"
#include "Support/MountedFolder.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Files = ArchiveContents::Files;
using ZuTest::BytesOf;
using ZuTest::RefusalOf;
using ZuTest::WriteBytes;

constexpr char const* ONE = "controls/One/config.json";
constexpr char const* TWO = "controls/Two/config.json";
constexpr char const* REJECTED_ONE = "rejected/controls/One/config.json";

/// A document of some length, so that it is deflated.
std::string Document(std::string const& value)
{
    return "{\"value\":\"" + value + "\",\"filler\":\"" + std::string(600, '.') + "\"}";
}

} // namespace

class ArchiveFileTest : public testing::Test
{
protected:
    ArchiveFile Open() const
    {
        return {folder, path};
    }

    void SaveAll(Files const& files, bool keepsReplaced = false) const
    {
        Open().Save(files, {ONE, TWO}, keepsReplaced);
    }

    ArchiveContents Contents() const
    {
        return Archive(path, Access::READ).Read();
    }

    std::size_t FilesInFolder() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(scratch.path), {}));
    }

    ZuTest::ScratchFolder scratch;
    DataFolder folder{scratch.path};
    std::filesystem::path path = scratch / "job.zpjob";
};

TEST_F(ArchiveFileTest, GivesBackWhatWasSaved)
{
    EXPECT_FALSE(Open().Exists());
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});

    ArchiveFile::Documents const documents = Open().Read();

    EXPECT_TRUE(Open().Exists());
    EXPECT_EQ(documents.files, (Files{{ONE, Document("1")}, {TWO, Document("2")}}));
    EXPECT_TRUE(documents.fromLastGood.empty());
    EXPECT_TRUE(documents.faults.empty());
}

TEST_F(ArchiveFileTest, SavesOnlyWhatIsDueAndNothingThatIsThereAlready)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});
    std::string const before = BytesOf(path);

    Open().Save({{ONE, Document("1")}, {TWO, Document("changed")}}, {ONE}, false);
    EXPECT_EQ(BytesOf(path), before);

    Open().Save({{ONE, Document("changed")}, {TWO, Document("changed")}}, {ONE}, false);
    EXPECT_EQ(Contents().entries, (Files{{ONE, Document("changed")}, {TWO, Document("2")}}));
}

TEST_F(ArchiveFileTest, SavesAllOfItWhenTheFileIsNew)
{
    Open().Save({{ONE, Document("1")}, {TWO, Document("2")}}, {ONE}, false);

    EXPECT_EQ(Contents().entries, (Files{{ONE, Document("1")}, {TWO, Document("2")}}));
}

TEST_F(ArchiveFileTest, MakesAJobWithoutDocumentsToo)
{
    Open().Save({}, {}, false);

    EXPECT_TRUE(Archive(path, Access::READ).HasTable());
    EXPECT_TRUE(Open().Read().files.empty());
}

TEST_F(ArchiveFileTest, LeavesWhatBelongsToOthers)
{
    SaveAll({{ONE, Document("1")}});
    WriteBytes(scratch / "notes.txt", "by a person");
    ZuTest::RunArchiveTool(scratch.path, path, "-i notes.txt");

    Open().Save({{TWO, Document("2")}}, {TWO}, false);

    EXPECT_EQ(Contents().entries, (Files{{ONE, Document("1")}, {TWO, Document("2")}, {"notes.txt", "by a person"}}));
    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("1")}, {TWO, Document("2")}}));
}

TEST_F(ArchiveFileTest, HandsOutTheLastGoodDocumentWhenTheCurrentOneIsNoJson)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});
    Archive(path, Access::WRITE).Write({{ONE, "{\"cut"}}, {});

    ArchiveFile::Documents const documents = Open().Read();

    EXPECT_EQ(documents.files, (Files{{ONE, Document("1")}, {TWO, Document("2")}}));
    EXPECT_EQ(documents.fromLastGood, std::set<std::string>{ONE});
    ASSERT_EQ(documents.faults.size(), 1U);
    EXPECT_EQ(
        documents.faults[0].rfind("The document 'controls/One/config.json' of 'job.zpjob' cannot be read (it is not "
                                  "valid JSON: ",
                                  0),
        0U)
        << documents.faults[0];
    EXPECT_TRUE(documents.faults[0].ends_with("The last good one is used in its place.")) << documents.faults[0];
}

TEST_F(ArchiveFileTest, TakesAnEditedDocumentForTheLastGoodOneWithTheNextSave)
{
    SaveAll({{ONE, Document("1")}});
    Archive(path, Access::WRITE).Write({{ONE, Document("edited")}}, {});
    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("edited")}}));

    SaveAll({{ONE, Document("edited")}});
    Archive(path, Access::WRITE).Write({{ONE, "?"}}, {});

    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("edited")}}));
}

TEST_F(ArchiveFileTest, HasNothingInThePlaceOfADocumentThatWasNeverGood)
{
    Archive(path, Access::CREATE).Write({{ONE, "?"}, {TWO, Document("2")}}, {{ONE, "?"}});

    ArchiveFile::Documents const documents = Open().Read();

    EXPECT_EQ(documents.files, (Files{{TWO, Document("2")}}));
    ASSERT_EQ(documents.faults.size(), 1U);
    EXPECT_TRUE(documents.faults[0].ends_with("There is no other in its place.")) << documents.faults[0];
}

TEST_F(ArchiveFileTest, DoesNotBringBackADocumentThatAPersonHasTakenOut)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});
    ZuTest::RunSql(path, "DELETE FROM sqlar WHERE name LIKE '%One%'");

    EXPECT_EQ(Open().Read().files, (Files{{TWO, Document("2")}}));
}

TEST_F(ArchiveFileTest, KeepsWhatWasNotTakenOverWhenItIsReplaced)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});

    Open().Save({{ONE, Document("new")}, {TWO, Document("2")}}, {ONE, TWO}, true);

    EXPECT_EQ(Contents().entries, (Files{{ONE, Document("new")}, {REJECTED_ONE, Document("1")}, {TWO, Document("2")}}));
    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("new")}, {TWO, Document("2")}}));
}

TEST_F(ArchiveFileTest, KeepsADamagedFileBesideTheNewOne)
{
    SaveAll({{ONE, Document("1")}});
    std::string const bytes = "no database" + std::string(5'000, 'x');
    WriteBytes(path, bytes);
    ArchiveFile file = Open();
    EXPECT_EQ(RefusalOf([&] { file.Read(); }).status, Zu::Status::BAD_FORMAT);

    ZuTest::LogRecorder const log;
    file.Save({{ONE, Document("new")}}, {}, false);

    EXPECT_EQ(BytesOf(scratch / "job.zpjob.damaged-1"), bytes);
    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("new")}}));
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::UserWarning("The damaged file 'job.zpjob' is kept as "
                                                            "'job.zpjob.damaged-1'; a new one has taken its place")}));
}

TEST_F(ArchiveFileTest, FindsOutAboutTheDamageWhenItSavesAndLosesNothing)
{
    WriteBytes(path, std::string(5'000, 'x'));

    SaveAll({{ONE, Document("1")}});

    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("1")}}));
    EXPECT_EQ(FilesInFolder(), 2U);
}

TEST_F(ArchiveFileTest, UsesTheLastGoodDocumentsOfAFileWhoseTableHasLostAColumnAndSavesAgain)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});
    std::string bytes = BytesOf(path);
    std::size_t const column = bytes.find("sqlar(name") + 6;
    bytes[column] = 'm'; // "mame"
    WriteBytes(path, bytes);
    ArchiveFile file = Open();

    ArchiveFile::Documents const documents = file.Read();
    EXPECT_EQ(documents.files, (Files{{ONE, Document("1")}, {TWO, Document("2")}}));
    EXPECT_EQ(documents.fromLastGood, (std::set<std::string>{ONE, TWO}));
    ASSERT_FALSE(documents.faults.empty());
    EXPECT_EQ(documents.faults[0], "The file 'job.zpjob' is damaged (its schema is that of no archive: 'sqlar').");
    file.Save({{ONE, Document("new")}}, {ONE}, false);

    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("new")}, {TWO, Document("2")}}));
    EXPECT_EQ(BytesOf(scratch / "job.zpjob.damaged-1"), bytes);
}

TEST_F(ArchiveFileTest, SavesAgainWhenTheSchemaWasDamagedSinceItWasRead)
{
    SaveAll({{ONE, Document("1")}});
    ArchiveFile file = Open();
    file.Read();
    std::string bytes = BytesOf(path);
    bytes[bytes.find("sqlar(name") + 13] = 'n'; // "TEXT" becomes "TEnT"
    WriteBytes(path, bytes);

    file.Save({{ONE, Document("new")}}, {ONE}, false);

    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("new")}}));
    EXPECT_TRUE(Open().Read().faults.empty());
}

/// Flips one bit at each place of the file: reading returns the stored documents or reports a fault.
TEST_F(ArchiveFileTest, NeverTakesAFlippedBitForWhatWasStored)
{
    Files const stored{{ONE, Document("1")}, {TWO, Document("2")}};
    SaveAll(stored);
    std::string const bytes = BytesOf(path);
    auto const wasStored = [&](auto const& file) {
        return file.second == stored.at(ONE) || file.second == stored.at(TWO);
    };
    unsigned found = 0;

    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (bytes[i] == '\0' && i % 64 != 0)
        {
            continue; // most of a page is empty
        }
        std::string flipped = bytes;
        flipped[i] = static_cast<char>(flipped[i] ^ (1 << (i % 8)));
        WriteBytes(path, flipped);
        ArchiveFile file = Open();
        try
        {
            ArchiveFile::Documents const documents = file.Read();
            if (documents.faults.empty())
            {
                EXPECT_EQ(documents.files, stored) << "byte " << i;
                continue;
            }
            EXPECT_TRUE(std::ranges::all_of(documents.files, wasStored)) << "byte " << i;
        }
        catch (Zu::Exception const& exception)
        {
            EXPECT_NE(std::string(exception.what()), "") << "byte " << i;
        }
        ++found;
    }
    EXPECT_GT(found, 100U); // the two documents alone have more bytes
}

TEST_F(ArchiveFileTest, SavesWhatItCouldReadOfADamagedFileAlongWithTheRest)
{
    SaveAll({{ONE, Document("1")}, {TWO, Document("2")}});
    std::string bytes = BytesOf(path);
    std::size_t const name = bytes.find(TWO);
    ASSERT_NE(name, std::string::npos);
    bytes[name + 9] = 't'; // the name in the table now differs from the name in its index
    WriteBytes(path, bytes);
    ArchiveFile file = Open();

    ArchiveFile::Documents const documents = file.Read();
    EXPECT_EQ(documents.files.at(ONE), Document("1"));
    EXPECT_EQ(documents.faults[0].rfind("The file 'job.zpjob' is damaged (", 0), 0U) << documents.faults[0];
    file.Save({{ONE, Document("new")}}, {}, false);

    EXPECT_EQ(Open().Read().files.at(ONE), Document("new"));
    EXPECT_EQ(Open().Read().files.at(TWO), Document("2"));
    EXPECT_EQ(BytesOf(scratch / "job.zpjob.damaged-1"), bytes);
}

TEST_F(ArchiveFileTest, RollsBackWhatACrashHasLeftBeforeItPutsAnotherFileInItsPlace)
{
    SaveAll({{ONE, Document("1")}});
    WriteBytes(scratch / "job.zpjob-journal", BytesOf(path)); // not a journal: ignored, and deleted afterwards

    Open().Replace({{TWO, Document("2")}});

    EXPECT_EQ(Open().Read().files, (Files{{TWO, Document("2")}}));
    EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ArchiveFileTest, CopiesAJobWithAllThatIsInIt)
{
    SaveAll({{ONE, Document("1")}});
    WriteBytes(scratch / "notes.txt", "by a person");
    ZuTest::RunArchiveTool(scratch.path, path, "-i notes.txt");

    Open().CopyTo(scratch / "copy.zpjob");

    ArchiveFile const copy(folder, scratch / "copy.zpjob");
    EXPECT_EQ(ArchiveFile::Checked("copy", copy.Image()), (Files{{ONE, Document("1")}, {"notes.txt", "by a person"}}));
}

TEST_F(ArchiveFileTest, TakesAnUploadThatIsAGoodArchive)
{
    std::filesystem::create_directories(scratch / "controls/One");
    WriteBytes(scratch / ONE, Document("1"));
    ZuTest::RunArchiveTool(scratch.path, path, "-c controls");

    EXPECT_EQ(ArchiveFile::Checked("job", BytesOf(path)), (Files{{ONE, Document("1")}}));
}

TEST_F(ArchiveFileTest, RefusesAnUploadWithAnythingWrongInIt)
{
    auto const refusal = [&] { return RefusalOf([&] { ArchiveFile::Checked("job", BytesOf(path)); }); };
    auto const refused = [](char const* why) {
        return ZuTest::Refusal{Zu::Status::BAD_FORMAT, std::string("What was sent is no job: ") + why};
    };

    WriteBytes(path, "hello");
    EXPECT_EQ(refusal(), refused("The file 'job' cannot be used: file is not a database"));
    WriteBytes(path, "");
    EXPECT_EQ(refusal(), refused("it has no table 'sqlar'"));
    std::filesystem::remove(path);
    Archive(path, Access::CREATE).Write({{"../up", "x"}}, {});
    EXPECT_EQ(refusal(), refused("'../up': its name is not safe"));
    std::filesystem::remove(path);
    Archive(path, Access::CREATE).Write({{ONE, std::string(65, '[') + std::string(65, ']')}}, {});
    EXPECT_EQ(refusal(), refused("'controls/One/config.json': it is nested deeper than 64 levels"));
    ZuTest::RunSql(path, "PRAGMA journal_mode = WAL");
    EXPECT_EQ(refusal().status, Zu::Status::BAD_FORMAT);
}

TEST_F(ArchiveFileTest, RefusesToHoldMoreThanCanBeReadAgain)
{
    SaveAll({{ONE, Document("1")}});
    Files files;
    std::set<std::string> due;
    for (unsigned i = 0; i < 5; ++i)
    {
        std::string const name = "controls/Large" + std::to_string(i) + "/config.json";
        files.emplace(name, '"' + std::string(14 * 1024 * 1024, 'x') + '"');
        due.insert(name);
    }
    ZuTest::Refusal const refusal = RefusalOf([&] { Open().Save(files, due, false); });

    EXPECT_EQ(refusal.status, Zu::Status::FAILURE);
    EXPECT_EQ(refusal.text, "The file 'job.zpjob' would hold 6 files of 73400955 bytes in all; it may hold 1000 of "
                            "67108864");
    EXPECT_EQ(RefusalOf([&] { Open().Replace(files); }).status, Zu::Status::FAILURE);
    EXPECT_EQ(Open().Read().files, (Files{{ONE, Document("1")}}));
}

TEST(ArchiveFileOnAFullDisk, LosesNothingAndSavesAgainWhenThereIsRoom)
{
    ZuTest::MountedFolder const disk("128k");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    DataFolder const folder(disk.Path());
    ArchiveFile file(folder, disk.Path() / "job.zpjob");
    file.Save({{ONE, Document("1")}}, {}, false);
    WriteBytes(disk.Path() / "filler", std::string(200'000, 'x'));

    std::string text; // compresses badly
    for (unsigned i = 0; text.size() < 40'000; ++i)
    {
        text += std::to_string(i * i) + ",";
    }
    ZuTest::Refusal const refusal = RefusalOf([&] { file.Save({{ONE, Document(text)}}, {ONE}, false); });

    EXPECT_EQ(refusal.status, Zu::Status::FAILURE);
    EXPECT_EQ(refusal.text, "The file 'job.zpjob' cannot be used: database or disk is full");
    EXPECT_EQ(ArchiveFile(folder, disk.Path() / "job.zpjob").Read().files, (Files{{ONE, Document("1")}}));

    std::filesystem::remove(disk.Path() / "filler");
    file.Save({{ONE, Document(text)}}, {ONE}, false);
    EXPECT_EQ(file.Read().files, (Files{{ONE, Document(text)}}));
}

TEST(ArchiveFileOnAReadOnlyDisk, IsReadAndSaysWhyItIsNotSaved)
{
    ZuTest::MountedFolder const disk("1m");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    Files const stored{{ONE, Document("1")}};
    ArchiveFile(DataFolder(disk.Path()), disk.Path() / "job.zpjob").Save(stored, {}, false);
    ASSERT_TRUE(disk.MakeReadOnly());
    DataFolder const folder(disk.Path());
    ArchiveFile file(folder, disk.Path() / "job.zpjob");

    EXPECT_EQ(file.Read().files, stored);
    file.Save(stored, {ONE}, false); // nothing to be written
    ZuTest::Refusal const refusal = RefusalOf([&] { file.Save({{ONE, Document("2")}}, {ONE}, false); });

    EXPECT_EQ(refusal, (ZuTest::Refusal{Zu::Status::FAILURE, "The file 'job.zpjob' cannot be used: attempt to write a "
                                                             "readonly database"}));
    EXPECT_EQ(file.Read().files, stored);
}

} // namespace ZuHost
