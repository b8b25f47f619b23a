#include "ZuApi/PointerWrapper.h"

#include "wApi/wTypes.h"

#include <gtest/gtest.h>

namespace Zu
{

TEST(PointerWrapper, GivesThePointerBack)
{
    int record = 0;
    PointerWrapper* wrapper = nullptr;

    ASSERT_EQ(PointerWrapper_Construct(&wrapper, &record, nullptr), Status::SUCCESS);

    EXPECT_EQ(PointerWrapper_Pointer(wrapper), &record);
    EXPECT_TRUE(wObject_Is(wrapper, PointerWrapper_Class));
    EXPECT_EQ(wObject_RefCount(wrapper), 1u);
    wObject_Release(wrapper);
}

TEST(PointerWrapper, RefusesNull)
{
    EXPECT_EQ(PointerWrapper_Construct(nullptr, nullptr, nullptr), Status::BAD_ARGUMENT);
    EXPECT_EQ(PointerWrapper_Pointer(nullptr), nullptr);
}

} // namespace Zu
