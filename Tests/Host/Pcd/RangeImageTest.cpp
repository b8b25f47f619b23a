#include "Host/Pcd/RangeImage.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(RangeImage, GivesItsRows)
{
    RangeImage const image(2, 3, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {5, 0, 0}, {6, 0, 0}});

    EXPECT_EQ(image.Width(), 2u);
    EXPECT_EQ(image.Height(), 3u);
    EXPECT_EQ(image.Row(2).size(), 2u);
    EXPECT_EQ(image.Row(2)[1].x, 6);
    EXPECT_THROW(image.Row(3), Zu::Exception);
}

TEST(RangeImage, RefusesAnotherNumberOfPoints)
{
    EXPECT_THROW(RangeImage(2, 2, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}), Zu::Exception);
    EXPECT_THROW(RangeImage(0, 0, {}), Zu::Exception);
    EXPECT_THROW(RangeImage(uint64{1} << 63, 2, {}), Zu::Exception);
}

} // namespace ZuHost
