#include "Host/Tls/CertificateWatch.h"

#include "Host/Tls/HttpsCertificate.h"
#include "Support/Certificates.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/RecordingTrail.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>

#include <atomic>

namespace ZuHost
{

namespace
{

constexpr int64 NOW = 1'767'355'200; // 2026-01-02, noon
constexpr int64 DAY = 86'400;

class CertificateWatchTest : public testing::Test
{
protected:
    CertificateWatchTest()
    {
        WriteFiles(NOW + 100 * DAY);
    }

    void WriteFiles(int64 until) const
    {
        ZuTest::CertificateWish wish;
        wish.untilUtcSeconds = until;
        ZuTest::TestCertificate(wish).Write(folder.path, "host");
    }

    /// Watches the user's files.
    CertificateWatch& Watch()
    {
        certificate.emplace(HttpsCertificate::UsersFiles{folder / "host.pem", folder / "host.key"}, clock);
        return Begin();
    }

    CertificateWatch& WatchOwn()
    {
        certificate.emplace(HttpsCertificate::OwnFiles{folder / "tls", "127.0.0.1"}, clock);
        return Begin();
    }

    CertificateWatch& Begin()
    {
        return watch.emplace(*certificate, problems, &trail, [this](auto const& tls) {
            used.push_back(tls->Own()->fingerprint);
            isUsed.Open();
        });
    }

    std::vector<std::string> Problems() const
    {
        std::vector<std::string> texts;
        for (auto const& problem : problems.List())
        {
            texts.push_back(problem.source + ": " + problem.text);
        }
        return texts;
    }

    std::string Fingerprint() const
    {
        return certificate->Current()->Own()->fingerprint;
    }

    ZuTest::ScratchFolder const folder;
    std::string const file = (folder / "host.pem").string();
    std::atomic<int64> now = NOW;
    ZuTls::Clock const clock{[this] { return now.load(); }, nullptr};
    ZuCommon::ProblemsManager problems;
    ZuTest::RecordingTrail trail;
    std::vector<std::string> used;
    ZuTest::Latch isUsed;
    std::optional<HttpsCertificate> certificate;
    std::optional<CertificateWatch> watch;
};

} // namespace

TEST_F(CertificateWatchTest, GivesANewCertificateToTheServerAndTheTrail)
{
    ZuTest::LogRecorder const recorder;
    Watch();
    std::string const before = Fingerprint();

    WriteFiles(NOW + 200 * DAY);
    watch->ReadAgain();

    EXPECT_NE(Fingerprint(), before);
    EXPECT_THAT(used, testing::ElementsAre(Fingerprint()));
    EXPECT_THAT(trail.Lines(), testing::ElementsAre("host |  | certificate | {\"fingerprint\":\"" + before +
                                                    "\"} | {\"fingerprint\":\"" + Fingerprint() + "\"} | done"));
    EXPECT_EQ(recorder.CountOfText("The certificate for HTTPS has been read again: " + Fingerprint()), 1U);
}

TEST_F(CertificateWatchTest, KeepsThePresentCertificateAndTellsWhy)
{
    ZuTest::LogRecorder const recorder;
    Watch();
    std::string const before = Fingerprint();

    WriteFiles(NOW - DAY);
    watch->ReadAgain();

    EXPECT_EQ(Fingerprint(), before);
    EXPECT_THAT(used, testing::IsEmpty());
    EXPECT_EQ(recorder.CountOfText("The certificate for HTTPS stays as it was: the certificate " + file +
                                   " ended on 2026-01-01"),
              1U);
    EXPECT_THAT(trail.Lines(),
                testing::ElementsAre("host |  | certificate | {\"fingerprint\":\"" + before +
                                     "\"} |  | refused: the certificate " + file + " ended on 2026-01-01"));
}

TEST_F(CertificateWatchTest, KeepsAProblemUntilTheClockIsBack)
{
    Watch();
    watch->Look();
    EXPECT_THAT(Problems(), testing::IsEmpty());

    now = NOW + 99 * DAY;
    watch->Look();
    watch->Look();
    EXPECT_THAT(Problems(), testing::ElementsAre("HTTPS: The certificate " + file + " ends on 2026-04-12"));
    now = NOW + 100 * DAY;
    watch->Look();
    EXPECT_THAT(Problems(),
                testing::ElementsAre("HTTPS: The certificate " + file + " ended on 2026-04-12: clients refuse it"));
    now = NOW;
    watch->Look();
    EXPECT_THAT(Problems(), testing::IsEmpty());
    EXPECT_THAT(used, testing::IsEmpty()) << "the certificate stays in use";
}

TEST_F(CertificateWatchTest, RemovesItsProblemAtTheEnd)
{
    Watch();
    now = NOW + 99 * DAY;
    watch->Look();
    EXPECT_EQ(problems.Count(), 1U);

    watch.reset();

    EXPECT_EQ(problems.Count(), 0U);
}

TEST_F(CertificateWatchTest, RenewsTheHostsOwnCertificateOnItsThread)
{
    WatchOwn();
    std::string const before = Fingerprint();
    now = NOW + 800 * DAY;

    watch->Start();
    ASSERT_TRUE(isUsed.Wait());
    watch.reset();

    EXPECT_NE(Fingerprint(), before);
    EXPECT_THAT(used, testing::ElementsAre(Fingerprint()));
    EXPECT_THAT(trail.All(), testing::SizeIs(1));
}

TEST_F(CertificateWatchTest, TellsThatItCannotRenew)
{
    WatchOwn();
    std::string const before = Fingerprint();
    std::filesystem::create_directories(folder / "tls" / "new.pem" / "x"); // in the way
    now = NOW + 800 * DAY;

    watch->Look();

    EXPECT_EQ(Fingerprint(), before);
    EXPECT_THAT(Problems(),
                testing::ElementsAre("HTTPS: The certificate for HTTPS cannot be renewed: The file '" +
                                     (folder / "tls" / "new.pem").string() + "' cannot be written: File exists"));
    std::filesystem::remove_all(folder / "tls" / "new.pem");
    watch->Look();
    EXPECT_THAT(Problems(), testing::IsEmpty());
    EXPECT_NE(Fingerprint(), before);
}

TEST_F(CertificateWatchTest, AHangUpWithoutAChangeChangesNothing)
{
    WatchOwn();

    watch->ReadAgain();

    EXPECT_THAT(used, testing::IsEmpty());
    EXPECT_THAT(trail.All(), testing::IsEmpty());
}

} // namespace ZuHost
