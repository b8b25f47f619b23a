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
