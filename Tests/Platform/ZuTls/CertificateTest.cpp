#include "ZuTls/Certificate.h"

#include "Support/Certificates.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gmock/gmock.h>

namespace
{

using Zu::Status::BAD_ARGUMENT;
using ZuTest::CertificateWish;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::TestCertificate;
using ZuTls::Certificate;

constexpr char const* ROLE = "1.3.6.1.4.1.50316.802.1";

Certificate Facts(CertificateWish const& wish)
{
    ZuTest::ScratchFolder const folder;
    TestCertificate(wish).Write(folder.path, "a");
    return Certificate::ReadFile(folder / "a.pem").front();
}

TEST(TlsCertificate, TellsItsFacts)
{
    CertificateWish wish;
    wish.commonName = "sensor-7";
    wish.names = {"sensor-7", "sensor-7.plant", "10.1.2.3", "fe80::1"};
    wish.fromUtcSeconds = 1'735'689'600;
    wish.untilUtcSeconds = 1'767'312'000;

    Certificate const facts = Facts(wish);

    EXPECT_EQ(facts.subject, "CN=sensor-7");
    EXPECT_EQ(facts.issuer, "CN=sensor-7");
    EXPECT_EQ(facts.names, wish.names);
    EXPECT_EQ(facts.fromUtcSeconds, 1'735'689'600);
    EXPECT_EQ(facts.untilUtcSeconds, 1'767'312'000);
    EXPECT_FALSE(facts.isAuthority);
    EXPECT_THAT(facts.fingerprint, testing::MatchesRegex("SHA256(:[0-9A-F][0-9A-F]){32}"));
    EXPECT_EQ(Certificate::FromDer(facts.der).fingerprint, facts.fingerprint);
}

TEST(TlsCertificate, EscapesControlCharactersOfTheSubject)
{
    CertificateWish wish;
    wish.commonName = "a\nb,c";

    EXPECT_EQ(Facts(wish).subject, "CN=a\\0Ab\\,c");
}

TEST(TlsCertificate, KnowsAnAuthority)
{
    CertificateWish wish;
    wish.purpose = CertificateWish::Purpose::AUTHORITY;

    EXPECT_TRUE(Facts(wish).isAuthority);
}

TEST(TlsCertificate, GivesTheTextOfAnExtension)
{
    CertificateWish wish;
    wish.textExtensions = {{ROLE, "Op\xC3\xA9rateur"}, {"1.3.6.1.4.1.50316.802.2", "other"}};

    EXPECT_EQ(Facts(wish).TextExtension(ROLE), "Op\xC3\xA9rateur");
}

TEST(TlsCertificate, GivesNoTextOfADamagedOrDoubtfulExtension)
{
    struct Row
    {
        char const* what;
        std::vector<std::string> values;
    };
    std::vector<Row> const rows{
        {"none", {}},
        {"empty", {""}},
        {"no ASN.1", {"Operator"}},
        {"a PrintableString",
         {std::string("\x13\x02"
                      "Op",
                      4)}},
        {"shorter than its length",
         {std::string("\x0C\x09"
                      "Op",
                      4)}},
        {"bytes behind it",
         {std::string("\x0C\x02"
                      "Op!",
                      5)}},
        {"a null character",
         {std::string("\x0C\x03"
                      "O\0p",
                      5)}},
        {"no UTF-8",
         {std::string("\x0C\x02"
                      "\xC3\x28",
                      4)}},
        {"twice",
         {std::string("\x0C\x02"
                      "Op",
                      4),
          std::string("\x0C\x02"
                      "Ad",
                      4)}},
    };
    for (Row const& row : rows)
    {
        CertificateWish wish;
        for (std::string const& value : row.values)
        {
            wish.rawExtensions.emplace_back(ROLE, value);
        }
        EXPECT_EQ(Facts(wish).TextExtension(ROLE), std::nullopt) << row.what;
    }
    EXPECT_EQ(Facts({}).TextExtension("no identifier"), std::nullopt);
}

TEST(TlsCertificate, ReadsAllCertificatesOfAFile)
{
    ZuTest::ScratchFolder const folder;
    CertificateWish first;
    first.commonName = "first";
    CertificateWish second;
    second.commonName = "second";
    TestCertificate const behind(second);
    TestCertificate(first).Write(folder.path, "both", {&behind});

    std::vector<Certificate> const all = Certificate::ReadFile(folder / "both.pem");

    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].subject, "CN=first");
    EXPECT_EQ(all[1].subject, "CN=second");
}

TEST(TlsCertificate, RefusesFilesWithoutCertificates)
{
    ZuTest::ScratchFolder const folder;
    std::string const path = (folder / "x").string();
    auto const read = [&] { Certificate::ReadFile(folder / "x"); };

    EXPECT_EQ(RefusalOf(read),
              (Refusal{BAD_ARGUMENT, "the certificate " + path + " cannot be read: No such file or directory"}));
    ZuTest::WriteBytes(folder / "x", "");
    EXPECT_EQ(RefusalOf(read), (Refusal{BAD_ARGUMENT, path + ": there is no certificate in it"}));
    ZuTest::WriteBytes(folder / "x", "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n");
    EXPECT_EQ(RefusalOf(read), (Refusal{BAD_ARGUMENT, path + ": a certificate in it is damaged"}));
    ZuTest::WriteBytes(folder / "x", TestCertificate({}).keyPem);
    EXPECT_EQ(RefusalOf(read), (Refusal{BAD_ARGUMENT, path + ": there is no certificate in it"}));
    EXPECT_EQ(RefusalOf([&] { Certificate::ReadFile(folder.path); }),
              (Refusal{BAD_ARGUMENT, "the certificate " + folder.path.string() + " cannot be read: Is a directory"}));
    EXPECT_EQ(RefusalOf([] { Certificate::FromDer("abc"); }), (Refusal{BAD_ARGUMENT, "the bytes are no certificate"}));
}

TEST(TlsCertificate, WritesADayInUtc)
{
    EXPECT_EQ(ZuTls::DayText(0), "1970-01-01");
    EXPECT_EQ(ZuTls::DayText(1'767'311'999), "2026-01-01");
    EXPECT_EQ(ZuTls::DayText(1'767'312'000), "2026-01-02");
}

} // namespace
