#include "Ctl/Commands/PrometheusText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZuCtl
{

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PrometheusText, IsReadLineByLine)
{
    std::string const text =
        "# HELP zc_a Text.\n# TYPE zc_a counter\nzc_a{name=\"a b\",x=\"}\"} 12\nzc_b 0.5\nbroken\nzc_c -1";
    EXPECT_THAT(ReadPrometheusText(text, ""), ElementsAre(Series{"zc_a", "name=\"a b\",x=\"}\"", "12"},
                                                          Series{"zc_b", "", "0.5"}, Series{"zc_c", "", "-1"}));
    EXPECT_THAT(ReadPrometheusText(text, "zc_b"), ElementsAre(Series{"zc_b", "", "0.5"}));
    EXPECT_THAT(ReadPrometheusText("", ""), IsEmpty());
}

} // namespace ZuCtl
