#pragma once

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace ZuTest
{

/// `step` throws a Zu::Exception with this status and exactly this text; the empty text is an exception without one.
template <typename Step>
void ExpectException(int32 status, std::string const& text, Step&& step)
{
    try
    {
        std::forward<Step>(step)();
        ADD_FAILURE() << "nothing was thrown, expected status " << status;
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), status);
        EXPECT_EQ(std::string(exception.what()), text);
    }
}

} // namespace ZuTest
