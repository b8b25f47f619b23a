#include "Host/Jobs/JobDesk.h"
#include "Host/Store/Archive.h"
#include "Host/Store/ArchiveTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string_view>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Random = std::mt19937;
using ZuTest::BytesOf;
using ZuTest::JobDesk;
using ZuTest::ValueKeepers;
using ZuTest::WriteBytes;

constexpr char const* ONE = "controls/One/config.json";
constexpr char const* TWO = "controls/Two/config.json";
constexpr std::size_t PAGE_BYTES = 4096;

/// A value that is long enough for its document to be deflated and to have a checksum. It has letters of every kind,
/// because the checksum of the format hardly distinguishes rows of digits.
std::string Value(std::string text, unsigned count)
{
    constexpr std::string_view LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-";
    Random random(count);
    for (unsigned i = 0; i < count; ++i)
    {
        text += LETTERS[random() % LETTERS.size()];
    }
    return text;
}

/// The number of damaged files; an environment variable can raise it.
unsigned long Rounds()
{
    char const* const asked = std::getenv("ZU_DAMAGED_JOBS");
    return asked != nullptr ? std::strtoul(asked, nullptr, 10) : ZU_DAMAGED_JOBS;
}

std::size_t Below(Random& random, std::size_t end)
{
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
}

/// A random place in the file. Half of the places are used bytes of the first page, which has the header and the
/// schema.
std::size_t Place(Random& random, std::string const& bytes)
{
    if (Below(random, 2) == 0)
    {
        return Below(random, bytes.size());
    }
    std::size_t place = 0;
    do
    {
        place = Below(random, std::min(PAGE_BYTES, bytes.size()));
    } while (bytes[place] == '\0' && place >= 100);
    return place;
}

void Damage(std::string& bytes, Random& random)
{
    std::size_t const place = Place(random, bytes);
    switch (Below(random, 6))
    {
    case 0:
    case 1:
        bytes[place] = static_cast<char>(Below(random, 256));
        break;
    case 2:
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << Below(random, 8)));
        break;
    case 3:
        for (std::size_t i = place; i < std::min(place + Below(random, 64) + 1, bytes.size()); ++i)
        {
            bytes[i] = static_cast<char>(Below(random, 256));
        }
        break;
    case 4:
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(place),
                    std::min<std::size_t>(512, bytes.size() - place), '\0');
        break;
    default:
        bytes.resize(place + 1); // at least one byte: an empty file counts as new
        break;
    }
}

} // namespace

/// Randomly damaged job files. A host with such a file starts, has only stored values or defaults, reports missing
/// documents, and can save.
class DamagedJobTest : public testing::TestWithParam<char const*>
{
protected:
    DamagedJobTest()
    {
        std::filesystem::create_directories(scratch / "controls/One");
        std::filesystem::create_directories(scratch / "controls/Two");
        WriteBytes(scratch / ONE, ValueKeepers::DocumentWith(one));
        WriteBytes(scratch / TWO, ValueKeepers::DocumentWith(two));
    }

    /// A job file that was written by the host, by the command-line tool, or by one after the other.
    std::string Made(std::string const& by) const
    {
        if (by != "host")
        {
            ZuTest::RunArchiveTool(scratch.path, file, std::string("-c ") + ONE + " " + TWO);
        }
        if (by != "tool")
        {
            JobDesk desk(scratch.path);
            desk.jobs.Begin(JobName("default"));
            desk.keepers.Set("One", one);
            desk.keepers.Set("Two", two);
            desk.jobs.SaveAs(JobName("default"));
        }
        return BytesOf(file);
    }

    void ExpectThatAHostLivesWith(std::string const& bytes) const
    {
        WriteBytes(file, bytes);
        std::filesystem::remove(scratch / "default.zpjob-journal");
        {
            JobDesk desk(scratch.path);
            ASSERT_NO_THROW(desk.jobs.Begin(JobName("default")));
            auto const& values = desk.keepers.values;
            ExpectStored(values.at("One"), one);
            ExpectStored(values.at("Two"), two);
            EXPECT_TRUE(desk.problems.Count() > 0 || (values.at("One") == one && values.at("Two") == two))
                << "it says what is missing";
            desk.keepers.Set("One", "new");
            ASSERT_NO_THROW(desk.jobs.SaveAs(JobName("default")));
        }
        Archive archive(file, Access::READ);
        EXPECT_EQ(archive.FindFault(), "");
        EXPECT_EQ(archive.Read().entries[ONE], ValueKeepers::DocumentWith("new"));
        RemoveKept();
    }

    static void ExpectStored(std::string const& value, std::string const& stored)
    {
        EXPECT_TRUE(value == stored || value == "default" || value.empty()) << value;
    }

    void RemoveKept() const
    {
        for (unsigned i = 1; std::filesystem::remove(scratch / ("default.zpjob.damaged-" + std::to_string(i))); ++i)
        {
        }
    }

    ZuTest::ScratchFolder scratch;
    std::filesystem::path const file = scratch / "default.zpjob";
    std::string const one = Value("one", 8'000);
    std::string const two = Value("two", 300);
};

TEST_P(DamagedJobTest, NeverKeepsAHostFromStartingAndSaving)
{
    std::string const sound = Made(GetParam());
    for (unsigned long round = 0; round < Rounds(); ++round)
    {
        SCOPED_TRACE("seed " + std::to_string(round));
        Random random(static_cast<Random::result_type>(round));
        std::string bytes = sound;
        for (std::size_t damages = Below(random, 3) + 1; damages > 0; --damages)
        {
            Damage(bytes, random);
        }
        ExpectThatAHostLivesWith(bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(By, DamagedJobTest, testing::Values("host", "tool", "both"),
                         [](auto const& maker) { return std::string(maker.param); });

} // namespace ZuHost
