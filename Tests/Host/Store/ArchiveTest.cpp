#include "Host/Store/Archive.h"

#include "Host/Store/ArchiveTool.h"
#include "Host/Store/DocumentCheck.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Files = ArchiveContents::Files;

constexpr char const* DOCUMENT = "controls/ModbusTcp/config.json";

} // namespace

class ArchiveTest : public testing::Test
{
protected:
    void Write(Files const& entries, Files const& lastGood = {})
    {
        Archive(file, Access::CREATE).Write(entries, lastGood);
    }

    ArchiveContents Read()
    {
        return Archive(file, Access::READ).Read();
    }

    /// A row as another program may write it; the columns are SQL expressions.
    void Insert(std::string const& name, std::string const& mode, std::string const& size, std::string const& data)
    {
        std::string row = name;
        row.append(", ").append(mode).append(", 0, ").append(size).append(", ").append(data);
        ZuTest::RunSql(file,
                       "CREATE TABLE IF NOT EXISTS sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data "
                       "BLOB); INSERT INTO sqlar VALUES(" +
                           row + ");");
    }

    ZuTest::ScratchFolder folder;
    std::filesystem::path const file = folder / "job.zpjob";
    std::string const large = std::string(3'000, 'a') + "{}";
};

TEST_F(ArchiveTest, GivesBackWhatWasWritten)
{
    Write({{DOCUMENT, large}, {"empty", ""}, {"bytes", std::string("\0\xFF", 2)}}, {{DOCUMENT, "{}"}});
    Write({{DOCUMENT, "{\"new\":1}"}});

    ArchiveContents const contents = Read();

    EXPECT_EQ(contents.entries, (Files{{DOCUMENT, "{\"new\":1}"}, {"empty", ""}, {"bytes", std::string("\0\xFF", 2)}}));
    EXPECT_EQ(contents.lastGood, (Files{{DOCUMENT, "{}"}}));
    EXPECT_EQ(contents.faults, Files());
    EXPECT_EQ(Archive(file, Access::READ).FindFault(), "");
}

TEST_F(ArchiveTest, IsOneFileWithoutAJournalBesideIt)
{
    Write({{DOCUMENT, large}});

    auto const files = std::distance(std::filesystem::directory_iterator(folder.path), {});

    EXPECT_EQ(files, 1);
    EXPECT_EQ(ZuTest::RunSql(file, "PRAGMA journal_mode"), "delete\n");
}

TEST_F(ArchiveTest, IsListedAndExtractedByTheTool)
{
    Write({{DOCUMENT, large}});

    EXPECT_EQ(ZuTest::RunArchiveTool(folder.path, file, "-t"), std::string(DOCUMENT) + "\n");
    ZuTest::RunArchiveTool(folder.path, file, "-x");

    EXPECT_EQ(ZuTest::BytesOf(folder / DOCUMENT), large);
}

TEST_F(ArchiveTest, TakesWhatTheToolHasPutIn)
{
    Write({{DOCUMENT, "{}"}, {"controls/Other/config.json", "[]"}});
    std::filesystem::create_directories(folder / "controls/ModbusTcp");
    ZuTest::WriteBytes(folder / DOCUMENT, large);

    ZuTest::RunArchiveTool(folder.path, file, std::string("-u ") + DOCUMENT);
    ZuTest::RunArchiveTool(folder.path, file, "-i controls/ModbusTcp"); // a folder with its content

    ArchiveContents const contents = Read();
    EXPECT_EQ(contents.entries, (Files{{DOCUMENT, large}, {"controls/Other/config.json", "[]"}}));
    EXPECT_EQ(contents.faults, Files());
}

TEST_F(ArchiveTest, NamesWhatIsNoFileOfOursAndReadsTheRest)
{
    Insert("'../up'", "33188", "1", "'x'");
    Insert("'/top'", "33188", "1", "'x'");
    Insert("'a//b'", "33188", "1", "'x'");
    Insert("'a' || char(10)", "33188", "1", "'x'");
    Insert("'link'", "41471", "-1", "'/etc/passwd'");
    Insert("'folder'", "16877", "1", "'x'");
    Insert("'number'", "33188", "2", "12");
    Insert("'negative'", "33188", "-5", "'x'");
    Insert("'bomb'", "33188", std::to_string(DocumentCheck::MAX_BYTES + 1), "'x'");
    Insert("'short'", "33188", "5", "'x'");
    Insert("'good'", "33188", "1", "'x'");

    ArchiveContents const contents = Read();

    EXPECT_EQ(contents.entries, (Files{{"good", "x"}}));
    EXPECT_EQ(contents.faults, (Files{{"../up", "its name is not safe"},
                                      {"/top", "its name is not safe"},
                                      {"a//b", "its name is not safe"},
                                      {"a?", "its name is not safe"},
                                      {"link", "it is no file"},
                                      {"folder", "it is no file"},
                                      {"number", "it is no file"},
                                      {"negative", "it is no file"},
                                      {"bomb", "it is longer than 16777216 bytes"},
                                      {"short", "its content is damaged"}}));
}

TEST_F(ArchiveTest, BoundsWhatItHolds)
{
    Files many;
    for (uint64 i = 0; i <= Archive::MAX_ENTRIES; ++i)
    {
        many.emplace("file" + std::to_string(i), "x");
    }
    Write(many);

    ArchiveContents const contents = Read();

    EXPECT_EQ(contents.entries.size(), Archive::MAX_ENTRIES);
    EXPECT_EQ(contents.faults, (Files{{"", "there is too much in it"}}));
}

TEST_F(ArchiveTest, RunsNothingThatAStrangerHasPutIn)
{
    ZuTest::RunSql(file,
                   "CREATE TABLE other(name, mode, sz, data); INSERT INTO other VALUES('a', 33188, 1, 'x'); CREATE "
                   "VIEW sqlar AS SELECT name, mode, sz, data FROM other;");

    Archive archive(file, Access::READ);

    EXPECT_FALSE(archive.HasTable());
    EXPECT_EQ(archive.Read().entries, Files());
}

TEST_F(ArchiveTest, ReadsNoRowsThatAreComputed)
{
    ZuTest::RunSql(file, "CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB AS "
                         "(zeroblob(sz))); INSERT INTO sqlar(name, mode, mtime, sz) VALUES('a', 33188, 0, 1000);");

    Archive archive(file, Access::READ);

    EXPECT_FALSE(archive.HasTable());
    EXPECT_EQ(archive.Read().entries, Files());
}

TEST_F(ArchiveTest, ReadsATableOnlyWithASchemaThatIsKnown)
{
    Write({{DOCUMENT, large}}, {{DOCUMENT, "{}"}});
    std::string const sound = ZuTest::BytesOf(file);
    std::size_t const place = sound.find("sqlar(name TEXT");
    ASSERT_NE(place, sound.npos);
    for (auto const& [offset, byte] : {std::pair<std::size_t, char>(6, 'm'), {12, 'N'}, {10, '('}, {0, 'S'}})
    {
        std::string damaged = sound;
        damaged[place + offset] = byte;
        ZuTest::WriteBytes(file, damaged);

        ArchiveContents const contents = Read();

        EXPECT_FALSE(Archive(file, Access::READ).HasTable()) << offset;
        EXPECT_EQ(contents.entries, Files()) << offset;
        EXPECT_EQ(contents.lastGood, (Files{{DOCUMENT, "{}"}})) << offset;
        EXPECT_EQ(contents.faults, (Files{{"", "its schema is that of no archive: 'sqlar'"}})) << offset;
        EXPECT_EQ(Archive(file, Access::READ).FindFault(), contents.faults.at("")) << offset;
    }
}

TEST_F(ArchiveTest, TakesOnlyTheTablesOfAnArchive)
{
    for (char const* const stranger :
         {"CREATE TABLE other(a)", "CREATE VIEW v AS SELECT 1", "CREATE INDEX i ON sqlar(mode)",
          "CREATE TRIGGER t AFTER INSERT ON sqlar BEGIN SELECT 1; END"})
    {
        std::filesystem::remove(file);
        Write({{DOCUMENT, large}});
        ZuTest::RunSql(file, stranger);

        EXPECT_NE(Archive(file, Access::READ).FindFault(), "") << stranger;
        EXPECT_EQ(Read().entries, (Files{{DOCUMENT, large}})) << stranger;
    }
}

TEST_F(ArchiveTest, KnowsTheTableOfTheToolAlsoBehindAVacuum)
{
    ZuTest::WriteBytes(folder / "notes.txt", "by a person");
    ZuTest::RunArchiveTool(folder.path, file, "-c notes.txt");
    Write({{DOCUMENT, large}}, {{DOCUMENT, large}});
    ZuTest::RunArchiveTool(folder.path, file, "-u notes.txt");
    ZuTest::RunSql(file, "VACUUM");

    EXPECT_EQ(Archive(file, Access::READ).FindFault(), "");
    EXPECT_EQ(Read().entries, (Files{{DOCUMENT, large}, {"notes.txt", "by a person"}}));
    EXPECT_EQ(Read().lastGood, (Files{{DOCUMENT, large}}));
}

TEST_F(ArchiveTest, TakesAHeaderThatForbidsWritingForDamage)
{
    Write({{DOCUMENT, large}});
    std::string bytes = ZuTest::BytesOf(file);
    bytes[18] = 3; // the version of the format for writing
    ZuTest::WriteBytes(file, bytes);

    EXPECT_EQ(Archive(file, Access::READ).FindFault(), "its header has a version that cannot be written");
    EXPECT_EQ(Read().entries, (Files{{DOCUMENT, large}}));
    EXPECT_EQ(Read().faults, (Files{{"", "its header has a version that cannot be written"}}));
}

TEST_F(ArchiveTest, SaysWhatIsWrongInCharactersThatCanBeShown)
{
    Write({{DOCUMENT, large}});
    std::string bytes = ZuTest::BytesOf(file);
    std::size_t const place = bytes.find("sqlite_autoindex_sqlar_1");
    bytes[place] = '\xFF';
    ZuTest::WriteBytes(file, bytes);

    EXPECT_EQ(Archive(file, Access::READ).FindFault(), "its schema is that of no archive: '?qlite_autoindex_sqlar_1'");
}

TEST_F(ArchiveTest, IsReadFromTheBytesOfItsFileAsWell)
{
    Write({{DOCUMENT, large}});

    std::string const image = Archive(file, Access::READ).Image();

    EXPECT_EQ(image.size(), ZuTest::BytesOf(file).size());
    EXPECT_EQ(Archive("job", image).Read().entries, (Files{{DOCUMENT, large}}));
    EXPECT_EQ(Archive("job", "").HasTable(), false);
}

TEST_F(ArchiveTest, SaysWhatIsNoDatabase)
{
    ZuTest::WriteBytes(file, std::string(10'000, 'x'));

    EXPECT_EQ(ZuTest::RefusalOf([&] { Archive(file, Access::READ).Read(); }).status, Zu::Status::BAD_FORMAT);
    EXPECT_EQ(ZuTest::RefusalOf([&] { Archive("job", std::string(10'000, 'x')).Read(); }).status,
              Zu::Status::BAD_FORMAT);
    EXPECT_EQ(ZuTest::RefusalOf([&] { Archive(folder / "none", Access::READ); }).status, Zu::Status::NOT_FOUND);
}

TEST_F(ArchiveTest, LeavesAllAsItWasWhenAWriteFails)
{
    Write({{DOCUMENT, "{}"}});
    std::string const before = ZuTest::BytesOf(file);
    std::string const tooLarge(static_cast<std::size_t>(SqliteFile::MAX_VALUE_BYTES) + 1, 'x');

    Files const entries{{"a", "new"}, {"name of " + tooLarge, "x"}};
    EXPECT_EQ(ZuTest::RefusalOf([&] { Write(entries); }).status, Zu::Status::BAD_FORMAT);

    EXPECT_EQ(ZuTest::BytesOf(file), before);
}

} // namespace ZuHost
