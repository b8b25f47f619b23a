#include "Host/Security/SecurityStore.h"

#include "Host/Store/Archive.h"
#include "Support/MountedFolder.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sqlite3.h>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using std::filesystem::perms;

class SecurityStoreTest : public testing::Test
{
protected:
    ZuTest::ScratchFolder folder;
    std::filesystem::path const file = folder / "security.zpset";
};

} // namespace

TEST_F(SecurityStoreTest, KeepsDocumentsBeyondItsEnd)
{
    EXPECT_EQ(SecurityStore(file).Load("security/a"), Json());
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing is there before the first save";

    SecurityStore(file).Save("security/a", {{"x", 1}});
    SecurityStore(file).Save("security/b", Json::array());
    SecurityStore(file).Save("security/a", {{"x", 2}});

    SecurityStore const store(file);
    EXPECT_EQ(store.Load("security/a"), (Json{{"x", 2}}));
    EXPECT_EQ(store.Load("security/b"), Json::array());
    EXPECT_EQ(store.Load("security/c"), Json());
}

TEST_F(SecurityStoreTest, LetsOnlyItsOwnerReadTheFile)
{
    SecurityStore(file).Save("a", 1);
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms(0600));

    std::filesystem::permissions(file, perms(0644));
    SecurityStore const store(file);

    EXPECT_EQ(std::filesystem::status(file).permissions(), perms(0600));
}

TEST_F(SecurityStoreTest, StartsAnewAfterACrashDuringTheFirstSave)
{
    std::ofstream(file.string() + ".new") << "half";
    std::ofstream(file.string() + ".new-journal") << "half";

    SecurityStore(file).Save("a", 1);

    EXPECT_EQ(SecurityStore(file).Load("a"), Json(1));
}

TEST_F(SecurityStoreTest, RefusesADamagedFileAndLeavesItAsItIs)
{
    for (char const* content : {"", "no database, but long enough to be looked at as one"})
    {
        std::ofstream(file) << content;
        SecurityStore store(file);

        EXPECT_EQ(ZuTest::RefusalOf([&] { store.Load("a"); }).status, Zu::Status::BAD_FORMAT) << content;
        EXPECT_EQ(ZuTest::RefusalOf([&] { store.Save("a", 1); }).status, Zu::Status::BAD_FORMAT) << content;

        EXPECT_EQ(ZuTest::BytesOf(file), content);
        std::filesystem::remove(file);
    }
}

TEST_F(SecurityStoreTest, RefusesADocumentThatIsDamaged)
{
    SecurityStore(file).Save("good", 1);
    Archive(file, SqliteFile::Access::CREATE).Write({{"bad", "{\"x\":"}}, {});
    SecurityStore const store(file);

    EXPECT_EQ(
        ZuTest::RefusalOf([&] { store.Load("bad"); }),
        (ZuTest::Refusal{Zu::Status::BAD_FORMAT, "The file 'security.zpset' of users and tokens is damaged ('bad' "
                                                 "is not valid JSON)"}));
    EXPECT_EQ(store.Load("good"), Json(1));
}

TEST_F(SecurityStoreTest, RefusesAnEntryThatCannotBeRead)
{
    SecurityStore(file).Save("good", 1);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    int const done =
        sqlite3_exec(database, "INSERT INTO sqlar VALUES ('bad', 33188, 0, 100, x'00')", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    ASSERT_EQ(done, SQLITE_OK);
    std::string const content = ZuTest::BytesOf(file);

    ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { SecurityStore(file).Load("good"); });

    EXPECT_EQ(refusal.status, Zu::Status::BAD_FORMAT);
    EXPECT_TRUE(refusal.text.starts_with("The file 'security.zpset' of users and tokens is damaged (")) << refusal.text;
    EXPECT_EQ(ZuTest::BytesOf(file), content);
}

TEST_F(SecurityStoreTest, LosesNothingOnAFullDisk)
{
    ZuTest::MountedFolder const disk("64k");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "needs the right to mount a file system";
    }
    std::filesystem::path const there = disk.Path() / "security.zpset";
    SecurityStore store(there);
    store.Save("a", 1);
    std::ofstream(disk.Path() / "filler") << std::string(64 * 1024, 'x');

    EXPECT_EQ(ZuTest::RefusalOf([&] { store.Save("b", std::string(32 * 1024, 'x')); }).status, Zu::Status::FAILURE);

    EXPECT_EQ(store.Load("a"), Json(1));
    EXPECT_EQ(store.Load("b"), Json());
}

} // namespace ZuHost
