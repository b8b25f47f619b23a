#include "Ctl/Backup/SealedFile.h"

#include "Ctl/Backup/BackupDocument.h"
#include "Ctl/Outcome/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace ZuCtl
{

namespace
{

using nlohmann::json;
using testing::HasSubstr;

constexpr char const* PASSPHRASE = "correct horse";
constexpr std::size_t PART_BYTES = 65536;
constexpr std::size_t HEAD_BYTES = 18 + 16 + 24;

std::string RefusalOf(std::function<void()> const& work)
{
    try
    {
        work();
    }
    catch (Failure const& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::LOCAL_FILE);
        return failure.what();
    }
    return "";
}

std::string UnsealRefusal(std::string const& sealed, std::string const& passphrase = PASSPHRASE)
{
    return RefusalOf([&] { Unseal(sealed, passphrase); });
}

} // namespace

TEST(SealedFile, GivesItsContentBack)
{
    for (std::size_t const size :
         {std::size_t(0), std::size_t(1), PART_BYTES - 1, PART_BYTES, PART_BYTES + 1, 3 * PART_BYTES})
    {
        std::string const content(size, 'x');
        std::string const sealed = Seal(content, PASSPHRASE);
        EXPECT_EQ(sealed.find("xxxxxxxx"), std::string::npos) << size;
        EXPECT_TRUE(Unseal(sealed, PASSPHRASE) == content) << size;
    }
}

TEST(SealedFile, RefusesAWrongPassphrase)
{
    EXPECT_THAT(UnsealRefusal(Seal("content", PASSPHRASE), "wrong"), HasSubstr("The passphrase is wrong"));
}

TEST(SealedFile, RefusesAChangeOfAnyPart)
{
    std::string const sealed = Seal(std::string(PART_BYTES + 10, 'x'), PASSPHRASE);
    for (std::size_t const at :
         {std::size_t(20), HEAD_BYTES - 1, HEAD_BYTES + 5, HEAD_BYTES + PART_BYTES + 20, sealed.size() - 1})
    {
        std::string changed = sealed;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        EXPECT_THAT(UnsealRefusal(changed), HasSubstr("changed")) << at;
    }
}

TEST(SealedFile, RefusesACutAtAnyPlace)
{
    std::string const sealed = Seal(std::string(PART_BYTES + 10, 'x'), PASSPHRASE);
    EXPECT_THAT(UnsealRefusal(""), HasSubstr("is no backup of a sensor, or was cut"));
    EXPECT_THAT(UnsealRefusal(sealed.substr(0, HEAD_BYTES)), HasSubstr("is no backup of a sensor, or was cut"));
    for (std::size_t const size : {HEAD_BYTES + PART_BYTES + 17, HEAD_BYTES + PART_BYTES + 20, sealed.size() - 1})
    {
        EXPECT_THAT(UnsealRefusal(sealed.substr(0, size)), HasSubstr("The backup was changed or cut")) << size;
    }
    EXPECT_THAT(UnsealRefusal(sealed + "x"), HasSubstr("The backup was changed or cut"));
}

TEST(SealedFile, RefusesANewerVersionAndOtherFiles)
{
    std::string sealed = Seal("content", PASSPHRASE);
    sealed[17] = '2';
    EXPECT_THAT(UnsealRefusal(sealed), HasSubstr("made by a newer version"));
    EXPECT_THAT(UnsealRefusal("SQLite format 3" + std::string(200, '\0')), HasSubstr("is no backup"));
}

TEST(BackupDocument, RefusesANewerFormatAndDamage)
{
    EXPECT_THAT(RefusalOf([] { ParseBackup("{\"format\": 2}"); }), HasSubstr("made by a newer version"));
    EXPECT_THAT(RefusalOf([] { ParseBackup("{}"); }), HasSubstr("damaged"));
    EXPECT_THAT(RefusalOf([] { ParseBackup("no document"); }), HasSubstr("damaged"));
    EXPECT_THAT(RefusalOf([] { FileOf(json{{"file", "*"}}); }), HasSubstr("damaged"));
    EXPECT_EQ(ParseBackup("{\"format\": 1}").at("format"), 1);
    EXPECT_EQ(FileOf(json{{"file", "YWJj"}}), "abc");
}

} // namespace ZuCtl
