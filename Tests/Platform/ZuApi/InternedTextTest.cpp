#include "ZuApi/InternedText.h"

#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <latch>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace Zu::Properties::Internal
{

TEST(InternedText, KeepsEqualTextsOnce)
{
    std::size_t const before = InternedText::PoolSize();

    InternedText const one("a text of which there is no other");
    InternedText const two(std::string("a text of which there is no other"));

    EXPECT_TRUE(one == two);
    EXPECT_EQ(&one.Get(), &two.Get());
    EXPECT_EQ(InternedText::PoolSize(), before + 1);
}

TEST(InternedText, FreesATextWithItsLastUser)
{
    std::size_t const before = InternedText::PoolSize();
    {
        InternedText one("a text that goes again");
        InternedText two = one;
        one = InternedText();
        EXPECT_EQ(two.Get(), "a text that goes again");
        EXPECT_EQ(InternedText::PoolSize(), before + 1);
    }

    EXPECT_EQ(InternedText::PoolSize(), before);
}

TEST(InternedText, IsEmptyWithoutAnEntry)
{
    std::size_t const before = InternedText::PoolSize();

    InternedText const empty("");

    EXPECT_TRUE(empty == InternedText());
    EXPECT_EQ(empty.Get(), "");
    EXPECT_EQ(InternedText::PoolSize(), before);
}

TEST(InternedText, KeepsALiteralForGood)
{
    InternedText::Of("a literal of which there is no other");
    std::size_t const before = InternedText::PoolSize();
    {
        InternedText const one = InternedText::Of("a literal of which there is no other");
        InternedText const two(std::string("a literal of which there is no other"));
        InternedText const copy = two;
        EXPECT_TRUE(one == copy);
        EXPECT_EQ(one.Get(), "a literal of which there is no other");
    }

    EXPECT_EQ(InternedText::PoolSize(), before);
}

TEST(InternedText, KeepsATextThatBecomesALiteralWhileItIsInUse)
{
    std::size_t const before = InternedText::PoolSize();
    {
        InternedText const counted(std::string("a text first"));
        InternedText const literal = InternedText::Of("a text first");
        EXPECT_TRUE(counted == literal);
    }

    EXPECT_EQ(InternedText::PoolSize(), before + 1);
    EXPECT_EQ(InternedText::Of(std::string("a text first")).Get(), "a text first");
}

TEST(InternedText, FreesATextMadeAtRunTimeThatIsGivenAsAKey)
{
    std::size_t const before = InternedText::PoolSize();
    {
        InternedText const text = InternedText::Of(std::string("a key that goes again"));
        EXPECT_EQ(InternedText::PoolSize(), before + 1);
    }

    EXPECT_EQ(InternedText::PoolSize(), before);
    EXPECT_TRUE(InternedText::Of("") == InternedText());
}

TEST(InternedText, FindsALiteralOnManyThreadsAtOnce)
{
    constexpr int THREADS = 4;
    std::latch begin(THREADS);
    std::vector<std::string const*> found(THREADS);
    std::vector<std::thread> threads;
    for (std::string const*& mine : found)
    {
        threads.emplace_back([&begin, &mine] {
            begin.arrive_and_wait();
            for (int round = 0; round < 500; ++round)
            {
                InternedText const counted(std::string("a literal that many look for"));
                InternedText const copy = counted;
                mine = &InternedText::Of("a literal that many look for").Get();
                ASSERT_EQ(&copy.Get(), mine);
            }
        });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }

    for (std::string const* const text : found)
    {
        EXPECT_EQ(text, found.front());
    }
}

TEST(InternedText, IsMadeAndFreedOnManyThreadsAtOnce)
{
    constexpr int THREADS = 4;
    std::size_t const before = InternedText::PoolSize();
    std::latch begin(THREADS);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
    {
        threads.emplace_back([&begin] {
            begin.arrive_and_wait();
            for (int round = 0; round < 2000; ++round)
            {
                InternedText const text(round % 2 == 0 ? "even" : "odd");
                InternedText const copy = text;
                ASSERT_EQ(copy.Get(), round % 2 == 0 ? "even" : "odd");
            }
        });
    }
    for (auto& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(InternedText::PoolSize(), before);
}

TEST(InternedText, KeepsManyTextsThatComeAndGo)
{
    std::size_t const before = InternedText::PoolSize();
    std::mt19937_64 random(20261121);
    std::map<uint64, InternedText> texts;
    for (int round = 0; round < 20000; ++round)
    {
        uint64 const number = random() % 3000; // more than the pool has room for at first
        if (texts.erase(number) == 0)
        {
            texts.emplace(number, InternedText("text " + std::to_string(number)));
        }
    }

    EXPECT_EQ(InternedText::PoolSize(), before + texts.size());
    for (auto const& [number, text] : texts)
    {
        ASSERT_TRUE(text == InternedText("text " + std::to_string(number)));
    }
    texts.clear();
    EXPECT_EQ(InternedText::PoolSize(), before);
}

} // namespace Zu::Properties::Internal
