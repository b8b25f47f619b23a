#include "Platform/ZuTls/TestHandshake.h"
#include "Support/Certificates.h"
#include "Support/ScratchFolder.h"
#include "ZuTls/Context.h"

#include <gtest/gtest.h>

#include <openssl/err.h>

#include <array>
#include <fstream>

namespace
{

using ZuTest::CertificateWish;
using ZuTest::TestCertificate;
using ZuTest::TestHandshake;
using ZuTls::PeerProof;
using ZuTls::Settings;
using ZuTls::Side;

constexpr int64 NOW = 1'767'355'200; // 2026-01-02, noon
constexpr int64 DAY = 86'400;
constexpr uint64 HOUR_USEC = 3'600'000'000;
constexpr char const* ROLE = "1.3.6.1.4.1.50316.802.1";

CertificateWish Authority()
{
    CertificateWish wish;
    wish.commonName = "Plant";
    wish.purpose = CertificateWish::Purpose::AUTHORITY;
    return wish;
}

class TlsHandshake : public testing::Test
{
protected:
    using Pointer = std::unique_ptr<ZuTls::Context>;

    TlsHandshake()
    {
        authority.Write(folder.path, "authority");
    }

    Pointer Server(CertificateWish wish = {}, PeerProof proof = PeerProof::NOTHING)
    {
        wish.names = {"sensor.plant", "10.1.2.3"};
        TestCertificate(wish, &authority).Write(folder.path, "server");
        Settings const settings{folder / "server.pem", folder / "server.key", folder / "authority.pem", proof, ""};
        return std::make_unique<ZuTls::Context>(Side::SERVER, settings, clock);
    }

    Pointer Client(std::string const& name = "", CertificateWish const* own = nullptr,
                   TestCertificate const* signer = nullptr)
    {
        Settings settings{{}, {}, folder / "authority.pem", PeerProof::CERTIFICATE, name};
        if (own != nullptr)
        {
            TestCertificate(*own, signer).Write(folder.path, "client");
            settings.certificateFile = folder / "client.pem";
            settings.keyFile = folder / "client.key";
        }
        return std::make_unique<ZuTls::Context>(Side::CLIENT, settings, clock);
    }

    ZuTest::ScratchFolder const folder;
    TestCertificate const authority{Authority()};
    int64 utcSeconds = NOW;
    uint64 monotonicUsec = 1;
    ZuTls::Clock const clock{[this] { return utcSeconds; }, [this] { return monotonicUsec; }};
};

TEST_F(TlsHandshake, SucceedsWithTheAuthority)
{
    Pointer const server = Server();
    Pointer const client = Client("sensor.plant");
    TestHandshake talk(client->Native(), server->Native());
    client->Prepare(talk.Client());
    server->Prepare(talk.Server());

    ASSERT_TRUE(talk.Run()) << talk.ClientFault() << talk.ServerFault();

    EXPECT_EQ(SSL_version(&talk.Client()), TLS1_3_VERSION);
    EXPECT_STREQ(SSL_get_servername(&talk.Server(), TLSEXT_NAMETYPE_host_name), "sensor.plant");
    EXPECT_EQ(ZuTls::Certificate::OfPeer(talk.Client())->fingerprint, server->Own()->fingerprint);
    EXPECT_EQ(ZuTls::Certificate::OfPeer(talk.Server()), std::nullopt);
}

TEST_F(TlsHandshake, SucceedsWithAnAddress)
{
    Pointer const server = Server();
    Pointer const client = Client("10.1.2.3");
    TestHandshake talk(client->Native(), server->Native());
    client->Prepare(talk.Client());

    EXPECT_TRUE(talk.Run()) << talk.ClientFault();
    EXPECT_EQ(SSL_get_servername(&talk.Server(), TLSEXT_NAMETYPE_host_name), nullptr);
}

TEST_F(TlsHandshake, AConnectionOutlivesItsContext)
{
    Pointer server = Server();
    Pointer client = Client();
    TestHandshake talk(client->Native(), server->Native());
    server.reset();
    client.reset();

    EXPECT_TRUE(talk.Run()) << talk.ClientFault();
}

TEST_F(TlsHandshake, AClientExplainsWhyItRefusesTheServer)
{
    Pointer const server = Server();
    {
        TestHandshake talk(Client("other.plant")->Native(), server->Native());
        EXPECT_FALSE(talk.Run());
        EXPECT_EQ(talk.ClientFault(),
                  "the name other.plant is not in the certificate of CN=test, which has sensor.plant, 10.1.2.3");
    }
    {
        TestHandshake talk(Client("10.9.9.9")->Native(), server->Native());
        EXPECT_FALSE(talk.Run());
        EXPECT_EQ(talk.ClientFault(),
                  "the name 10.9.9.9 is not in the certificate of CN=test, which has sensor.plant, 10.1.2.3");
    }
    CertificateWish other = Authority();
    other.commonName = "Other";
    TestCertificate(other).Write(folder.path, "authority");
    {
        TestHandshake talk(Client()->Native(), server->Native());
        EXPECT_FALSE(talk.Run());
        EXPECT_EQ(talk.ClientFault(),
                  "the certificate of CN=test is signed by CN=Plant, which is not an accepted authority");
    }
    TestCertificate(Authority()).Write(folder.path, "authority"); // of the same name
    TestHandshake talk(Client()->Native(), server->Native());
    EXPECT_FALSE(talk.Run());
    EXPECT_EQ(talk.ClientFault(),
              "the certificate of CN=test is not signed with the key of the accepted authority CN=Plant");
}

TEST_F(TlsHandshake, TheClockDecidesOverTheEndOfACertificate)
{
    CertificateWish wish;
    wish.fromUtcSeconds = NOW - DAY;
    wish.untilUtcSeconds = NOW + DAY;
    Pointer const server = Server(wish);
    Pointer const client = Client();
    auto const faultAt = [&](int64 moment) {
        utcSeconds = moment;
        TestHandshake talk(client->Native(), server->Native());
        talk.Run();
        return talk.ClientFault();
    };

    EXPECT_EQ(faultAt(NOW), "");
    EXPECT_EQ(faultAt(NOW + 2 * DAY), "the certificate of CN=test ended on 2026-01-03");
    EXPECT_EQ(faultAt(NOW), "");
    EXPECT_EQ(faultAt(NOW - 2 * DAY), "the certificate of CN=test is valid only from 2026-01-01");
    EXPECT_EQ(faultAt(NOW + DAY), "the certificate of CN=test ended on 2026-01-03");
    EXPECT_EQ(faultAt(NOW + DAY - 1), "");
}

TEST_F(TlsHandshake, AServerSeesTheRoleOfAClient)
{
    CertificateWish wish;
    wish.commonName = "plc-7";
    wish.textExtensions = {{ROLE, "Operator"}};
    Pointer const server = Server({}, PeerProof::CERTIFICATE);
    TestHandshake talk(Client("", &wish, &authority)->Native(), server->Native());

    ASSERT_TRUE(talk.Run()) << talk.ServerFault();

    auto const peer = ZuTls::Certificate::OfPeer(talk.Server());
    ASSERT_TRUE(peer.has_value());
    EXPECT_EQ(peer->subject, "CN=plc-7");
    EXPECT_EQ(peer->TextExtension(ROLE), "Operator");
}

TEST_F(TlsHandshake, AServerExplainsWhyItRefusesAClient)
{
    Pointer const server = Server({}, PeerProof::CERTIFICATE);
    auto const refusal = [&](Pointer const& client) {
        TestHandshake talk(client->Native(), server->Native());
        EXPECT_FALSE(talk.Run());
        return talk.ServerFault() + " / " + talk.ClientFault();
    };
    CertificateWish plc;
    plc.commonName = "plc";
    CertificateWish shortLived = plc;
    shortLived.untilUtcSeconds = NOW + DAY;
    TestCertificate const stranger(Authority());

    EXPECT_EQ(refusal(Client()), "the peer shows no certificate / the peer wants a certificate from us");
    EXPECT_EQ(refusal(Client("", &plc)),
              "the certificate of CN=plc is signed by itself and not by an accepted authority / "
              "the peer does not trust the authority of our certificate");
    EXPECT_EQ(refusal(Client("", &plc, &stranger)),
              "the certificate of CN=plc is not signed with the key of the accepted authority CN=Plant / "
              "the peer refuses our certificate");
    Pointer const ending = Client("", &shortLived, &authority);
    utcSeconds = NOW + 2 * DAY;
    EXPECT_EQ(refusal(ending), "the certificate of CN=plc ended on 2026-01-03 / "
                               "for the peer our certificate has ended or has not begun");
}

TEST_F(TlsHandshake, AServerRefusesARevokedClientAndExplainsWhatIsWrongWithTheList)
{
    CertificateWish plc;
    plc.commonName = "plc";
    Pointer const client = Client("", &plc, &authority);
    TestCertificate revoked(plc, &authority);
    auto const faultWith = [&](std::string const& list, int64 handshakeAt = NOW + DAY) {
        ZuTest::WriteBytes(folder / "revoked.pem", list);
        CertificateWish wish;
        TestCertificate(wish, &authority).Write(folder.path, "server");
        Settings settings{folder / "server.pem", folder / "server.key", folder / "authority.pem",
                          PeerProof::CERTIFICATE, ""};
        settings.revocationsFile = folder / "revoked.pem";
        ZuTls::Context const server(Side::SERVER, settings, clock);
        utcSeconds = handshakeAt; // the list was read at NOW
        TestHandshake talk(client->Native(), server.Native());
        talk.Run();
        utcSeconds = NOW;
        return talk.ServerFault();
    };
    auto const listOf = [&](std::vector<TestCertificate const*> const& certificates, int64 until) {
        return RevocationList(authority, certificates, NOW - DAY, until);
    };
    CertificateWish other = Authority();
    other.commonName = "Other plant";
    TestCertificate const another(other);
    TestCertificate const impostor(Authority());

    EXPECT_EQ(faultWith(listOf({}, NOW + 2 * DAY)), "");
    EXPECT_EQ(faultWith(listOf({&revoked}, NOW + 2 * DAY)), "") << "another certificate of the same name";
    std::ifstream own(folder / "client.pem");
    revoked.certificatePem.assign(std::istreambuf_iterator<char>(own), {});
    EXPECT_EQ(faultWith(listOf({&revoked}, NOW + 2 * DAY)), "the certificate of CN=plc is revoked");
    EXPECT_EQ(faultWith(listOf({&revoked}, 0)), "the certificate of CN=plc is revoked");
    EXPECT_EQ(faultWith(listOf({}, NOW + DAY / 2)), "the list of revoked certificates of CN=Plant ended on 2026-01-03");
    EXPECT_EQ(faultWith(listOf({}, NOW + DAY / 2) + listOf({}, NOW + DAY / 4)),
              "the list of revoked certificates of CN=Plant ended on 2026-01-03");
    EXPECT_EQ(faultWith(listOf({}, NOW + 2 * DAY), NOW - 2 * DAY),
              "the list of revoked certificates of CN=Plant is valid only from 2026-01-01");
    EXPECT_EQ(faultWith(RevocationList(another, {}, NOW - DAY, NOW + 2 * DAY)),
              "the certificate of CN=plc cannot be checked: there is no list of revoked certificates of CN=Plant");
    EXPECT_EQ(faultWith(RevocationList(impostor, {}, NOW - DAY, NOW + 2 * DAY)),
              "the list of revoked certificates of CN=Plant is not signed with the key of this authority");
}

TEST_F(TlsHandshake, AServerExplainsWhyACertificateDoesNotSuffice)
{
    Pointer const server = Server({}, PeerProof::CERTIFICATE);
    struct Row
    {
        CertificateWish::Purpose purpose;
        CertificateWish::KeyType keyType;
        bool isSignedWithSha1;
        char const* fault;
    };
    using Purpose = CertificateWish::Purpose;
    using KeyType = CertificateWish::KeyType;
    std::array const rows{
        Row{Purpose::CLIENT, KeyType::EC_P256, false, ""},
        Row{Purpose::SERVER, KeyType::EC_P256, false, "the certificate of CN=plc is not made for this purpose"},
        Row{Purpose::CLIENT, KeyType::RSA_1024, false,
            "the certificate of CN=plc is refused: EE certificate key too weak"},
        Row{Purpose::CLIENT, KeyType::EC_P256, true,
            "the certificate of CN=plc is refused: CA signature digest algorithm too weak"},
    };
    for (Row const& row : rows)
    {
        CertificateWish wish;
        wish.commonName = "plc";
        wish.purpose = row.purpose;
        wish.keyType = row.keyType;
        wish.isSignedWithSha1 = row.isSignedWithSha1;
        TestCertificate(wish, &authority).Write(folder.path, "client");
        std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> const client(SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
        SSL_CTX_set_security_level(client.get(), 0); // shows what our own clients refuse to use
        ASSERT_EQ(SSL_CTX_use_certificate_file(client.get(), (folder / "client.pem").c_str(), SSL_FILETYPE_PEM), 1);
        ASSERT_EQ(SSL_CTX_use_PrivateKey_file(client.get(), (folder / "client.key").c_str(), SSL_FILETYPE_PEM), 1);
        TestHandshake talk(client.get(), server->Native());
        EXPECT_EQ(talk.Run(), *row.fault == '\0');
        EXPECT_EQ(talk.ServerFault(), row.fault);
    }
}

TEST_F(TlsHandshake, RefusesOldVersionsAndSuites)
{
    Pointer const server = Server();
    struct Row
    {
        int version;
        char const* suites;
        char const* fault;
    };
    std::array const rows{
        Row{TLS1_1_VERSION, "ALL:@SECLEVEL=0", "the peer wants a version of TLS that is not accepted: 1.2 and 1.3 are"},
        Row{TLS1_VERSION, "ALL:@SECLEVEL=0", "the peer wants a version of TLS that is not accepted: 1.2 and 1.3 are"},
        Row{TLS1_2_VERSION, "ECDHE-ECDSA-AES128-SHA256", "the peer offers no accepted cipher suite"},
        Row{TLS1_2_VERSION, "AES128-GCM-SHA256", "the peer offers no accepted cipher suite"},
        Row{TLS1_2_VERSION, "DHE-RSA-AES128-GCM-SHA256", "the peer offers no accepted cipher suite"},
        Row{TLS1_2_VERSION, "ECDHE-ECDSA-AES128-GCM-SHA256", ""},
    };
    for (Row const& row : rows)
    {
        std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> const client(SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
        SSL_CTX_set_security_level(client.get(), 0);
        SSL_CTX_set_min_proto_version(client.get(), TLS1_VERSION);
        SSL_CTX_set_max_proto_version(client.get(), row.version);
        SSL_CTX_set_cipher_list(client.get(), row.suites);
        TestHandshake talk(client.get(), server->Native());
        EXPECT_EQ(talk.Run(), *row.fault == '\0') << row.suites;
        EXPECT_EQ(talk.ServerFault(), row.fault) << row.suites;
    }
}

TEST_F(TlsHandshake, RefusesRenegotiation)
{
    Pointer const server = Server();
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> const client(SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
    SSL_CTX_set_max_proto_version(client.get(), TLS1_2_VERSION);
    TestHandshake talk(client.get(), server->Native());
    ASSERT_TRUE(talk.Run());

    SSL_renegotiate(&talk.Client());
    SSL_do_handshake(&talk.Client()); // asks
    std::array<char, 1> room{};
    SSL_read(&talk.Server(), room.data(), 1); // answers with the alert no_renegotiation
    ERR_clear_error();
    EXPECT_NE(SSL_do_handshake(&talk.Client()), 1);
    EXPECT_EQ(ERR_GET_REASON(ERR_peek_error()), SSL_R_NO_RENEGOTIATION);
}

TEST_F(TlsHandshake, ExplainsBytesThatAreNoTls)
{
    Pointer const server = Server();
    struct Row
    {
        char const* bytes;
        char const* fault;
    };
    for (Row const& row : {Row{"GET / HTTP/1.1\r\n\r\n", "the peer sends plain HTTP to a TLS port"},
                           Row{"CONNECT a:1 HTTP/1.1\r\n\r\n", "the peer sends plain HTTP to a TLS port"},
                           Row{"hello, who is there?\r\n", "the peer does not speak TLS"}})
    {
        std::unique_ptr<SSL, decltype(&SSL_free)> const connection(SSL_new(server->Native()), &SSL_free);
        BIO* const in = BIO_new_mem_buf(row.bytes, -1);
        SSL_set_bio(connection.get(), in, BIO_new(BIO_s_mem()));
        ERR_clear_error();
        EXPECT_NE(SSL_accept(connection.get()), 1);
        EXPECT_EQ(ZuTls::Explain(ERR_get_error(), *connection), row.fault);
    }
    std::unique_ptr<SSL, decltype(&SSL_free)> const connection(SSL_new(server->Native()), &SSL_free);
    EXPECT_EQ(ZuTls::Explain(0, *connection), "the connection broke during the handshake");
    EXPECT_EQ(ZuTls::Explain(ERR_PACK(ERR_LIB_SSL, 0, SSL_R_DIGEST_CHECK_FAILED), *connection), "digest check failed");
}

class TlsTickets : public TlsHandshake
{
protected:
    using Session = std::unique_ptr<SSL_SESSION, decltype(&SSL_SESSION_free)>;

    TlsTickets()
    {
        SSL_CTX_set_max_proto_version(client.get(), TLS1_2_VERSION); // its tickets end with the handshake
    }

    /// Connects, with the session if there is one, and returns the session afterwards.
    Session Connect(ZuTls::Context const& server, SSL_SESSION* session)
    {
        TestHandshake talk(client.get(), server.Native());
        SSL_set_session(&talk.Client(), session);
        EXPECT_TRUE(talk.Run()) << talk.ClientFault() << talk.ServerFault();
        talk.ReadTickets();
        isResumed = SSL_session_reused(&talk.Server()) == 1;
        return {SSL_get1_session(&talk.Client()), &SSL_SESSION_free};
    }

    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> const client{SSL_CTX_new(TLS_client_method()), &SSL_CTX_free};
    bool isResumed = false;
};

TEST_F(TlsTickets, ResumeASessionForOnePeriodAndTheNext)
{
    Pointer const server = Server();
    Session const first = Connect(*server, nullptr);
    EXPECT_FALSE(isResumed);
    Connect(*server, first.get());
    EXPECT_TRUE(isResumed);

    monotonicUsec += HOUR_USEC;
    Session const renewed = Connect(*server, first.get());
    EXPECT_TRUE(isResumed);

    monotonicUsec += HOUR_USEC;
    Connect(*server, first.get());
    EXPECT_FALSE(isResumed) << "its keys are gone";
    Connect(*server, renewed.get());
    EXPECT_TRUE(isResumed) << "it was given under the keys that are now the previous ones";
}

TEST_F(TlsTickets, AreRefusedAfterALongRest)
{
    Pointer const server = Server();
    Session const first = Connect(*server, nullptr);

    monotonicUsec += 2 * HOUR_USEC;
    Connect(*server, first.get());

    EXPECT_FALSE(isResumed);
}

TEST_F(TlsTickets, OfTls13ResumeToo)
{
    SSL_CTX_set_max_proto_version(client.get(), TLS1_3_VERSION);
    Pointer const server = Server();
    Session const first = Connect(*server, nullptr);

    Connect(*server, first.get());

    EXPECT_TRUE(isResumed);
}

TEST_F(TlsTickets, OfAnotherContextAreRefused)
{
    Pointer const server = Server();
    Session const first = Connect(*server, nullptr);

    Connect(*Server(), first.get());

    EXPECT_FALSE(isResumed);
}

TEST_F(TlsTickets, AreNotGivenToClientsThatShowCertificates)
{
    for (int const version : {TLS1_2_VERSION, TLS1_3_VERSION})
    {
        SSL_CTX_set_max_proto_version(client.get(), version);
        TestCertificate({}, &authority).Write(folder.path, "own");
        SSL_CTX_use_certificate_file(client.get(), (folder / "own.pem").c_str(), SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(client.get(), (folder / "own.key").c_str(), SSL_FILETYPE_PEM);
        Pointer const server = Server({}, PeerProof::CERTIFICATE);
        Session const first = Connect(*server, nullptr);

        Connect(*server, first.get());

        EXPECT_FALSE(isResumed) << version;
    }
}

} // namespace
