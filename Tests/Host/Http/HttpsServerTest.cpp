#include "Host/Http/HttpServer.h"
#include "Host/Http/TestConnection.h"
#include "Support/Certificates.h"
#include "Support/FakeGatekeeper.h"
#include "Support/FakeResource.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuTls/Context.h"

#include <gmock/gmock.h>
#include <openssl/ssl.h>

#include <list>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuTest::CertificateWish;
using ZuTest::FakeResource;
using ZuTest::TestCertificate;
using ZuTest::TestConnection;

constexpr char const* GET_THING = "GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n";

class HttpsServerTest : public testing::Test
{
protected:
    HttpsServerTest()
    {
        router.Register("/thing", thing);
        thing.Show(Json{{"a", 1}});
        settings.port = 0;
        settings.httpsAddress = "127.0.0.1";
        settings.tls = Certificate("first");
    }

    ~HttpsServerTest() override
    {
        server.Stop();
        router.Deregister("/", true);
    }

    std::shared_ptr<ZuTls::Context> Certificate(std::string const& name) const
    {
        CertificateWish wish;
        wish.commonName = name;
        TestCertificate(wish).Write(folder.path, name);
        ZuTls::Settings files;
        files.certificateFile = folder / (name + ".pem");
        files.keyFile = folder / (name + ".key");
        return std::make_shared<ZuTls::Context>(ZuTls::Side::SERVER, files);
    }

    void Start()
    {
        server.Listen(settings);
        server.Start();
    }

    TestConnection& Connect()
    {
        return connections.emplace_back(server.EncryptedPort(), "127.0.0.1", client.Native());
    }

    TestConnection& ConnectTcp()
    {
        return connections.emplace_back(server.EncryptedPort());
    }

    static std::string SubjectOf(TestConnection const& connection)
    {
        auto const peer = ZuTls::Certificate::OfPeer(*connection.Tls());
        return peer.has_value() ? peer->subject : "none";
    }

    ZuTest::ScratchFolder const folder;
    FakeResource thing;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    HttpServer::Settings settings;
    ZuTest::FakeGatekeeper gatekeeper;
    HttpServer server{processor, gatekeeper};
    ZuTls::Context const client{ZuTls::Side::CLIENT, {}};
    std::list<TestConnection> connections;
};

} // namespace

TEST_F(HttpsServerTest, AnswersOneRequestAfterTheOther)
{
    Start();
    TestConnection& connection = Connect();

    ASSERT_TRUE(connection.HasTls());
    EXPECT_EQ(connection.Send("GET", "/thing")->status, 200U);
    EXPECT_EQ(connection.Send("GET", "/nowhere")->status, 404U);
    EXPECT_EQ(server.EncryptedEndpoint(), "127.0.0.1:" + std::to_string(server.EncryptedPort()));
}

TEST_F(HttpsServerTest, OffersHttpBesideHttps)
{
    Start();

    EXPECT_EQ(TestConnection(server.Port()).Send("GET", "/thing")->status, 200U);
    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);
    EXPECT_NE(server.Port(), server.EncryptedPort());
}

TEST_F(HttpsServerTest, HasNoEncryptedPortWithoutAddress)
{
    settings.httpsAddress.clear();
    Start();

    EXPECT_EQ(server.EncryptedPort(), 0U);
    EXPECT_EQ(server.EncryptedEndpoint(), "");
    server.SetTls(settings.tls); // has no effect
    EXPECT_EQ(TestConnection(server.Port()).Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpsServerTest, TakesLargeBodiesAndAnswers)
{
    thing.invoke = [](ZuRest::RequestInfo const&, Json const& body) { return body; };
    Start();
    std::string const large = Json{{"text", std::string(1'000'000, 'x')}}.dump();

    auto const answer = Connect().Send("POST", "/thing", large);

    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->body, large);
}

TEST_F(HttpsServerTest, EndsTlsBehindTheLastAnswer)
{
    Start();
    TestConnection& connection = Connect();

    EXPECT_EQ(connection.Send("GET", "/thing", "", "Connection: close\r\n")->status, 200U);
    EXPECT_TRUE(connection.IsClosed());
    EXPECT_TRUE(connection.HasTlsEnded());
}

TEST_F(HttpsServerTest, AClientThatSendsOnReadsTheRefusalOfItsBody)
{
    Start();
    TestConnection& connection = Connect();

    connection.Write("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3000000\r\n\r\n");
    for (int i = 0; i < 30; ++i)
    {
        connection.Write(std::string(100'000, 'x'));
    }

    auto const answer = connection.ReadAnswer();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, 413U);
    EXPECT_TRUE(connection.IsClosed());
    EXPECT_TRUE(connection.HasTlsEnded());
}

TEST_F(HttpsServerTest, ARequestThatIsLateIsToldSo)
{
    settings.requestTimeoutUsec = 300'000;
    Start();
    TestConnection& connection = Connect();

    connection.Write("GET /thing HT");

    EXPECT_EQ(connection.ReadAnswer()->status, 408U);
    connection.Write("TP/1.1\r\n"); // is read past, so that it does not break the connection
    EXPECT_TRUE(connection.IsClosed());
    EXPECT_TRUE(connection.HasTlsEnded());
}

TEST_F(HttpsServerTest, StreamsEvents)
{
    thing.isStreamable = true;
    Start();
    TestConnection& connection = Connect();
    connection.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\nAccept: text/event-stream\r\n\r\n");
    EXPECT_THAT(connection.ReadUntil("\r\n\r\n"), testing::HasSubstr("text/event-stream"));

    thing.receivers.at(0)->Receive(Json{{"b", 2}});

    EXPECT_THAT(connection.ReadUntil("\n\n"), testing::HasSubstr(R"({"b":2})"));
}

TEST_F(HttpsServerTest, TellsAClientOfHttpThatThePortTakesHttps)
{
    ZuTest::LogRecorder const recorder;
    Start();
    TestConnection& connection = ConnectTcp();

    connection.Write(GET_THING);

    auto const answer = connection.ReadAnswer();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, 400U);
    EXPECT_EQ(Json::parse(answer->body).at("detail"),
              "This port takes HTTPS only: send the request to an address that begins with https://.");
    EXPECT_TRUE(connection.IsClosed());
    EXPECT_EQ(recorder.CountOfText("1 TLS handshakes with REST clients have failed, the last one with 127.0.0.1: the "
                                   "peer sends plain HTTP to a TLS port"),
              1U);
}

TEST_F(HttpsServerTest, ClosesConnectionsThatDoNotSpeakTls)
{
    Start();
    for (std::string const& bytes :
         {std::string("SSH-2.0-x\r\n\r\n"), std::string(1000, '\0'), std::string(100'000, '\xff')})
    {
        TestConnection& connection = ConnectTcp();
        connection.Write(bytes);
        connection.EndWriting();
        connection.ReadUntil("no such text");
        EXPECT_TRUE(connection.IsClosed());
    }
    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpsServerTest, ClosesAHandshakeThatIsLateOrBroken)
{
    settings.requestTimeoutUsec = 300'000;
    Start();
    std::string const halfHello("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11);

    TestConnection& silent = ConnectTcp();
    TestConnection& slow = ConnectTcp();
    slow.Write(halfHello);
    TestConnection& broken = ConnectTcp();
    broken.Write(halfHello);
    broken.EndWriting();

    EXPECT_TRUE(broken.IsClosed());
    EXPECT_TRUE(silent.IsClosed());
    EXPECT_TRUE(slow.IsClosed());
}

TEST_F(HttpsServerTest, HandshakesCountAsConnectionsAndMakeRoom)
{
    settings.maxConnections = 2;
    Start();
    TestConnection& first = ConnectTcp();
    TestConnection& second = ConnectTcp();

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U) << "the longest idle connection makes room";
    EXPECT_TRUE(first.IsClosed());
    EXPECT_EQ(TestConnection(server.Port()).Send("GET", "/thing")->status, 200U);
    EXPECT_TRUE(second.IsClosed()) << "HTTP and HTTPS share the limit";
}

TEST_F(HttpsServerTest, AConnectionBeyondTheLimitReadsItsRefusal)
{
    settings.maxConnections = 1;
    ZuTest::Latch entered;
    ZuTest::Latch finish;
    thing.document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        entered.Open();
        finish.Wait();
        return Json::object();
    };
    Start();
    TestConnection& busy = Connect();
    busy.Write(GET_THING);
    ASSERT_TRUE(entered.Wait());

    auto const refusal = Connect().ReadAnswer();
    finish.Open();

    ASSERT_TRUE(refusal.has_value());
    EXPECT_EQ(refusal->status, 503U);
    EXPECT_EQ(busy.ReadAnswer()->status, 200U);
}

TEST_F(HttpsServerTest, NewConnectionsGetTheNewCertificateAndOldOnesStay)
{
    Start();
    TestConnection& old = Connect();
    EXPECT_EQ(SubjectOf(old), "CN=first");

    server.SetTls(Certificate("second"));

    EXPECT_EQ(SubjectOf(Connect()), "CN=second");
    EXPECT_EQ(old.Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpsServerTest, TakesRequestsOfItsOwnPagesOnly)
{
    thing.invoke = [](ZuRest::RequestInfo const&, Json const&) { return Json(); };
    Start();

    EXPECT_EQ(Connect().Send("POST", "/thing", "", "Origin: https://localhost\r\n")->status, 204U);
    EXPECT_EQ(Connect().Send("POST", "/thing", "", "Origin: http://localhost\r\n")->status, 403U);
}

TEST_F(HttpsServerTest, AnswersToAnyNameBeyondThisMachineAndToLocalNamesOverHttp)
{
    settings.httpsAddress = "0.0.0.0";
    gatekeeper.token.Set("0123456789abcdef");
    Start();
    std::string const request =
        "GET /thing HTTP/1.1\r\nHost: scanner-7.plant\r\nAuthorization: Bearer 0123456789abcdef\r\n\r\n";
    TestConnection& encrypted = Connect();
    TestConnection plain(server.Port());

    encrypted.Write(request);
    plain.Write(request);

    EXPECT_EQ(encrypted.ReadAnswer()->status, 200U);
    EXPECT_EQ(plain.ReadAnswer()->status, 403U);
}

TEST_F(HttpsServerTest, TellsWhichAddressItCannotTake)
{
    Start();
    HttpServer other(processor, gatekeeper);
    HttpServer::Settings taken = settings;
    taken.httpsPort = server.EncryptedPort();

    EXPECT_EQ(ZuTest::RefusalOf([&] { other.Listen(taken); }),
              (ZuTest::Refusal{Zu::Status::BUSY, "The REST service cannot listen on 127.0.0.1:" +
                                                     std::to_string(taken.httpsPort) + ": Address already in use"}));
    EXPECT_EQ(other.Endpoint(), "");
}

} // namespace ZuHost
