#include "Host/Tls/OwnCertificates.h"

#include "Support/Certificates.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>

#include <optional>
#include <sys/stat.h>

namespace ZuHost
{

namespace
{

constexpr int64 NOW = 1'767'355'200; // 2026-01-02, noon
constexpr int64 DAY = 86'400;
constexpr int64 YEAR = 365 * DAY;

class OwnCertificatesTest : public testing::Test
{
protected:
    OwnCertificates& Make(std::vector<std::string> const& names = {"sensor-7", "localhost", "127.0.0.1", "::1"})
    {
        return own.emplace(folder / "tls", names, [this] { return now; });
    }

    ZuTls::Certificate Host() const
    {
        return ZuTls::Certificate::ReadFile(own->HostFile()).front();
    }

    std::string FingerprintAfterStartAt(int64 moment)
    {
        now = moment;
        Make();
        return Host().fingerprint;
    }

    unsigned ModeOf(std::string const& name) const
    {
        struct stat facts
        {
        };
        EXPECT_EQ(stat((folder / "tls" / name).c_str(), &facts), 0) << name;
        return facts.st_mode & 0777U;
    }

    ZuTest::ScratchFolder const folder;
    int64 now = NOW;
    std::optional<OwnCertificates> own;
};

} // namespace

TEST_F(OwnCertificatesTest, AreMadeAtTheFirstStart)
{
    Make();

    EXPECT_THAT(own->Authority().subject, testing::MatchesRegex("CN=ZuControl sensor-7 [0-9A-F]{8}"));
    EXPECT_TRUE(own->Authority().isAuthority);
    EXPECT_EQ(own->Authority().fromUtcSeconds, NOW - DAY);
    EXPECT_EQ(own->Authority().untilUtcSeconds, NOW - DAY + 3650 * DAY);
    EXPECT_EQ(Host().subject, "CN=sensor-7");
    EXPECT_EQ(Host().issuer, own->Authority().subject);
    EXPECT_THAT(Host().names, testing::ElementsAre("sensor-7", "localhost", "127.0.0.1", "::1"));
    EXPECT_FALSE(Host().isAuthority);
    EXPECT_EQ(Host().untilUtcSeconds - Host().fromUtcSeconds, 825 * DAY);
    EXPECT_TRUE(IsSignedBy(ZuTest::BytesOf(own->HostFile()), own->AuthorityPem()));
}

TEST_F(OwnCertificatesTest, KeepTheKeysFromOtherUsers)
{
    mode_t const before = umask(0);
    Make();
    umask(before);

    EXPECT_EQ(ModeOf(""), 0700U);
    EXPECT_EQ(ModeOf("authority-key.pem"), 0600U);
    EXPECT_EQ(ModeOf("host.pem"), 0600U);
    EXPECT_EQ(ModeOf("authority.pem"), 0644U);
    EXPECT_EQ(ZuTest::BytesOf(folder / "tls" / "authority.pem"), own->AuthorityPem());
    EXPECT_THAT(own->AuthorityPem(), testing::Not(testing::HasSubstr("PRIVATE")));
}

TEST_F(OwnCertificatesTest, StayFromStartToStart)
{
    std::string const first = FingerprintAfterStartAt(NOW);
    std::string const authority = own->AuthorityPem();

    EXPECT_EQ(FingerprintAfterStartAt(NOW + 100 * DAY), first);
    EXPECT_EQ(own->AuthorityPem(), authority);
}

TEST_F(OwnCertificatesTest, AreRenewedAtAStartNinetyDaysBeforeTheEnd)
{
    std::string const first = FingerprintAfterStartAt(NOW);
    std::string const authority = own->AuthorityPem();
    int64 const due = NOW + (825 - 1 - 90) * DAY;

    EXPECT_EQ(FingerprintAfterStartAt(due - 1), first);
    EXPECT_NE(FingerprintAfterStartAt(due), first);
    EXPECT_EQ(Host().untilUtcSeconds, due - DAY + 825 * DAY);
    EXPECT_EQ(own->AuthorityPem(), authority);
}

TEST_F(OwnCertificatesTest, AreRenewedWhileTheHostRuns)
{
    std::string const first = FingerprintAfterStartAt(NOW);

    EXPECT_FALSE(own->Renew());
    now += 2 * YEAR + 30 * DAY;
    EXPECT_TRUE(own->Renew());
    EXPECT_FALSE(own->Renew());
    EXPECT_NE(Host().fingerprint, first);
}

TEST_F(OwnCertificatesTest, AreValidWhereverTheClockIsSet)
{
    Make();
    std::string const authority = own->AuthorityPem();
    for (int64 const moment : {NOW + 20 * YEAR, NOW, NOW - 10 * YEAR, NOW + 3 * YEAR, NOW})
    {
        now = moment;
        own->Renew();
        EXPECT_LE(Host().fromUtcSeconds, now);
        EXPECT_GT(Host().untilUtcSeconds, now);
        EXPECT_EQ(own->AuthorityPem(), authority) << "people have taken it into their browsers";
    }
}

TEST_F(OwnCertificatesTest, AreMadeAnewForOtherNames)
{
    Make();
    std::string const authority = own->AuthorityPem();

    Make({"sensor-8", "localhost"});

    EXPECT_THAT(Host().names, testing::ElementsAre("sensor-8", "localhost"));
    EXPECT_EQ(own->AuthorityPem(), authority);
}

TEST_F(OwnCertificatesTest, AreMadeAnewWhenTheFileIsDamagedOrForeign)
{
    Make();
    std::filesystem::path const file = own->HostFile();
    ZuTest::CertificateWish wish;
    wish.names = Host().names;
    ZuTest::TestCertificate const foreign(wish);
    for (std::string const& bytes :
         {std::string(), std::string("-----BEGIN CERTIFICATE-----\n"), foreign.certificatePem + foreign.keyPem})
    {
        ZuTest::WriteBytes(file, bytes);
        Make();
        EXPECT_EQ(Host().issuer, own->Authority().subject);
    }
}

TEST_F(OwnCertificatesTest, AreCompletedAfterACrash)
{
    Make();
    std::string const authority = own->AuthorityPem();
    std::filesystem::remove(folder / "tls" / "authority.pem");
    std::filesystem::remove(folder / "tls" / "host.pem");
    ZuTest::WriteBytes(folder / "tls" / "new.pem", "-----BEGIN CERT");

    Make();

    EXPECT_EQ(own->AuthorityPem(), authority);
    EXPECT_EQ(ZuTest::BytesOf(folder / "tls" / "authority.pem"), authority);
    EXPECT_EQ(Host().issuer, own->Authority().subject);
    EXPECT_FALSE(std::filesystem::exists(folder / "tls" / "new.pem"));
}

TEST_F(OwnCertificatesTest, RefuseADamagedAuthority)
{
    Make();
    std::string const file = own->AuthorityKeyFile().string();
    std::string const advice = ": remove '" + file + "', and the host makes a new one, which browsers have to be given";

    ZuTest::WriteBytes(file, "");
    EXPECT_EQ(ZuTest::RefusalOf([&] { Make(); }),
              (ZuTest::Refusal{Zu::Status::BAD_ARGUMENT, "The authority of the host cannot be used (" + file +
                                                             ": there is no certificate in it)" + advice}));
    ZuTest::WriteBytes(file, own.has_value() ? own->AuthorityPem() : ZuTest::TestCertificate({}).certificatePem);
    EXPECT_EQ(ZuTest::RefusalOf([&] { Make(); }).status, Zu::Status::BAD_ARGUMENT) << "without its key";
}

TEST_F(OwnCertificatesTest, TellWhichFileCannotBeWritten)
{
    ZuTest::WriteBytes(folder / "file", "");

    EXPECT_EQ(ZuTest::RefusalOf([&] { OwnCertificates(folder / "file" / "tls", {"a"}, [] { return NOW; }); }),
              (ZuTest::Refusal{Zu::Status::FAILURE, "The file '" + (folder / "file" / "tls").string() +
                                                        "' cannot be written: Not a directory"}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { OwnCertificates(folder / "file", {"a"}, [] { return NOW; }); }),
              (ZuTest::Refusal{Zu::Status::FAILURE, "The file '" + (folder / "file" / "new.pem").string() +
                                                        "' cannot be written: Not a directory"}));
    std::filesystem::create_directories(folder / "full" / "authority-key.pem" / "x");
    EXPECT_EQ(ZuTest::RefusalOf([&] { OwnCertificates(folder / "full", {"a"}, [] { return NOW; }); }).status,
              Zu::Status::BAD_ARGUMENT);
    std::filesystem::create_directories(folder / "taken" / "authority.pem" / "x");
    EXPECT_EQ(ZuTest::RefusalOf([&] { OwnCertificates(folder / "taken", {"a"}, [] { return NOW; }); }),
              (ZuTest::Refusal{Zu::Status::FAILURE, "The file '" + (folder / "taken" / "authority.pem").string() +
                                                        "' cannot be written: Is a directory"}));
}

TEST_F(OwnCertificatesTest, TakeALongHostName)
{
    Make({std::string(63, 'a') + "." + std::string(63, 'b')});

    EXPECT_EQ(Host().subject, "CN=" + std::string(63, 'a') + ".");
    EXPECT_EQ(Host().names.front().size(), 127U);
}

TEST(CertificateMaker, RefusesTextsThatAreNone)
{
    EXPECT_EQ(ZuTest::RefusalOf([] { MakeServerCertificate({"a", "b"}, {"c"}, {0, 1}); }).status, Zu::Status::FAILURE);
    MadeCertificate authority = MakeAuthority("a", {0, 1});
    authority.keyPem = "b";
    EXPECT_EQ(ZuTest::RefusalOf([&] { MakeServerCertificate(authority, {"c"}, {0, 1}); }).status, Zu::Status::FAILURE);
}

} // namespace ZuHost
