#include "Host/Security/PasswordHasher.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <thread>
#include <vector>

namespace ZuHost
{

namespace
{

constexpr PasswordHasher::Cost CHEAP{8 * 1024 * 1024, 1};

using ZuTest::Refusal;
using ZuTest::RefusalOf;

} // namespace

TEST(PasswordHasher, RecognisesThePasswordOfAHash)
{
    PasswordHasher hasher(CHEAP);

    std::string const hash = hasher.Hash("correct horse battery");

    EXPECT_TRUE(hasher.Verify(hash, "correct horse battery"));
    EXPECT_FALSE(hasher.Verify(hash, "correct horse batterx"));
    EXPECT_FALSE(hasher.Verify(hash, ""));
    EXPECT_NE(hasher.Hash("correct horse battery"), hash) << "each hash has a salt of its own";
}

TEST(PasswordHasher, SeesEveryByteOfAPassword)
{
    PasswordHasher hasher(CHEAP);
    std::string const hash = hasher.Hash(std::string("one\0two", 7));
    EXPECT_FALSE(hasher.Verify(hash, std::string("one\0twx", 7)));
    EXPECT_FALSE(hasher.Verify(hash, "one"));
}

TEST(PasswordHasher, UsesArgon2idWith64MebibytesByDefault)
{
    PasswordHasher hasher;
    std::string const hash = hasher.Hash("correct horse battery");
    EXPECT_EQ(hash.substr(0, 31), "$argon2id$v=19$m=65536,t=2,p=1$");
    EXPECT_TRUE(PasswordHasher::IsHash(hash));
}

TEST(PasswordHasher, VerifiesNoPasswordAgainstNoHash)
{
    PasswordHasher hasher(CHEAP);
    EXPECT_FALSE(hasher.Verify("", ""));
    EXPECT_FALSE(hasher.Verify("", "correct horse battery"));
    EXPECT_FALSE(hasher.Verify("no hash", "correct horse battery"));
}

TEST(PasswordHasher, KnowsTheFormOfAHash)
{
    EXPECT_FALSE(PasswordHasher::IsHash(""));
    EXPECT_FALSE(PasswordHasher::IsHash("correct horse battery"));
    EXPECT_FALSE(PasswordHasher::IsHash("$argon2id$v=19$m=65536,t=2,p=1$"));
    EXPECT_FALSE(PasswordHasher::IsHash(std::string(100'000, '$')));
    std::string const ending = ",t=1,p=1$AAAAAAAAAAAAAAAAAAAAAA$AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";
    EXPECT_TRUE(PasswordHasher::IsHash("$argon2id$v=19$m=8192" + ending));
    EXPECT_FALSE(PasswordHasher::IsHash("$argon2id$v=19$m=99999999999999" + ending));
    EXPECT_FALSE(PasswordHasher::IsHash("$argon2id$v=19$m=8192" + ending + "A"));
}

TEST(PasswordHasher, TakesTheSameTimeForAnUnknownUser)
{
    PasswordHasher hasher(CHEAP);
    std::string const hash = hasher.Hash("correct horse battery");
    // The processor time of this thread: the load of the machine does not change it much.
    auto const used = [&](std::string const& checked) {
        auto const now = [] {
            timespec time{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
            return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
        };
        double least = 1e9;
        for (unsigned i = 0; i < 5; ++i)
        {
            double const begin = now();
            hasher.Verify(checked, "wrong horse battery");
            least = std::min(least, now() - begin);
        }
        return least;
    };
    double const known = used(hash);
    double const unknown = used("");
    EXPECT_GT(unknown, known / 2);
    EXPECT_LT(unknown, known * 2);
}

TEST(PasswordHasher, RefusesCallsBeyondItsQueue)
{
    constexpr unsigned THREADS = 8;
    PasswordHasher hasher(CHEAP);
    std::atomic<unsigned> done = 0;
    std::atomic<unsigned> refused = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < THREADS; ++i)
    {
        threads.emplace_back([&] {
            while (refused == 0) // until calls have met
            {
                Refusal const refusal = RefusalOf([&] { hasher.Hash("correct horse battery"); });
                if (refusal.status == Zu::Status::SUCCESS)
                {
                    ++done;
                    continue;
                }
                EXPECT_EQ(refusal,
                          (Refusal{Zu::Status::BUSY, "Too many passwords are being checked. Try again in a moment."}));
                ++refused;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_GT(refused, 0U);
    EXPECT_TRUE(hasher.Verify(hasher.Hash("free again"), "free again"));
}

TEST(PasswordHasher, SaysWhenThereIsNoMemory)
{
    PasswordHasher hasher({std::size_t{1} << 40U, 1}); // 1 TiB
    Refusal const expected{Zu::Status::BUSY, "The host has not enough memory to check a password. Try again later."};
    EXPECT_EQ(RefusalOf([&] { hasher.Hash("correct horse battery"); }), expected);
    EXPECT_EQ(RefusalOf([&] { hasher.Verify("", "correct horse battery"); }), expected);
}

} // namespace ZuHost
