#include "Plugins/Common/TcpMetrics.h"
#include "Plugins/Common/TcpServer.h"
#include "Support/CallLog.h"
#include "Support/Certificates.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "Tests/Plugins/Common/EchoConversation.h"
#include "Tests/Plugins/Common/TlsClient.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace PluginCommon
{

using ZuTest::CertificateWish;
using ZuTest::TestCertificate;

constexpr char const* ROLE_EXTENSION = "1.3.6.1.4.1.50316.802.1";
constexpr int64 YEAR_2024 = 1'704'067'200;

/// The first 48 bytes of the hello of a TLS client.
TcpClient::Bytes const HALF_HELLO = {0x16, 0x03, 0x01, 0x00, 0xF8, 0x01, 0x00, 0x00, 0xF4, 0x03, 0x03, 1,
                                     2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,
                                     14,   15,   16,   17,   18,   19,   20,   21,   22,   23,   24,   25,
                                     26,   27,   28,   29,   30,   31,   32,   0x20, 1,    2,    3,    4};

CertificateWish Wish(char const* commonName, CertificateWish::Purpose purpose)
{
    CertificateWish wish;
    wish.commonName = commonName;
    wish.names = {"127.0.0.1"};
    wish.purpose = purpose;
    return wish;
}

/// The authority of a plant, the certificate of its sensor, and the certificates of its PLCs.
struct Plant
{
    Plant()
    {
        authority.Write(folder.path, "authority");
        server.Write(folder.path, "server");
    }

    /// What a client with this role shows; nothing: a certificate without a role.
    ZuTls::Settings Client(std::optional<std::string> const& role)
    {
        CertificateWish wish = Wish("plc-7", CertificateWish::Purpose::CLIENT);
        if (role)
        {
            wish.textExtensions.emplace_back(ROLE_EXTENSION, *role);
        }
        return Shows(TestCertificate(wish, &authority));
    }

    ZuTls::Settings Shows(TestCertificate const& certificate)
    {
        certificate.Write(folder.path, "client");
        ZuTls::Settings settings = Anonymous();
        settings.certificateFile = folder / "client.pem";
        settings.keyFile = folder / "client.key";
        return settings;
    }

    ZuTls::Settings Anonymous() const
    {
        return {.certificateFile = {},
                .keyFile = {},
                .authoritiesFile = folder / "authority.pem",
                .peerProof = ZuTls::PeerProof::CERTIFICATE,
                .peerName = "127.0.0.1"};
    }

    ZuTest::ScratchFolder folder;
    TestCertificate authority{Wish("authority", CertificateWish::Purpose::AUTHORITY)};
    TestCertificate server{Wish("sensor", CertificateWish::Purpose::SERVER), &authority};
};

class TcpTlsTest : public testing::Test
{
protected:
    TcpSettings Settings(TcpSecurity security) const
    {
        TcpSettings settings{"127.0.0.1", 0, 16, 60'000'000};
        settings.security = security;
        settings.certificateFile = plant.folder / "server.pem";
        settings.keyFile = plant.folder / "server.key";
        settings.authorityFile = plant.folder / "authority.pem";
        return settings;
    }

    static ZuTls::Context ContextOf(ZuTls::Settings const& settings)
    {
        return ZuTls::Context(ZuTls::Side::CLIENT, settings);
    }

    static void ExpectEcho(TlsClient& client, std::string const& text = "?")
    {
        client.Send(text);
        EXPECT_EQ(client.Receive(text.size()), text);
    }

    /// Waits until the server has counted a failed handshake.
    bool WaitForFailedHandshake()
    {
        auto const latest = std::chrono::steady_clock::now() + ZuTest::CallLog::BOUND;
        while (counters.failedHandshakes == 0 && std::chrono::steady_clock::now() < latest)
        {
            std::this_thread::yield();
        }
        return counters.failedHandshakes == 1;
    }

    /// The role of the only client, as its conversation knows it.
    std::string RoleOfClient()
    {
        ZuTest::CallLog roles;
        server.PostToEach([&roles](ITcpConversation& conversation) {
            roles.Add(ZuCommon::RoleName(conversation.Client().role));
            return false;
        });
        server.PostToEach([](ITcpConversation&) { return false; });
        server.Apply(applied); // returns after the visits
        return roles.All().empty() ? "" : roles.All().back();
    }

    void Start(TcpSettings const& settings)
    {
        applied = settings;
        server.Start(settings);
    }

    Plant plant;
    TcpSettings applied;
    TcpCounters counters;
    ZuTest::CallLog calls;
    TcpServer server{{.displayName = "The test",
                      .threadName = "Test.Io",
                      .makeConversation = [] { return std::make_unique<EchoConversation>(); },
                      .clientsChanged = [this](uint64 count) { calls.Add(std::to_string(count)); }},
                     counters};
};

TEST_F(TcpTlsTest, ServesClientsOfBothVersions)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    auto const context = ContextOf(plant.Anonymous());

    TlsClient newest(server.Port(), context);
    TlsClient older(server.Port(), context, TLS1_2_VERSION);

    ExpectEcho(newest);
    ExpectEcho(older);
    EXPECT_STREQ(SSL_get_version(&newest.Session()), "TLSv1.3");
    EXPECT_STREQ(SSL_get_version(&older.Session()), "TLSv1.2");
    EXPECT_EQ(counters.failedHandshakes, 0u);
}

TEST_F(TcpTlsTest, ReadsARecordThatIsLargerThanTheRoom)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()));

    ExpectEcho(client, std::string(10'000, 'x')); // the conversation takes 16 bytes at a time
}

TEST_F(TcpTlsTest, GoesOnWhenAClientTakesItsAnswersLate)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()), 0, "127.0.0.1", 4096);
    ExpectEcho(client);
    std::string const text(500'000, 'x');
    client.Send(text); // the buffers of the system take it, but not all answers
    ZuTest::CallLog visits;
    while (visits.Count("stalled") == 0)
    {
        std::size_t const before = visits.All().size();
        server.PostToEach([&visits](ITcpConversation& conversation) {
            visits.Add(conversation.Pending().empty() ? "served" : "stalled");
            return true; // writes again what could not be written
        });
        server.Apply(applied); // returns after the visit
        ASSERT_GT(visits.All().size(), before) << "the client is gone";
    }

    EXPECT_EQ(client.Receive(text.size()), text);
}

TEST_F(TcpTlsTest, AnswersAClientThatHasEndedItsSide)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()));
    client.Send("last words, longer than the room of the conversation");
    client.EndSending();

    EXPECT_EQ(client.Receive(52), "last words, longer than the room of the conversation");

    EXPECT_TRUE(client.IsEndedByServer());
    EXPECT_EQ(counters.droppedClients, 0u);
}

TEST_F(TcpTlsTest, ForgetsAClientThatVanishes)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    {
        TlsClient client(server.Port(), ContextOf(plant.Anonymous()));
        ExpectEcho(client);
    }

    EXPECT_TRUE(calls.WaitFor("0"));
    EXPECT_EQ(counters.droppedClients, 0u);
    EXPECT_EQ(counters.failedHandshakes, 0u);
}

TEST_F(TcpTlsTest, TellsItsClientsThatItStops)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()));
    ExpectEcho(client);

    server.Stop();

    EXPECT_TRUE(client.IsEndedByServer());
}

TEST_F(TcpTlsTest, GoesOnWithNewKeysOfTheClient)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()));

    for (int i = 0; i < 10; ++i)
    {
        SSL_key_update(&client.Session(), SSL_KEY_UPDATE_REQUESTED);
        ExpectEcho(client);
    }
}

TEST_F(TcpTlsTest, RefusesRenegotiation)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient client(server.Port(), ContextOf(plant.Anonymous()), TLS1_2_VERSION);
    SSL_clear_options(&client.Session(), SSL_OP_NO_RENEGOTIATION);
    ExpectEcho(client);

    SSL_renegotiate(&client.Session());

    EXPECT_THROW(ExpectEcho(client), std::runtime_error);
}

TEST_F(TcpTlsTest, ClosesAPlainClient)
{
    ZuTest::LogRecorder const log;
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TcpClient plain(server.Port());

    plain.Send({0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0, 1}); // reads a register

    EXPECT_TRUE(WaitForFailedHandshake());
    EXPECT_TRUE(calls.WaitFor("0")); // behind the line of the log
    EXPECT_EQ(log.Lines(),
              std::vector{ZuTest::UserWarning("The test closes a connection of 127.0.0.1: the TLS handshake "
                                              "failed: the peer does not speak TLS (1 since the last such "
                                              "line)")});
    EXPECT_EQ(counters.droppedClients, 1u);
}

TEST_F(TcpTlsTest, ClosesAClientThatEndsWithinTheHandshake)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TcpClient half(server.Port());
    half.Send(HALF_HELLO);

    half.EndSending();

    EXPECT_TRUE(half.IsClosedByServer());
    EXPECT_TRUE(WaitForFailedHandshake());
}

TEST_F(TcpTlsTest, ClosesAClientThatIsTooSlowWithTheHandshake)
{
    ZuTest::LogRecorder const log;
    TcpSettings settings = Settings(TcpSecurity::SERVER_CERTIFICATE);
    settings.handshakeTimeoutUsec = 1000;
    Start(settings);
    TcpClient half(server.Port());

    half.Send(HALF_HELLO);

    EXPECT_TRUE(half.IsClosedByServer());
    EXPECT_TRUE(WaitForFailedHandshake());
    EXPECT_EQ(
        log.CountOfText("The test closes a connection of 127.0.0.1: the TLS handshake failed: the client takes too "
                        "long (1 since the last such line)"),
        1u);
}

TEST_F(TcpTlsTest, VisitsNoClientBeforeTheEndOfTheHandshake)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TcpClient half(server.Port());
    half.Send(HALF_HELLO);
    TlsClient whole(server.Port(), ContextOf(plant.Anonymous()));
    ExpectEcho(whole);

    ZuTest::CallLog visits;
    server.PostToEach([&visits](ITcpConversation&) {
        visits.Add("visit");
        return false;
    });
    server.Apply(applied); // returns after the visits

    EXPECT_EQ(visits.Count("visit"), 1u);
    EXPECT_EQ(counters.clients, 2u);
}

TEST_F(TcpTlsTest, LetsAClientWithinTheHandshakeMakeRoom)
{
    TcpSettings settings = Settings(TcpSecurity::SERVER_CERTIFICATE);
    settings.maxClients = 1;
    settings.makeRoomAfterUsec = 0;
    Start(settings);
    TcpClient half(server.Port());
    half.Send(HALF_HELLO);

    TlsClient client(server.Port(), ContextOf(plant.Anonymous()));

    ExpectEcho(client);
    EXPECT_TRUE(half.IsClosedByServer());
    EXPECT_EQ(counters.clients, 1u);
}

struct CertifiedRole
{
    char const* name;
    std::optional<std::string> text;
    char const* role;
};

class TcpTlsRoles : public TcpTlsTest, public testing::WithParamInterface<CertifiedRole>
{
};

TEST_P(TcpTlsRoles, ComeFromTheCertificateOfTheClient)
{
    TcpSettings settings = Settings(TcpSecurity::CLIENT_CERTIFICATES);
    settings.roles = "Maintenance=engineer, Überwachung=viewer";
    Start(settings);
    TlsClient client(server.Port(), ContextOf(plant.Client(GetParam().text)));

    ExpectEcho(client);

    EXPECT_EQ(RoleOfClient(), GetParam().role);
}

INSTANTIATE_TEST_SUITE_P(Table, TcpTlsRoles,
                         testing::Values(CertifiedRole{"Viewer", "Viewer", "viewer"},
                                         CertifiedRole{"Operator", "Operator", "operator"},
                                         CertifiedRole{"Engineer", "Engineer", "engineer"},
                                         CertifiedRole{"Administrator", "Administrator", "administrator"},
                                         CertifiedRole{"OfTheTable", "Maintenance", "engineer"},
                                         CertifiedRole{"BeyondAscii", "Überwachung", "viewer"},
                                         CertifiedRole{"Unknown", "Boss", "none"}, CertifiedRole{"Empty", "", "none"},
                                         CertifiedRole{"Without", std::nullopt, "none"}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(TcpTlsTest, TakesNoRoleOfAnotherEncoding)
{
    Start(Settings(TcpSecurity::CLIENT_CERTIFICATES));
    for (std::string const& bytes : {std::string("\x13\x06Viewer"),               // a PrintableString
                                     std::string("\x0C\x06Viewer\x0C\x06Viewer"), // two texts
                                     std::string("\x0C\x07Viewer"),               // the length is wrong
                                     std::string("Viewer")})
    {
        CertificateWish wish = Wish("plc-7", CertificateWish::Purpose::CLIENT);
        wish.rawExtensions.emplace_back(ROLE_EXTENSION, bytes);
        TlsClient client(server.Port(), ContextOf(plant.Shows(TestCertificate(wish, &plant.authority))));
        ExpectEcho(client);

        EXPECT_EQ(RoleOfClient(), "none") << bytes;

        server.DisconnectAll();
        EXPECT_TRUE(client.IsClosedByServer());
    }
}

TEST_F(TcpTlsTest, LowersTheRoleOfAClientThatMayNotWrite)
{
    TcpSettings settings = Settings(TcpSecurity::CLIENT_CERTIFICATES);
    settings.writers = "127.0.0.2";
    Start(settings);
    TlsClient client(server.Port(), ContextOf(plant.Client("Engineer")));
    ExpectEcho(client);
    EXPECT_EQ(RoleOfClient(), "viewer");

    applied.writers = "";
    server.Apply(applied);
    EXPECT_EQ(RoleOfClient(), "engineer");
    applied.isReadOnly = true;
    server.Apply(applied);
    EXPECT_EQ(RoleOfClient(), "viewer");
}

TEST_F(TcpTlsTest, DropsAClientThatLosesItsRole)
{
    TcpSettings settings = Settings(TcpSecurity::CLIENT_CERTIFICATES);
    settings.roles = "SCADA=viewer";
    Start(settings);
    TlsClient client(server.Port(), ContextOf(plant.Client("SCADA")));
    ExpectEcho(client);

    settings.roles = "";
    server.Apply(settings);

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(counters.deniedClients, 1u);
}

TEST_F(TcpTlsTest, GivesAClientWithoutCertificatesTheRoleOfItsAddress)
{
    TcpSettings settings = Settings(TcpSecurity::SERVER_CERTIFICATE);
    settings.writers = "127.0.0.2";
    Start(settings);
    {
        TlsClient client(server.Port(), ContextOf(plant.Client("Engineer"))); // it is not asked for a certificate
        ExpectEcho(client);
        EXPECT_EQ(RoleOfClient(), "viewer");
    }
    EXPECT_TRUE(calls.WaitFor("0"));
    TlsClient writer(server.Port(), ContextOf(plant.Anonymous()), 0, "127.0.0.2");
    ExpectEcho(writer);
    EXPECT_EQ(RoleOfClient(), "operator");
}

TEST_F(TcpTlsTest, ClosesTlsClientsOutsideTheAllowedNetworks)
{
    TcpSettings settings = Settings(TcpSecurity::CLIENT_CERTIFICATES);
    settings.allowedClients = "127.0.0.2";
    Start(settings);

    EXPECT_THROW(TlsClient(server.Port(), ContextOf(plant.Client("Engineer"))), std::runtime_error);

    EXPECT_EQ(counters.deniedClients, 1u);
    EXPECT_EQ(counters.failedHandshakes, 0u);
}

enum class Shown
{
    NOTHING,
    SELF_MADE,
    OF_ANOTHER_AUTHORITY,
    ENDED,
    OF_A_SERVER
};

struct RefusedCertificate
{
    char const* name;
    Shown shown;
    char const* reason;
};

class TcpTlsCertificates : public TcpTlsTest, public testing::WithParamInterface<RefusedCertificate>
{
protected:
    void Write() const
    {
        CertificateWish wish = Wish("plc-7", CertificateWish::Purpose::CLIENT);
        wish.textExtensions.emplace_back(ROLE_EXTENSION, "Administrator");
        TestCertificate const stranger(Wish("stranger", CertificateWish::Purpose::AUTHORITY));
        TestCertificate const* signer = &plant.authority;
        switch (GetParam().shown)
        {
        case Shown::SELF_MADE:
            signer = nullptr;
            break;
        case Shown::OF_ANOTHER_AUTHORITY:
            signer = &stranger;
            break;
        case Shown::ENDED:
            wish.untilUtcSeconds = YEAR_2024;
            break;
        default:
            wish.purpose = CertificateWish::Purpose::SERVER;
            break;
        }
        TestCertificate(wish, signer).Write(plant.folder.path, "client");
    }

    /// Makes the client show a certificate that its own side would not use.
    void Show(ssl_ctx_st* client) const
    {
        Write();
        SSL_CTX_use_certificate_file(client, (plant.folder / "client.pem").c_str(), SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(client, (plant.folder / "client.key").c_str(), SSL_FILETYPE_PEM);
    }
};

TEST_P(TcpTlsCertificates, AreRefusedWithAReason)
{
    ZuTest::LogRecorder const log;
    Start(Settings(TcpSecurity::CLIENT_CERTIFICATES));

    auto const context = ContextOf(plant.Anonymous());
    if (GetParam().shown != Shown::NOTHING)
    {
        Show(context.Native());
    }

    // With TLS 1.3 the client sees the refusal at its first read.
    EXPECT_THROW(
        {
            TlsClient client(server.Port(), context);
            client.Receive(1);
        },
        std::runtime_error);

    EXPECT_TRUE(WaitForFailedHandshake());
    EXPECT_EQ(log.CountOfText(std::string("The test closes a connection of 127.0.0.1: the TLS handshake failed: ") +
                              GetParam().reason + " (1 since the last such line)"),
              1u)
        << testing::PrintToString(log.Lines());
}

INSTANTIATE_TEST_SUITE_P(
    Table, TcpTlsCertificates,
    testing::Values(
        RefusedCertificate{"None", Shown::NOTHING, "the peer shows no certificate"},
        RefusedCertificate{"SelfMade", Shown::SELF_MADE,
                           "the certificate of CN=plc-7 is signed by itself and not by an accepted authority"},
        RefusedCertificate{"OfAnotherAuthority", Shown::OF_ANOTHER_AUTHORITY,
                           "the certificate of CN=plc-7 is signed by CN=stranger, which is not an accepted authority"},
        RefusedCertificate{"Ended", Shown::ENDED, "the certificate of CN=plc-7 ended on 2024-01-01"},
        RefusedCertificate{"OfAServer", Shown::OF_A_SERVER,
                           "the certificate of CN=plc-7 is not made for this purpose"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(TcpTlsTest, ReadsItsCertificateAgainWithoutDroppingClients)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    auto const context = ContextOf(plant.Anonymous());
    TlsClient first(server.Port(), context);
    EXPECT_EQ(first.ServerSubject(), "CN=sensor");
    TestCertificate(Wish("renewed", CertificateWish::Purpose::SERVER), &plant.authority)
        .Write(plant.folder.path, "server");

    server.Apply(applied);

    ExpectEcho(first);
    TlsClient second(server.Port(), context);
    EXPECT_EQ(second.ServerSubject(), "CN=renewed");
}

TEST_F(TcpTlsTest, ReadsTheCertificateOfItsPresentSettingsAgain)
{
    EXPECT_FALSE(server.ReadCertificatesAgain()) << "it does not run";
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    auto const context = ContextOf(plant.Anonymous());
    TlsClient first(server.Port(), context);
    ExpectEcho(first);
    std::ofstream(plant.folder / "server.pem") << "nothing";

    EXPECT_THROW(server.ReadCertificatesAgain(), Zu::Exception);
    TlsClient second(server.Port(), context);
    EXPECT_EQ(second.ServerSubject(), "CN=sensor") << "the old one stays in force";

    TestCertificate(Wish("renewed", CertificateWish::Purpose::SERVER), &plant.authority)
        .Write(plant.folder.path, "server");
    EXPECT_TRUE(server.ReadCertificatesAgain());
    TlsClient third(server.Port(), context);
    EXPECT_EQ(third.ServerSubject(), "CN=renewed");
    ExpectEcho(first);
    ExpectEcho(second);
}

TEST_F(TcpTlsTest, GoesOnWithItsCertificateWhenANewOneIsRefused)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    auto const context = ContextOf(plant.Anonymous());
    TlsClient first(server.Port(), context);
    TcpSettings settings = applied;
    settings.certificateFile = "nowhere.pem";
    settings.address = "127.0.0.2";

    EXPECT_EQ(
        ZuTest::RefusalOf([&] { server.Apply(settings); }),
        (ZuTest::Refusal{-997, "The test cannot use TLS: the certificate nowhere.pem cannot be read: No such file or "
                               "directory"}));

    ExpectEcho(first);
    TlsClient second(server.Port(), context);
    EXPECT_EQ(second.ServerSubject(), "CN=sensor");
}

TEST_F(TcpTlsTest, RefusesARevokedClientAndClosesItsConnections)
{
    ZuTest::LogRecorder const log;
    CertificateWish wish = Wish("plc-7", CertificateWish::Purpose::CLIENT);
    wish.textExtensions.emplace_back(ROLE_EXTENSION, "Operator");
    TestCertificate const revoked(wish, &plant.authority);
    auto const context = ContextOf(plant.Shows(revoked));
    Start(Settings(TcpSecurity::CLIENT_CERTIFICATES));
    TlsClient before(server.Port(), context);
    ExpectEcho(before);
    ZuTest::WriteBytes(plant.folder / "revoked.pem", RevocationList(plant.authority, {&revoked}, YEAR_2024, 0));
    TcpSettings settings = applied;
    settings.revocationFile = plant.folder / "revoked.pem";

    server.Apply(settings);

    EXPECT_TRUE(before.IsClosedByServer());
    EXPECT_THROW(
        {
            TlsClient after(server.Port(), context);
            after.Receive(1);
        },
        std::runtime_error);
    EXPECT_TRUE(WaitForFailedHandshake());
    TlsClient other(server.Port(), ContextOf(plant.Client("Viewer")));
    ExpectEcho(other);
    settings.revocationFile = plant.folder / "none.pem";
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Apply(settings); }).text,
              "The test cannot use TLS: the list of revoked certificates " + settings.revocationFile +
                  " cannot be read: No such file or directory");
}

TEST_F(TcpTlsTest, DropsClientsThatHaveNotShownWhatIsAskedNow)
{
    Start(Settings(TcpSecurity::SERVER_CERTIFICATE));
    TlsClient anonymous(server.Port(), ContextOf(plant.Anonymous()));
    ExpectEcho(anonymous);

    server.Apply(Settings(TcpSecurity::CLIENT_CERTIFICATES));

    EXPECT_TRUE(anonymous.IsClosedByServer());
    TlsClient certified(server.Port(), ContextOf(plant.Client("Viewer")));
    ExpectEcho(certified);
    EXPECT_EQ(counters.deniedClients, 1u);
}

TEST_F(TcpTlsTest, DropsPlainClientsWhenTlsBegins)
{
    TcpSettings settings = Settings(TcpSecurity::OFF);
    Start(settings);
    TcpClient plain(server.Port());
    plain.SendText("?");
    EXPECT_EQ(plain.Receive(1), TcpClient::Bytes{'?'});

    server.Apply(Settings(TcpSecurity::SERVER_CERTIFICATE));

    EXPECT_TRUE(plain.IsClosedByServer());
}

TEST_F(TcpTlsTest, StartsOnlyWithACertificateThatCanBeUsed)
{
    TcpSettings settings = Settings(TcpSecurity::SERVER_CERTIFICATE);
    settings.certificateFile = "";
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(settings); }),
              (ZuTest::Refusal{-997, "The test cannot use TLS: a certificate and its key are needed, each in a file"}));
    settings = Settings(TcpSecurity::CLIENT_CERTIFICATES);
    settings.authorityFile = "";
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(settings); }).status, -997);
    settings = Settings(static_cast<TcpSecurity>(7));
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(settings); }),
              (ZuTest::Refusal{-997, "security: 7 is none of 0 (off), 1 (server certificate) and 2 (client "
                                     "certificates)"}));
    EXPECT_FALSE(server.IsRunning());
}

TEST_F(TcpTlsTest, IsOpenToANetworkUnlessClientsShowCertificates)
{
    TcpSettings settings = Settings(TcpSecurity::SERVER_CERTIFICATE);
    settings.address = "0.0.0.0";
    server.Start(settings);
    EXPECT_TRUE(server.IsOpenToNetwork());

    settings.security = TcpSecurity::CLIENT_CERTIFICATES;
    server.Apply(settings);

    EXPECT_FALSE(server.IsOpenToNetwork());
}

} // namespace PluginCommon
