#include "ZuPipe/PipeData.h"

#include <gtest/gtest.h>

namespace ZuPipe
{

TEST(PipeDataFormatProps, CopiesItsValues)
{
    PipeDataFormatProps source;
    source.type.Set(PipeDataType::MEASUREMENT);
    source.arrayed.Set(true);

    PipeDataFormatProps copy;
    copy.CopyValues(source);

    EXPECT_EQ(copy.type.Get(), PipeDataType::MEASUREMENT);
    EXPECT_TRUE(copy.arrayed.Get());
}

TEST(PipeDataFormatProps, StartsWithoutADataType)
{
    PipeDataFormatProps const props;

    EXPECT_EQ(props.type.Get(), PipeDataType::NONE);
    EXPECT_FALSE(props.arrayed.Get());
}

} // namespace ZuPipe
