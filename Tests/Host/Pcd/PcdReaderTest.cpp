#include "Host/Pcd/PcdReader.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace ZuHost
{

namespace
{

/// The header of a file of 2 rows of 2 points; the lines of `changes` take the place of those with the same key.
std::string Header(std::string const& data, std::vector<std::pair<std::string, std::string>> const& changes = {})
{
    std::vector<std::pair<std::string, std::string>> lines{
        {"VERSION", "0.7"}, {"FIELDS", "x y z"}, {"SIZE", "4 4 4"}, {"TYPE", "F F F"},
        {"COUNT", "1 1 1"}, {"WIDTH", "2"},      {"HEIGHT", "2"},   {"VIEWPOINT", "0 0 0 1 0 0 0"},
        {"POINTS", "4"},    {"DATA", data}};
    std::string header = "# .PCD v0.7 - Point Cloud Data file format\n";
    for (auto const& [key, value] : lines)
    {
        std::string changed = value;
        for (auto const& [changedKey, changedValue] : changes)
        {
            changed = changedKey == key ? changedValue : changed;
        }
        if (changed != "-") // "-" leaves the line out
        {
            header.append(key).append(" ").append(changed).append("\n");
        }
    }
    return header;
}

std::string const ASCII_POINTS = "1 2 3\nnan nan nan\n-0.5 0 1e-3\n4 5 6\n";

// 1 2 3, nan nan nan, -0.5 0 0.5, 4 5 6
std::string const BINARY_POINTS("\x00\x00\x80\x3f\x00\x00\x00\x40\x00\x00\x40\x40"
                                "\x00\x00\xc0\x7f\x00\x00\xc0\x7f\x00\x00\xc0\x7f"
                                "\x00\x00\x00\xbf\x00\x00\x00\x00\x00\x00\x00\x3f"
                                "\x00\x00\x80\x40\x00\x00\xa0\x40\x00\x00\xc0\x40",
                                48);

void ExpectRefusal(std::string const& bytes, int32 status, std::string const& text)
{
    try
    {
        ParsePcd(bytes, "part.pcd");
        FAIL() << "not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), status);
        EXPECT_EQ(exception.what(), text);
    }
}

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zu-pcd-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }

    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }

    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::filesystem::path path;
};

} // namespace

TEST(PcdReader, ReadsTheRowsOfAnAsciiFile)
{
    RangeImage const image = ParsePcd(Header("ascii") + ASCII_POINTS, "part.pcd");

    ASSERT_EQ(image.Width(), 2u);
    ASSERT_EQ(image.Height(), 2u);
    EXPECT_EQ(image.Row(0)[0].x, 1);
    EXPECT_EQ(image.Row(0)[0].y, 2);
    EXPECT_EQ(image.Row(0)[0].z, 3);
    EXPECT_TRUE(std::isnan(image.Row(0)[1].z));
    EXPECT_EQ(image.Row(1)[0].x, -0.5f);
    EXPECT_EQ(image.Row(1)[0].z, 1e-3f);
    EXPECT_EQ(image.Row(1)[1].z, 6);
}

TEST(PcdReader, ReadsTheRowsOfABinaryFile)
{
    RangeImage const image = ParsePcd(Header("binary") + BINARY_POINTS, "part.pcd");

    ASSERT_EQ(image.Width(), 2u);
    ASSERT_EQ(image.Height(), 2u);
    EXPECT_EQ(image.Row(0)[0].z, 3);
    EXPECT_TRUE(std::isnan(image.Row(0)[1].x));
    EXPECT_EQ(image.Row(1)[0].x, -0.5f);
    EXPECT_EQ(image.Row(1)[0].z, 0.5f);
    EXPECT_EQ(image.Row(1)[1].y, 5);
}

TEST(PcdReader, TakesWindowsLinesTheShortVersionAndNoCount)
{
    std::string text = Header("ascii", {{"VERSION", ".7"}, {"COUNT", "-"}, {"VIEWPOINT", "-"}}) + ASCII_POINTS;
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2))
    {
        text.replace(at, 1, "\r\n");
    }

    EXPECT_EQ(ParsePcd(text, "part.pcd").Row(1)[1].z, 6);
}

TEST(PcdReader, TakesALastAsciiLineWithoutItsEnd)
{
    std::string const text = Header("ascii") + ASCII_POINTS;

    EXPECT_EQ(ParsePcd(text.substr(0, text.size() - 1), "part.pcd").Row(1)[1].z, 6);
}

TEST(PcdReader, RefusesEveryBinaryFileThatIsCutShort)
{
    std::string const whole = Header("binary") + BINARY_POINTS;

    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        EXPECT_THROW(ParsePcd(whole.substr(0, length), "part.pcd"), Zu::Exception) << length;
    }
}

struct PcdCase
{
    char const* name;
    std::string bytes;
    char const* text;
};

class PcdRefusal : public testing::TestWithParam<PcdCase>
{
};

TEST_P(PcdRefusal, NamesTheFileAndTheReason)
{
    ExpectRefusal(GetParam().bytes, Zu::Status::BAD_FORMAT, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Every, PcdRefusal,
    testing::Values(
        PcdCase{"Empty", "", "part.pcd: is cut short: there is no DATA line"},
        PcdCase{"HeaderCut", "VERSION 0.7\nFIELDS x y z\nSIZ", "part.pcd: is cut short: there is no DATA line"},
        PcdCase{"NotPcd", "PNG\n", "part.pcd: has an unknown header line 'PNG'"},
        PcdCase{"TwoWidths", "WIDTH 2\nWIDTH 3\n", "part.pcd: has two header lines WIDTH"},
        PcdCase{"NoVersion", Header("ascii", {{"VERSION", "-"}}), "part.pcd: has no header line VERSION"},
        PcdCase{"Version", Header("ascii", {{"VERSION", "0.6"}}), "part.pcd: has version '0.6', not 0.7"},
        PcdCase{"Fields", Header("ascii", {{"FIELDS", "x y z rgb"}}), "part.pcd: has FIELDS 'x y z rgb', not 'x y z'"},
        PcdCase{"Size", Header("ascii", {{"SIZE", "8 8 8"}}), "part.pcd: has SIZE '8 8 8', not '4 4 4'"},
        PcdCase{"Type", Header("ascii", {{"TYPE", "F F I"}}), "part.pcd: has TYPE 'F F I', not 'F F F'"},
        PcdCase{"Count", Header("ascii", {{"COUNT", "1 1 2"}}), "part.pcd: has COUNT '1 1 2', not '1 1 1'"},
        PcdCase{"WidthText", Header("ascii", {{"WIDTH", "two"}}), "part.pcd: has a WIDTH that is no number"},
        PcdCase{"WidthNegative", Header("ascii", {{"WIDTH", "-2"}}), "part.pcd: has a WIDTH that is no number"},
        PcdCase{"WidthOverflow", Header("ascii", {{"WIDTH", "18446744073709551616"}}),
                "part.pcd: has a WIDTH that is no number"},
        PcdCase{"NoPoints", Header("ascii", {{"WIDTH", "0"}, {"POINTS", "0"}}), "part.pcd: has no points"},
        PcdCase{"NotOrganised", Header("ascii", {{"WIDTH", "4"}, {"HEIGHT", "1"}}),
                "part.pcd: is not organised in rows (HEIGHT 1)"},
        PcdCase{"PointsLie", Header("ascii", {{"POINTS", "5"}}) + ASCII_POINTS,
                "part.pcd: lies about its size: POINTS is not WIDTH times HEIGHT"},
        PcdCase{"ProductOverflow",
                Header("binary", {{"WIDTH", "9223372036854775810"}, {"POINTS", "4"}}) + BINARY_POINTS,
                "part.pcd: lies about its size: POINTS is not WIDTH times HEIGHT"},
        // Twelve times this number of points wraps to 48.
        PcdCase{"BytesOverflow",
                Header("binary", {{"WIDTH", "2305843009213693954"}, {"POINTS", "4611686018427387908"}}) + BINARY_POINTS,
                "part.pcd: is cut short: 48 bytes of data for 4611686018427387908 points"},
        PcdCase{"AsciiHuge", Header("ascii", {{"WIDTH", "1000000000"}, {"POINTS", "2000000000"}}) + ASCII_POINTS,
                "part.pcd: is cut short: 36 bytes of data for 2000000000 points"},
        PcdCase{"Compressed", Header("binary_compressed") + BINARY_POINTS,
                "part.pcd: has data of kind 'binary_compressed', not ascii or binary"},
        PcdCase{"BinaryCut", Header("binary") + BINARY_POINTS.substr(0, 47),
                "part.pcd: is cut short: 47 bytes of data for 4 points"},
        PcdCase{"BinaryLong", Header("binary") + BINARY_POINTS + "x",
                "part.pcd: lies about its size: 1 bytes behind the last point"},
        PcdCase{"AsciiCut", Header("ascii") + "1.25 2.25 3.25\n4.25 5.25 6.25\n7.25 8.25 9.25\n",
                "part.pcd: is cut short: 3 of 4 points"},
        PcdCase{"AsciiLong", Header("ascii") + ASCII_POINTS + "7 8 9\n",
                "part.pcd: lies about its size: there are more than 4 points"},
        PcdCase{"TwoNumbers", Header("ascii") + "1 2 3\n4 5\n7 8 9\n1 2 3\n1\n",
                "part.pcd: has a point 1 that is not three numbers"},
        PcdCase{"FourNumbers", Header("ascii") + "1 2 3 4\n4 5 6\n7 8 9\n1 2 3\n",
                "part.pcd: has a point 0 that is not three numbers"},
        PcdCase{"NoNumber", Header("ascii") + "1 2 3\n4 5 6\n7 8 9\n1 2 z\n",
                "part.pcd: has a point 3 that is not three numbers"},
        PcdCase{"FloatOverflow", Header("ascii") + "1 2 1e39\n4 5 6\n7 8 9\n1 2 3\n",
                "part.pcd: has a point 0 that is not three numbers"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(PcdReader, ReadsAFile)
{
    TemporaryFolder const folder;
    std::filesystem::path const file = folder.path / "part.pcd";
    std::ofstream(file, std::ios::binary) << Header("binary") << BINARY_POINTS;

    EXPECT_EQ(ReadPcd(file).Row(1)[1].z, 6);
}

TEST(PcdReader, NamesAFileThatCannotBeRead)
{
    TemporaryFolder const folder;
    std::filesystem::path const file = folder.path / "none.pcd";

    try
    {
        ReadPcd(file);
        FAIL() << "not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::NOT_OFFERED);
        EXPECT_EQ(exception.what(), file.string() + ": No such file or directory");
    }
    EXPECT_THROW(ReadPcd(folder.path), Zu::Exception); // a folder
}

TEST(PcdReader, RefusesAnEmptyFile)
{
    TemporaryFolder const folder;
    std::filesystem::path const file = folder.path / "empty.pcd";
    std::ofstream(file).flush();

    EXPECT_THROW(ReadPcd(file), Zu::Exception);
}

} // namespace ZuHost
