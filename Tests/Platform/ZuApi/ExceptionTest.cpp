#include "ZuApi/Exception.h"

#include "Support/RecordingSink.h"
#include "ZuApi/Guard.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Zu
{

namespace
{

[[noreturn]] void ThrowWithoutText()
{
    ZU_THROW(Status::NOT_FOUND);
}

void Nest(void (*inner)())
{
    try
    {
        inner();
    }
    catch (std::exception const&)
    {
        ZU_THROW_NESTED("outer %u", 5u);
    }
}

template <typename Action>
Exception Caught(Action action)
{
    try
    {
        action();
    }
    catch (Exception const& exception)
    {
        return exception;
    }
    throw std::logic_error("nothing was thrown");
}

} // namespace

TEST(Exception, HasTheEmptyTextForANullFormat)
{
    Exception const exception = Caught([] { ThrowWithoutText(); });

    EXPECT_STREQ(exception.what(), "");
    EXPECT_EQ(exception.Status(), -999);
    EXPECT_STREQ(exception.Function(), "Zu::ThrowWithoutText");
}

TEST(Exception, FillsPlainAndPositionalPlaceholders)
{
    EXPECT_STREQ(Exception(1, "f", -1, "g", "id %u of %s", 7u, "x").what(), "id 7 of x");
    EXPECT_STREQ(Exception(1, "f", -1, "g", "%2$s of %1$u", 7u, "x").what(), "x of 7");
}

TEST(Exception, TakesATextWithAPercentSignUnchangedThroughAPlaceholder)
{
    EXPECT_STREQ(Exception(1, "f", -1, "g", "%s", "TT-TT-TT!@#$%").what(), "TT-TT-TT!@#$%");
}

TEST(Exception, TakesATextOfAnyLength)
{
    std::string const longText(5000, 'x');

    EXPECT_EQ(Exception(1, "f", -1, "g", "%s", longText.c_str()).what(), longText);
}

TEST(Exception, KeepsTheStatusOfOneOfOursWhenNested)
{
    Exception const exception = Caught([] { Nest(ThrowWithoutText); });

    EXPECT_EQ(exception.Status(), -999);
    EXPECT_STREQ(exception.what(), "outer 5");
}

TEST(Exception, HasStatusZeroAroundAnyOther)
{
    Exception const exception = Caught([] { Nest([] { throw std::runtime_error("inner"); }); });

    EXPECT_EQ(exception.Status(), 0);
    EXPECT_STREQ(exception.what(), "outer 5");
}

TEST(Exception, WritesOneEntryAndABackTraceFromTheOutsideIn)
{
    ZuTest::LogRecorder log;
    try
    {
        Nest([] { throw std::runtime_error("inner"); });
    }
    catch (std::exception const& exception)
    {
        Exception::LogException(exception, 0);
        Exception::LogBackTrace(exception);
    }

    auto const lines = log.Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], ZuTest::Error("Zu::Nest", "exception with status 0: outer 5"));
    EXPECT_EQ(lines[1].label, "Zu::Nest");
    EXPECT_TRUE(lines[1].text.starts_with("back trace 0: Zu::Nest ("));
    EXPECT_EQ(lines[2], ZuTest::Error("std::exception", "back trace 1: inner"));
}

TEST(Exception, HasATextForWhateverIsCaught)
{
    auto const textOf = [](auto const& step) {
        try
        {
            step();
        }
        catch (...)
        {
            return CaughtText();
        }
        return std::string();
    };

    EXPECT_EQ(textOf([] { throw std::runtime_error("foreign"); }), "foreign");
    EXPECT_EQ(textOf([] { ZU_THROW(Status::BUSY, "not now"); }), "not now");
    EXPECT_EQ(textOf([] { ZU_THROW(Status::BUSY); }), "");
    EXPECT_EQ(textOf([] { throw 5; }), "exception of an unknown type");
}

TEST(Exception, GivesTheStatusAsTheReasonWhereThereIsNoText)
{
    auto const reasonOf = [](auto const& step) {
        try
        {
            step();
        }
        catch (...)
        {
            return CaughtReason();
        }
        return std::string();
    };

    EXPECT_EQ(reasonOf([] { ZU_THROW(Status::BUSY, "not now"); }), "not now");
    EXPECT_EQ(reasonOf([] { ZU_THROW(Status::BUSY); }), "status -976");
    EXPECT_EQ(reasonOf([] { throw 5; }), "exception of an unknown type");
}

TEST(Guard, LogsWhatAStepThrowsAndSaysSo)
{
    ZuTest::LogRecorder log;

    EXPECT_FALSE(ZU_GUARD_DESTRUCTOR([] { ThrowWithoutText(); }));
    EXPECT_FALSE(ZU_GUARD_BOUNDARY([] { throw 5; }));
    EXPECT_TRUE(ZU_GUARD_BOUNDARY([] {}));

    auto const lines = log.Lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0].text, "Exception thrown in destructor");
    EXPECT_EQ(lines[1], ZuTest::Error("Zu::ThrowWithoutText", "exception with status -999: "));
    EXPECT_TRUE(ZuTest::IsTrace(lines[2]));
    EXPECT_EQ(lines[3].text, "EXCEPTION THROWN: ");
    EXPECT_EQ(lines[4].text, "exception: exception of an unknown type");
}

} // namespace Zu
