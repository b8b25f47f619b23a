#include "ZuTls/Context.h"

#include "Support/Certificates.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <openssl/pem.h>

namespace
{

using Zu::Status::BAD_ARGUMENT;
using ZuTest::CertificateWish;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::TestCertificate;
using ZuTls::PeerProof;
using ZuTls::Settings;
using ZuTls::Side;

constexpr int64 NOW = 1'767'355'200; // 2026-01-02, noon
constexpr int64 DAY = 86'400;

class TlsContext : public testing::Test
{
protected:
    Settings Files(CertificateWish const& wish) const
    {
        TestCertificate(wish).Write(folder.path, "host");
        return {folder / "host.pem", folder / "host.key", {}, PeerProof::NOTHING, ""};
    }

    std::string RefusedText(Settings const& settings, Side side = Side::SERVER) const
    {
        Refusal const refusal = RefusalOf([&] { ZuTls::Context(side, settings, {[] { return NOW; }, nullptr}); });
        EXPECT_EQ(refusal.status, refusal.text.empty() ? Zu::Status::SUCCESS : BAD_ARGUMENT);
        return refusal.text;
    }

    ZuTest::ScratchFolder const folder;
    std::string const certificate = (folder / "host.pem").string();
    std::string const key = (folder / "host.key").string();
};

TEST_F(TlsContext, TellsTheOwnCertificate)
{
    CertificateWish wish;
    wish.commonName = "sensor";

    ZuTls::Context const context(Side::SERVER, Files(wish));

    ASSERT_TRUE(context.Own().has_value());
    EXPECT_EQ(context.Own()->subject, "CN=sensor");
    EXPECT_NE(context.Native(), nullptr);
}

TEST_F(TlsContext, TakesEachAcceptedKey)
{
    for (auto const type :
         {CertificateWish::KeyType::EC_P256, CertificateWish::KeyType::RSA_2048, CertificateWish::KeyType::ED25519})
    {
        CertificateWish wish;
        wish.keyType = type;
        EXPECT_EQ(RefusedText(Files(wish)), "");
    }
}

TEST_F(TlsContext, RefusesACertificateOutsideItsTime)
{
    CertificateWish ended;
    ended.untilUtcSeconds = NOW - DAY;
    CertificateWish early;
    early.fromUtcSeconds = NOW + DAY;
    CertificateWish lastSecond;
    lastSecond.untilUtcSeconds = NOW + 1;

    EXPECT_EQ(RefusedText(Files(ended)), "the certificate " + certificate + " ended on 2026-01-01");
    EXPECT_EQ(RefusedText(Files(early)), "the certificate " + certificate + " is valid only from 2026-01-03");
    EXPECT_EQ(RefusedText(Files(lastSecond)), "");
}

TEST_F(TlsContext, RefusesAnAuthorityBehindTheCertificateThatHasEnded)
{
    CertificateWish wish;
    wish.purpose = CertificateWish::Purpose::AUTHORITY;
    wish.untilUtcSeconds = NOW - DAY;
    TestCertificate const authority(wish);
    TestCertificate({}, &authority).Write(folder.path, "host", {&authority});

    EXPECT_EQ(RefusedText({certificate, key, {}, PeerProof::NOTHING, ""}),
              "the certificate " + certificate + " ended on 2026-01-01");
}

TEST_F(TlsContext, RefusesAKeyOfAnotherCertificate)
{
    TestCertificate({}).Write(folder.path, "other");
    Settings settings = Files({});
    settings.keyFile = folder / "other.key";

    EXPECT_EQ(RefusedText(settings),
              "the key " + settings.keyFile.string() + " does not belong to the certificate " + certificate);
}

TEST_F(TlsContext, RefusesAKeyThatIsTooShort)
{
    CertificateWish wish;
    wish.keyType = CertificateWish::KeyType::RSA_1024;

    EXPECT_EQ(RefusedText(Files(wish)),
              "the key " + key + " is too short: RSA takes 2048 bits at least, an elliptic curve 256 bits");
}

TEST_F(TlsContext, RefusesACertificateWithAnOutdatedSignature)
{
    CertificateWish root;
    root.commonName = "Plant";
    root.purpose = CertificateWish::Purpose::AUTHORITY;
    TestCertificate const authority(root);
    CertificateWish weak;
    weak.isSignedWithSha1 = true;
    TestCertificate(weak, &authority).Write(folder.path, "host", {&authority});

    EXPECT_EQ(RefusedText({certificate, key, {}, PeerProof::NOTHING, ""}),
              "the certificate " + certificate + " is too weak: its key or its signature is outdated");
}

TEST_F(TlsContext, RefusesAnOutdatedAuthorityBehindTheCertificate)
{
    CertificateWish root;
    root.commonName = "Plant";
    root.purpose = CertificateWish::Purpose::AUTHORITY;
    TestCertificate const trusted(root);
    CertificateWish shortKey = root;
    shortKey.commonName = "Line";
    shortKey.keyType = CertificateWish::KeyType::RSA_1024;
    CertificateWish oldSignature = root;
    oldSignature.commonName = "Line";
    oldSignature.isSignedWithSha1 = true;
    for (CertificateWish const& wish : {shortKey, oldSignature})
    {
        TestCertificate const authority(wish, &trusted);
        TestCertificate({}, &authority).Write(folder.path, "host", {&authority});

        EXPECT_EQ(RefusedText({certificate, key, {}, PeerProof::NOTHING, ""}),
                  certificate + ": the key or the signature of an authority in it is outdated");
    }
}

TEST_F(TlsContext, RefusesAFileWithoutKey)
{
    Settings const settings = Files({});
    ZuTest::WriteBytes(key, "nothing");

    EXPECT_EQ(RefusedText(settings), key + ": there is no private key in it");
}

TEST_F(TlsContext, RefusesAKeyWithPassword)
{
    Settings const settings = Files({});
    EVP_PKEY* const plain = EVP_EC_gen("P-256");
    BIO* const text = BIO_new_file(key.c_str(), "w");
    PEM_write_bio_PKCS8PrivateKey(text, plain, EVP_aes_256_cbc(), "secret", 6, nullptr, nullptr);
    BIO_free(text);
    EVP_PKEY_free(plain);

    EXPECT_EQ(RefusedText(settings), "the key " + key + " is protected by a password, and nobody is there to type it");
}

TEST_F(TlsContext, RefusesAKeyThatEveryUserCanRead)
{
    Settings const settings = Files({});
    std::filesystem::permissions(key, std::filesystem::perms::others_read, std::filesystem::perm_options::add);

    EXPECT_EQ(RefusedText(settings),
              "the key " + key + " can be read or changed by every user: take that away with chmod o= " + key);
}

TEST_F(TlsContext, RefusesACertificateForTheOtherSide)
{
    CertificateWish client;
    client.purpose = CertificateWish::Purpose::CLIENT;
    EXPECT_EQ(RefusedText(Files(client)), "the certificate " + certificate + " is not made for servers");

    CertificateWish server;
    server.purpose = CertificateWish::Purpose::SERVER;
    EXPECT_EQ(RefusedText(Files(server), Side::CLIENT), "the certificate " + certificate + " is not made for clients");
}

TEST_F(TlsContext, NeedsTheCertificateAndTheKey)
{
    Settings settings = Files({});
    settings.keyFile.clear();
    EXPECT_EQ(RefusedText(settings), "a certificate and its key are needed, each in a file");
    EXPECT_EQ(RefusedText(settings, Side::CLIENT), "a certificate and its key are needed, each in a file");
    EXPECT_EQ(RefusedText({}), "a certificate and its key are needed, each in a file");
    EXPECT_EQ(RefusedText({}, Side::CLIENT), "");
}

TEST_F(TlsContext, NeedsTheAuthoritiesOfClients)
{
    Settings settings = Files({});
    settings.peerProof = PeerProof::CERTIFICATE;
    EXPECT_EQ(RefusedText(settings),
              "to ask clients for certificates takes a file with the authorities that sign them");

    settings.authoritiesFile = folder / "none.pem";
    EXPECT_EQ(RefusedText(settings),
              "the certificate " + settings.authoritiesFile.string() + " cannot be read: No such file or directory");

    settings.authoritiesFile = certificate;
    EXPECT_EQ(RefusedText(settings), "");
}

TEST_F(TlsContext, RefusesListsOfRevokedCertificatesThatCannotBeUsed)
{
    Settings settings = Files({});
    settings.peerProof = PeerProof::CERTIFICATE;
    settings.authoritiesFile = certificate;
    settings.revocationsFile = folder / "revoked.pem";
    std::string const file = settings.revocationsFile.string();
    CertificateWish wish;
    wish.commonName = "Plant";
    wish.purpose = CertificateWish::Purpose::AUTHORITY;
    TestCertificate const authority(wish);
    auto const refusalOf = [&](std::string const& bytes) {
        ZuTest::WriteBytes(settings.revocationsFile, bytes);
        return RefusedText(settings);
    };

    EXPECT_EQ(RefusedText(settings),
              "the list of revoked certificates " + file + " cannot be read: No such file or directory");
    EXPECT_EQ(refusalOf(authority.certificatePem), file + ": there is no list of revoked certificates in it");
    EXPECT_EQ(refusalOf("-----BEGIN X509 CRL-----\nAAAA\n-----END X509 CRL-----\n"),
              file + ": a list of revoked certificates in it is damaged");
    EXPECT_EQ(refusalOf(RevocationList(authority, {}, NOW - 2 * DAY, NOW - DAY)),
              "the list of revoked certificates " + file + " of CN=Plant ended on 2026-01-01");
    EXPECT_EQ(refusalOf(RevocationList(authority, {}, NOW + DAY, NOW + 2 * DAY)),
              "the list of revoked certificates " + file + " of CN=Plant is valid only from 2026-01-03");
    EXPECT_EQ(refusalOf(RevocationList(authority, {}, NOW - DAY, NOW + DAY)), "");
    EXPECT_EQ(refusalOf(RevocationList(authority, {}, NOW - DAY, 0)), "");
}

TEST_F(TlsContext, AClientWithoutAuthoritiesTakesThoseOfTheSystem)
{
    Settings settings;
    settings.peerProof = PeerProof::CERTIFICATE;
    EXPECT_EQ(RefusedText(settings, Side::CLIENT), "");
}

} // namespace
