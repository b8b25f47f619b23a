#include "Host/Tls/HttpsCertificate.h"

#include "Support/Certificates.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>

namespace ZuHost
{

namespace
{

using ZuTest::CertificateWish;
using ZuTest::TestCertificate;

constexpr int64 NOW = 1'767'355'200; // 2026-01-02, noon
constexpr int64 DAY = 86'400;

class HttpsCertificateTest : public testing::Test
{
protected:
    void WriteFiles(std::string const& name, int64 until = NOW + 100 * DAY) const
    {
        CertificateWish wish;
        wish.commonName = name;
        wish.fromUtcSeconds = NOW - DAY;
        wish.untilUtcSeconds = until;
        TestCertificate(wish).Write(folder.path, "host");
    }

    HttpsCertificate& Take()
    {
        return certificate.emplace(HttpsCertificate::UsersFiles{folder / "host.pem", folder / "host.key"}, clock);
    }

    HttpsCertificate& TakeOwn()
    {
        return certificate.emplace(HttpsCertificate::OwnFiles{folder / "tls", "192.0.2.7"}, clock);
    }

    std::string Subject() const
    {
        return certificate->Current()->Own()->subject;
    }

    std::string ComplaintAt(int64 moment)
    {
        now = moment;
        return certificate->Complaint();
    }

    ZuTest::ScratchFolder const folder;
    int64 now = NOW;
    ZuTls::Clock const clock{[this] { return now; }, nullptr};
    std::optional<HttpsCertificate> certificate;
};

} // namespace

TEST_F(HttpsCertificateTest, TakesTheUsersFilesAndReadsThemAgain)
{
    WriteFiles("first");
    Take();
    EXPECT_EQ(Subject(), "CN=first");
    EXPECT_FALSE(certificate->IsOwn());
    EXPECT_EQ(certificate->AuthorityPem(), "");
    EXPECT_EQ(certificate->AuthorityFingerprint(), "");

    WriteFiles("second");
    EXPECT_FALSE(certificate->Renew());
    EXPECT_EQ(Subject(), "CN=first");
    EXPECT_TRUE(certificate->ReadAgain());
    EXPECT_EQ(Subject(), "CN=second");
}

TEST_F(HttpsCertificateTest, KeepsThePresentOneWhenTheNewOneIsBad)
{
    WriteFiles("first");
    Take();

    WriteFiles("second", NOW - 1);

    EXPECT_EQ(ZuTest::RefusalOf([&] { certificate->ReadAgain(); }),
              (ZuTest::Refusal{Zu::Status::BAD_ARGUMENT,
                               "the certificate " + (folder / "host.pem").string() + " ended on 2026-01-02"}));
    EXPECT_EQ(Subject(), "CN=first");
}

TEST_F(HttpsCertificateTest, ComplainsWhileTheClockIsOutsideTheUsersCertificate)
{
    WriteFiles("host");
    Take();
    std::string const what = "The certificate " + (folder / "host.pem").string();

    EXPECT_EQ(ComplaintAt(NOW), "");
    EXPECT_EQ(ComplaintAt(NOW + 70 * DAY - 1), "");
    EXPECT_EQ(ComplaintAt(NOW + 70 * DAY), what + " ends on 2026-04-12");
    EXPECT_EQ(ComplaintAt(NOW + 100 * DAY), what + " ended on 2026-04-12: clients refuse it");
    EXPECT_EQ(ComplaintAt(NOW), "");
    EXPECT_EQ(ComplaintAt(NOW - 2 * DAY), what + " is valid only from 2026-01-01: the clock may be wrong");
    EXPECT_EQ(Subject(), "CN=host") << "it stays in use all the time";
}

TEST_F(HttpsCertificateTest, MakesItsOwnWithTheAddressOfTheListener)
{
    TakeOwn();

    EXPECT_TRUE(certificate->IsOwn());
    EXPECT_THAT(certificate->Current()->Own()->names, testing::Contains("192.0.2.7"));
    EXPECT_THAT(certificate->AuthorityPem(), testing::StartsWith("-----BEGIN CERTIFICATE-----"));
    EXPECT_THAT(certificate->AuthorityFingerprint(), testing::StartsWith("SHA256:"));
    EXPECT_EQ(certificate->Complaint(), "");
}

TEST_F(HttpsCertificateTest, RenewsItsOwnWhenTheClockPassesItsEndAndComesBack)
{
    TakeOwn();
    std::string last = certificate->Current()->Own()->fingerprint;
    for (int64 const moment : {NOW + 1000 * DAY, NOW, NOW + 1000 * DAY})
    {
        now = moment;
        EXPECT_TRUE(certificate->ReadAgain());
        EXPECT_NE(certificate->Current()->Own()->fingerprint, last);
        last = certificate->Current()->Own()->fingerprint;
        EXPECT_FALSE(certificate->Renew());
    }
}

TEST_F(HttpsCertificateTest, ComplainsAboutTheEndOfItsAuthority)
{
    TakeOwn();
    std::string const rest = ": to get a new one, remove authority-key.pem from the folder " +
                             (folder / "tls").string() + " and start the host again";

    EXPECT_EQ(ComplaintAt(NOW + 3284 * DAY - 1), "");
    EXPECT_EQ(ComplaintAt(NOW + 3284 * DAY), "The authority of the certificate for HTTPS ends on 2035-12-30" + rest);
    EXPECT_EQ(ComplaintAt(NOW + 3649 * DAY), "The authority of the certificate for HTTPS ended on 2035-12-30" + rest);
}

TEST(HttpsCertificate, TakesTheClockOfTheMachine)
{
    ZuTest::ScratchFolder const folder;
    CertificateWish wish;
    wish.untilUtcSeconds = 1'700'000'001; // 2023
    TestCertificate(wish).Write(folder.path, "host");

    EXPECT_EQ(ZuTest::RefusalOf([&] {
                  HttpsCertificate(HttpsCertificate::UsersFiles{folder / "host.pem", folder / "host.key"});
              }).text,
              "the certificate " + (folder / "host.pem").string() + " ended on 2023-11-14");
}

} // namespace ZuHost
