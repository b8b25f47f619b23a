#include "Ctl/Commands/SourceRow.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

using nlohmann::json;

TEST(SourceRow, HasTheNewestValue)
{
    json const measurement{{"id", "profile/zMax"}, {"value", 25.0}, {"unit", "mm"}, {"decision", 1}, {"frame", 7}};
    std::vector<Cell> const row = SourceRow(measurement);
    EXPECT_EQ(row[0].text, "profile/zMax");
    EXPECT_EQ(row[1].text, "25");
    EXPECT_EQ(row[2].text, "mm");
    EXPECT_EQ(row[3].text, "good");
    EXPECT_EQ(row[3].colour, Colour::GOOD);
}

TEST(SourceRow, SaysWhatIsMissing)
{
    EXPECT_EQ(SourceValue(json{{"value", nullptr}}), "-");
    EXPECT_EQ(SourceValue(json{{"id", "x"}}), "-");
    EXPECT_EQ(SourceValue(json{{"stamp", json::object()}, {"frame", 12}}), "profile 12");
    EXPECT_EQ(SourceValue(json{{"stamp", nullptr}, {"frame", nullptr}}), "-");
    EXPECT_EQ(DecisionCell(json{{"decision", 0}}).text, "bad");
    EXPECT_EQ(DecisionCell(json{{"decision", nullptr}}).text, "-");
    EXPECT_EQ(DecisionCell(json::object()).text, "-");
}

} // namespace ZuCtl
