#include "Host/Http/HttpServer.h"

#include "Host/Http/TestConnection.h"
#include "Host/Http/WrongTokens.h"
#include "Support/AdvancedCalendar.h"
#include "Support/DescriptorLimit.h"
#include "Support/FakeGatekeeper.h"
#include "Support/FakeResource.h"
#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "ZuRest/Answer.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IBodySink.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/IPromptResource.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <map>
#include <regex>
#include <thread>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuTest::FakeResource;
using ZuTest::Latch;
using ZuTest::TestConnection;

constexpr char const* GET_THING = "GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n";
constexpr char const* GET_SLOW = "GET /slow HTTP/1.1\r\nHost: localhost\r\n\r\n";

/// A resource with a document that can be read without waiting, on an I/O thread.
class Prompt final : public ZuRest::DocumentResourceBase, public ZuRest::IPromptResource
{
public:
    Json Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/) override
    {
        return {{"prompt", true}};
    }
};

/// A resource whose body comes in parts.
class Feed final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    std::vector<std::string> ContentMethods() const override
    {
        return {"GET"};
    }

    ZuRest::Answer AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& /*info*/) override
    {
        ZuRest::Answer answer{200, "application/octet-stream", "", {}};
        answer.openBody = [this](std::shared_ptr<ZuRest::IBodySink> const& opened) {
            sink = opened;
            isOpen.Open();
        };
        return answer;
    }

    std::shared_ptr<ZuRest::IBodySink> sink;
    Latch isOpen;
};

} // namespace

class HttpServerTest : public testing::Test
{
protected:
    HttpServerTest()
    {
        settings.port = 0;
        Place("/thing").Show(Json{{"a", 1}});
    }

    ~HttpServerTest() override
    {
        server.Stop();
        router.Deregister("/", true);
    }

    FakeResource& Place(std::string const& route)
    {
        router.Register(route, resources[route]);
        return resources[route];
    }

    void Start()
    {
        server.Listen(settings);
        server.Start();
    }

    TestConnection& Connect(char const* source = "127.0.0.1")
    {
        return connections.emplace_back(server.Port(), source);
    }

    /// The status of the answer to these bytes; 0 if the connection closes without an answer.
    uint32 StatusOf(std::string const& bytes)
    {
        TestConnection client(server.Port());
        client.Write(bytes);
        auto const answer = client.ReadAnswer();
        return answer.has_value() ? answer->status : 0;
    }

    std::map<std::string, FakeResource> resources;
    Feed feed;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    HttpServer::Settings settings;
    ZuTest::FakeGatekeeper gatekeeper;
    HttpServer server{processor, gatekeeper};
    std::list<TestConnection> connections;
};

TEST_F(HttpServerTest, AnswersOneRequestAfterTheOther)
{
    Start();
    TestConnection& client = Connect();

    auto const first = client.Send("GET", "/thing?x=1");
    auto const second = client.Send("GET", "/nowhere");
    auto const third = client.Send("GET", "http://127.0.0.1/thing");

    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(first->status, 200U);
    EXPECT_TRUE(first->Has("Content-Type: application/hal+json")) << first->head;
    EXPECT_EQ(Json::parse(first->body).at("a"), 1);
    EXPECT_EQ(second->status, 404U);
    EXPECT_TRUE(second->Has("Content-Type: application/problem+json"));
    EXPECT_EQ(third->body, first->body);
}

TEST_F(HttpServerTest, AnswersWhatCameTogether)
{
    Start();
    TestConnection& client = Connect();

    client.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\nGET /nowhere HTTP/1.1\r\nHost: localhost\r\n\r\nGET "
                 "/thing HTTP/1.0\r\n\r\n");

    EXPECT_EQ(client.ReadAnswer()->status, 200U);
    EXPECT_EQ(client.ReadAnswer()->status, 404U);
    EXPECT_EQ(client.ReadAnswer()->status, 200U);
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(HttpServerTest, GivesBodiesToTheResources)
{
    FakeResource& thing = resources["/thing"];
    thing.invoke = [](ZuRest::RequestInfo const&, Json const& body) { return body.empty() ? Json() : body; };
    Start();
    TestConnection& client = Connect();

    EXPECT_EQ(client.Send("POST", "/thing", R"({"b":[2]})")->body, R"({"b":[2]})");
    auto const silent = client.Send("POST", "/thing");
    EXPECT_EQ(silent->status, 204U);
    EXPECT_EQ(silent->head.find("Content-Length"), std::string::npos);
    client.Write("POST /thing HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: "
                 "chunked\r\n\r\n3\r\n[1,\r\n2\r\n2]\r\n0\r\n\r\n");
    EXPECT_EQ(client.ReadAnswer()->body, "[1,2]");
    client.Write("POST /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(client.ReadAnswer()->status, 100U);
    client.Write("[7]");
    EXPECT_EQ(client.ReadAnswer()->body, "[7]");
}

TEST_F(HttpServerTest, SendsNoBodyToHead)
{
    Start();
    TestConnection& client = Connect();
    std::string const body = client.Send("GET", "/thing")->body;

    auto const head = client.Send("HEAD", "/thing");

    EXPECT_TRUE(head->Has("Content-Length: " + std::to_string(body.size()))) << head->head;
    EXPECT_EQ(client.Send("GET", "/thing")->body, body) << "bytes behind the head";
}

TEST_F(HttpServerTest, KnowsThePreconditions)
{
    Start();
    TestConnection& client = Connect();
    std::string const head = client.Send("GET", "/thing")->head;
    std::size_t const at = head.find("ETag: ") + 6;
    std::string const tag = head.substr(at, head.find("\r\n", at) - at);

    EXPECT_EQ(client.Send("GET", "/thing", "", "If-None-Match: " + tag + "\r\n")->status, 304U);
    EXPECT_EQ(client.Send("PUT", "/thing", "{}", "If-Match: \"other\"\r\n")->status, 412U);
    auto const fixed = client.Send("PUT", "/thing", "{}", "If-Match: " + tag + "\r\n");
    EXPECT_EQ(fixed->status, 405U);
    EXPECT_TRUE(fixed->Has("Allow: GET, HEAD, OPTIONS"));
}

TEST_F(HttpServerTest, RefusesWhatIsTooLargeOrNoHttp)
{
    Start();

    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048577\r\n\r\n"), 413U);
    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n100001\r\n" +
                       std::string(0x100001, ' ') + "\r\n0\r\n\r\n"),
              413U);
    EXPECT_EQ(StatusOf("GET /thing HTTP/1.1\r\nHost: localhost\r\nX: " + std::string(20'000, 'x') + "\r\n\r\n"), 431U);
    EXPECT_EQ(StatusOf("GET /" + std::string(20'000, 'x') + " HTTP/1.1\r\nHost: localhost\r\n\r\n"), 431U);
    EXPECT_EQ(StatusOf("\x16\x03\x01 hello\r\n\r\n"), 400U);
    EXPECT_EQ(StatusOf("GET /thing HTTP/3.0\r\n\r\n"), 505U);
    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: -1\r\n\r\n"), 400U);
    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"), 400U);
    EXPECT_EQ(StatusOf("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n"), 200U) << "and goes on";
}

TEST_F(HttpServerTest, RefusesWhatTwoReadersWouldCutApartInTwoWays)
{
    Start();

    EXPECT_EQ(
        StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n"
                 "0\r\n\r\n"),
        400U);
    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\nContent-Length: 3\r\n\r\n{}"),
              400U);
    EXPECT_EQ(StatusOf("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2 3\r\n\r\n{}"), 400U);
    EXPECT_EQ(StatusOf("GET /thing HTTP/1.1\r\nHost: localhost\r\nHost : localhost\r\n\r\n"), 400U);
}

TEST_F(HttpServerTest, ReadsNoSecondRequestBehindARefusedFraming)
{
    Start();
    for (auto const& [coding, status] :
         {std::pair("gzip", 501U), std::pair("chunked, chunked", 400U), std::pair("\"chunked\"", 400U)})
    {
        TestConnection& client = Connect();
        client.Write(std::string("PUT /thing HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: ") + coding +
                     "\r\n\r\n" + GET_THING);

        auto const refused = client.ReadAnswer();

        EXPECT_EQ(refused->status, status) << coding;
        EXPECT_TRUE(refused->Has("Connection: close"));
        EXPECT_TRUE(client.IsClosed());
    }
}

TEST_F(HttpServerTest, StaysIdleOverAnEmptyLineBehindARequest)
{
    settings.requestTimeoutUsec = 1'000'000; // of a request that has begun
    settings.idleTimeoutUsec = 200'000;
    Start();
    TestConnection& client = Connect();
    client.Write(std::string(GET_THING) + "\r\n");

    EXPECT_EQ(client.ReadAnswer()->status, 200U);
    EXPECT_TRUE(client.IsClosed()) << "and not a 408";
}

TEST_F(HttpServerTest, TellsTheDate)
{
    Start();

    std::string const head = Connect().Send("GET", "/thing")->head;

    EXPECT_TRUE(std::regex_search(
        head, std::regex(
                  "\r\nDate: (Mon|Tue|Wed|Thu|Fri|Sat|Sun), \\d\\d [A-Z][a-z]{2} \\d{4} \\d\\d:\\d\\d:\\d\\d GMT\r\n")))
        << head;
}

TEST_F(HttpServerTest, TellsTheMethodsOfAResourceAndOfTheService)
{
    Start();
    TestConnection& client = Connect();

    auto const options = client.Send("OPTIONS", "/thing");
    EXPECT_EQ(options->status, 204U);
    EXPECT_TRUE(options->Has("Allow: GET, HEAD, OPTIONS")) << options->head;
    auto const all = client.Send("OPTIONS", "*");
    EXPECT_EQ(all->status, 204U);
    EXPECT_TRUE(all->Has("Allow: GET, HEAD, PUT, PATCH, POST, DELETE, OPTIONS")) << all->head;
    for (char const* const method : {"DELETE", "POST", "TRACE", "BREW", "get"})
    {
        auto const refused = client.Send(method, "/thing");
        EXPECT_EQ(refused->status, 405U) << method;
        EXPECT_TRUE(refused->Has("Allow: GET, HEAD, OPTIONS")) << refused->head;
    }
}

TEST_F(HttpServerTest, UpdatesOnlyTheStateThatTheClientHasSeen)
{
    FakeResource& thing = resources["/thing"];
    int state = 1;
    thing.document = [&state](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) { return Json{{"a", state}}; };
    thing.update = [&state](ZuRest::RequestInfo const&, Json const& body) { state = body.at("a").get<int>(); };
    Start();
    TestConnection& client = Connect();
    auto const tagOf = [](auto const& answer) {
        std::size_t const at = answer->head.find("ETag: ") + 6;
        return answer->head.substr(at, answer->head.find("\r\n", at) - at);
    };
    std::string const before = tagOf(client.Send("GET", "/thing"));

    auto const first = client.Send("PUT", "/thing", R"({"a":2})", "If-Match: " + before + "\r\n");
    auto const second = client.Send("PUT", "/thing", R"({"a":3})", "If-Match: " + before + "\r\n");
    auto const third = client.Send("PATCH", "/thing", R"({"a":4})", "If-Match: " + tagOf(first) + "\r\n");

    EXPECT_EQ(first->status, 200U);
    EXPECT_EQ(second->status, 412U);
    EXPECT_TRUE(second->Has("Content-Type: application/problem+json"));
    EXPECT_EQ(third->status, 200U);
    EXPECT_EQ(state, 4);
    EXPECT_EQ(tagOf(client.Send("GET", "/thing")), tagOf(third));
}

TEST_F(HttpServerTest, AnswersToNoOtherNameWhileItIsLocal)
{
    Start();
    auto const statusOf = [this](std::string const& line, std::string const& target) {
        return StatusOf("GET " + target + " HTTP/1.1\r\n" + line + "\r\n");
    };

    EXPECT_EQ(statusOf("Host: localhost:8080\r\n", "/thing"), 200U);
    EXPECT_EQ(statusOf("Host: [::1]\r\n", "/thing"), 200U);
    EXPECT_EQ(statusOf("Host: evil.example\r\n", "/thing"), 403U);
    EXPECT_EQ(statusOf("Host: evil.example\r\n", "http://localhost/thing"), 200U) << "the target has the say";
    EXPECT_EQ(statusOf("Host: localhost\r\n", "http://evil.example/thing"), 403U);
    EXPECT_EQ(statusOf("Host:\r\n", "/thing"), 403U);
    EXPECT_EQ(statusOf("", "/thing"), 400U);
    EXPECT_EQ(statusOf("Host: localhost\r\nHost: localhost\r\n", "/thing"), 400U);
    EXPECT_EQ(StatusOf("GET /thing HTTP/1.0\r\n\r\n"), 200U) << "no browser is that old";
    EXPECT_EQ(StatusOf("GET /thing HTTP/1.0\r\nHost: evil.example\r\n\r\n"), 403U);
}

TEST_F(HttpServerTest, TakesNothingFromPagesOfOthers)
{
    unsigned calls = 0;
    resources["/thing"].invoke = [&calls](ZuRest::RequestInfo const&, Json const&) {
        ++calls;
        return Json();
    };
    Start();

    for (char const* const origin : {"null", "http://evil.example", "http://localhost:3000", "https://localhost"})
    {
        auto const refused = Connect().Send("POST", "/thing", "", std::string("Origin: ") + origin + "\r\n");
        EXPECT_EQ(refused->status, 403U) << origin;
        EXPECT_EQ(refused->body,
                  std::string(R"({"code":-982,"detail":"This service takes no requests from pages of ')") + origin +
                      R"('.","status":403,"title":"Forbidden"})");
    }
    EXPECT_EQ(calls, 0U);
    EXPECT_EQ(Connect().Send("POST", "/thing", "", "Origin: http://localhost\r\n")->status, 204U);
    EXPECT_EQ(calls, 1U);
}

TEST_F(HttpServerTest, AsksForAnyNameWhenOthersReachIt)
{
    settings.address = "0.0.0.0";
    settings.isInsecure = true;
    gatekeeper.token.Set("0123456789abcdef");
    Start();
    std::string const token = "Authorization: Bearer 0123456789abcdef\r\n";

    EXPECT_EQ(StatusOf("GET /thing HTTP/1.1\r\nHost: scanner-7.plant\r\n" + token + "\r\n"), 200U);
    EXPECT_EQ(
        StatusOf("GET /thing HTTP/1.1\r\nHost: scanner-7.plant\r\nOrigin: http://evil.example\r\n" + token + "\r\n"),
        403U);
}

TEST_F(HttpServerTest, TakesNoAnswerForHalfARequest)
{
    Start();
    TestConnection& silent = Connect();
    silent.EndWriting();
    TestConnection& half = Connect();
    half.Write("GET /thing HTTP/1.1\r\nHos");
    half.EndWriting();
    TestConnection& whole = Connect();
    whole.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n");
    whole.EndWriting();

    EXPECT_TRUE(silent.IsClosed());
    EXPECT_EQ(half.ReadAnswer()->status, 400U);
    EXPECT_EQ(whole.ReadAnswer()->status, 200U);
    EXPECT_TRUE(whole.IsClosed());
}

TEST_F(HttpServerTest, DoesNotWaitForASlowClient)
{
    settings.requestTimeoutUsec = 200'000;
    settings.idleTimeoutUsec = 400'000;
    Start();
    TestConnection& slowHeader = Connect();
    slowHeader.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n");
    TestConnection& slowBody = Connect();
    slowBody.Write("PUT /thing HTTP/1.1\r\nHost: localhost\r\nContent-Length: 5\r\n\r\n{");
    TestConnection& idle = Connect();

    auto const header = slowHeader.ReadAnswer();
    auto const body = slowBody.ReadAnswer();

    ASSERT_TRUE(header && body);
    EXPECT_EQ(header->status, 408U);
    EXPECT_EQ(body->status, 408U);
    EXPECT_TRUE(header->Has("Connection: close")) << header->head;
    EXPECT_TRUE(idle.IsClosed());
}

TEST_F(HttpServerTest, DoesNotWaitForASlowResource)
{
    Latch finish;
    settings.answerTimeoutUsec = 200'000;
    resources["/thing"].document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        EXPECT_TRUE(finish.Wait());
        return Json();
    };
    Start();

    auto const answer = Connect().Send("GET", "/thing");
    finish.Open();
    server.Stop(); // before the latch is destroyed: the resource still uses it

    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, 503U);
    EXPECT_TRUE(answer->Has("Retry-After: 1"));
}

TEST_F(HttpServerTest, ClosesAConnectionThatSendsNoFirstRequest)
{
    settings.requestTimeoutUsec = 200'000;
    Start();
    TestConnection& silent = Connect();
    TestConnection& client = Connect();
    EXPECT_EQ(client.Send("GET", "/thing")->status, 200U);
    uint64 const beginUsec = wTime_NowUsec();

    EXPECT_TRUE(silent.IsClosed());

    EXPECT_LT(wTime_NowUsec() - beginUsec, 10'000'000U) << "before the time between two requests";
    EXPECT_EQ(client.Send("GET", "/thing")->status, 200U) << "the other one has that time";
}

TEST_F(HttpServerTest, GivesTheWholeFirstRequestOneDeadline)
{
    settings.requestTimeoutUsec = 2'000'000;
    settings.idleTimeoutUsec = 1'000'000;
    Start();
    uint64 const beginUsec = wTime_NowUsec();
    TestConnection& slow = Connect();
    slow.Write("PUT /thing");
    TestConnection& other = Connect();
    EXPECT_EQ(other.Send("GET", "/thing")->status, 200U);
    EXPECT_TRUE(other.IsClosed()) << "a second later";
    slow.Write(" HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n");

    EXPECT_EQ(slow.ReadAnswer()->status, 408U);

    EXPECT_LT(wTime_NowUsec() - beginUsec, 2'900'000U);
}

TEST_F(HttpServerTest, LetsTheLongestIdleConnectionMakeRoom)
{
    settings.maxConnections = 2;
    Start();
    TestConnection& first = Connect();
    TestConnection& second = Connect();

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);

    EXPECT_TRUE(first.IsClosed());
    EXPECT_EQ(second.Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpServerTest, LetsTheAddressWithTheMostIdleConnectionsMakeRoom)
{
    settings.maxConnections = 3;
    Start();
    TestConnection& lone = Connect("127.0.0.2");
    TestConnection& oneOfTwo = Connect("127.0.0.3");
    TestConnection& otherOfTwo = Connect("127.0.0.3");

    EXPECT_EQ(Connect("127.0.0.4").Send("GET", "/thing")->status, 200U);

    EXPECT_TRUE(oneOfTwo.IsClosed());
    EXPECT_EQ(otherOfTwo.Send("GET", "/thing")->status, 200U);
    EXPECT_EQ(lone.Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpServerTest, AnswersAClientThatConnectedWhileNoDescriptorWasFree)
{
    Start();
    TestConnection& present = Connect();
    ASSERT_TRUE(present.Send("GET", "/thing"));
    {
        ZuTest::DescriptorLimit const one(1); // for the client, and none for the server
        Connect().Write(GET_THING);
        EXPECT_TRUE(present.Send("GET", "/thing")); // behind the attempt to accept the other client
        EXPECT_TRUE(present.Send("GET", "/thing"));
    }
    auto const answer = connections.back().ReadAnswer();

    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200U);
    EXPECT_TRUE(present.Send("GET", "/thing"));
}

TEST_F(HttpServerTest, TellsOneConnectionTooManySoWhenNoneIsIdle)
{
    settings.maxConnections = 2;
    Place("/events").isStreamable = true;
    Latch started;
    Latch finish;
    Place("/slow").document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
        return Json{{"slow", true}};
    };
    Start();
    TestConnection& stream = Connect();
    stream.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(stream.ReadAnswer()->status, 200U);
    TestConnection& busy = Connect();
    busy.Write(GET_SLOW);
    EXPECT_TRUE(started.Wait());

    EXPECT_EQ(Connect().ReadAnswer()->status, 503U);
    finish.Open();

    EXPECT_EQ(Json::parse(busy.ReadAnswer()->body).at("slow"), true);
}

TEST_F(HttpServerTest, ServesOthersWhileReadsOfAllButOneWorkerAreHeldUp)
{
    constexpr unsigned READS = HttpServer::THREADS - 2; // one thread does the I/O, one worker stays free
    Latch finish;
    std::list<Latch> entered(READS);
    auto next = entered.begin();
    std::mutex nextLock;
    Place("/slow").document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        {
            std::scoped_lock const guard(nextLock);
            (next++)->Open();
        }
        EXPECT_TRUE(finish.Wait());
        return Json{{"slow", true}};
    };
    Start();
    for (Latch& one : entered)
    {
        Connect().Write("GET /slow HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_TRUE(one.Wait());
    }

    TestConnection& other = Connect();
    for (unsigned i = 0; i < 100; ++i)
    {
        EXPECT_EQ(other.Send("GET", "/thing")->status, 200U);
        EXPECT_EQ(other.Send("OPTIONS", "/thing")->status, 204U);
    }
    finish.Open();

    auto slow = connections.begin();
    for (unsigned i = 0; i < READS; ++i, ++slow)
    {
        EXPECT_EQ(Json::parse(slow->ReadAnswer()->body).at("slow"), true);
        EXPECT_EQ(slow->Send("GET", "/thing")->status, 200U) << "the connection goes on";
    }
}

TEST_F(HttpServerTest, ReadsWhatIsAtHandWhileReadsOfAllWorkersAreHeldUp)
{
    Prompt prompt;
    router.Register("/prompt", prompt);
    constexpr unsigned READS = HttpServer::THREADS - 1; // all threads except the I/O thread
    Latch finish;
    std::list<Latch> entered(READS);
    std::atomic<unsigned> reads = 0;
    Place("/slow").document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        if (unsigned const read = reads++; read < READS) // the change reads the document too, once it runs
        {
            std::next(entered.begin(), read)->Open();
            EXPECT_TRUE(finish.Wait());
        }
        return Json();
    };
    Start();
    for (Latch& one : entered)
    {
        Connect().Write(GET_SLOW);
        EXPECT_TRUE(one.Wait());
    }
    TestConnection& waiting = Connect();
    waiting.Write(GET_THING);
    TestConnection& waitingForItsTurn = Connect();
    waitingForItsTurn.Write("PUT /slow HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n{}");
    TestConnection& change = Connect();
    change.Write("PUT /prompt HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n{}");

    for (unsigned i = 0; i < 10; ++i)
    {
        EXPECT_EQ(Json::parse(Connect().Send("GET", "/prompt")->body).at("prompt"), true);
    }
    finish.Open();

    EXPECT_EQ(waiting.ReadAnswer()->status, 200U);
    EXPECT_EQ(waitingForItsTurn.ReadAnswer()->status, 405U);
    EXPECT_EQ(change.ReadAnswer()->status, 405U);
    server.Stop();
    router.Deregister("/prompt", false);
}

TEST_F(HttpServerTest, AnswersTheOthersInEachRoundWhileOneReadIsHeldUp)
{
    constexpr unsigned QUICK = 6;
    std::atomic<Latch*> finish = nullptr;
    Place("/slow").document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        EXPECT_TRUE(finish.load()->Wait());
        return Json();
    };
    Start();
    std::vector<TestConnection*> quick(QUICK);
    std::ranges::generate(quick, [this] { return &Connect(); });
    TestConnection& slow = Connect();
    auto const expectAnswer = [](TestConnection& client, unsigned round) {
        auto const answer = client.ReadAnswer();
        EXPECT_TRUE(answer.has_value() && answer->status == 200U) << "round " << round;
    };
    for (unsigned round = 0; round < 50 && !HasFailure(); ++round) // in most rounds some requests run together
    {
        Latch held;
        finish = &held;
        std::vector<TestConnection*> asking = quick;
        asking.insert(asking.begin() + round % (QUICK + 1), &slow);
        for (TestConnection* const client : asking)
        {
            client->Write(client == &slow ? GET_SLOW : GET_THING);
        }
        for (TestConnection* const client : quick)
        {
            expectAnswer(*client, round);
        }
        held.Open();
        expectAnswer(slow, round);
        if (HasFailure())
        {
            server.Stop(); // before the latch is destroyed: a resource may still use it
        }
    }
}

TEST_F(HttpServerTest, AnswersALongRowOfRequestsThatCameTogether)
{
    constexpr unsigned REQUESTS = 5000;
    Start();
    TestConnection& client = Connect();
    std::string together;
    for (unsigned i = 0; i < REQUESTS; ++i)
    {
        together += i % 2 == 0 ? "GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n"
                               : "GET /nowhere HTTP/1.1\r\nHost: localhost\r\n\r\n";
    }
    std::thread writer([&] { client.Write(together); }); // the socket buffers cannot hold all answers

    for (unsigned i = 0; i < REQUESTS; ++i)
    {
        auto const answer = client.ReadAnswer();
        ASSERT_TRUE(answer.has_value()) << i;
        EXPECT_EQ(answer->status, i % 2 == 0 ? 200U : 404U);
    }
    writer.join();
}

TEST_F(HttpServerTest, SendsAnAnswerThatIsLongerThanASocketHolds)
{
    std::string const text(8 * 1024 * 1024, 'x');
    resources["/thing"].Show(Json{{"text", text}});
    Start();
    TestConnection& client = Connect();
    client.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(Connect().Send("GET", "/nowhere")->status, 404U) << "the other one does not read yet";

    auto const answer = client.ReadAnswer();

    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(Json::parse(answer->body).at("text"), text);
    EXPECT_EQ(client.Send("GET", "/nowhere")->status, 404U);
}

TEST_F(HttpServerTest, ServesOthersWhileAProtocolIsBeingStarted)
{
    Latch started;
    Latch finish;
    FakeResource& protocol = Place("/controls/:protocol");
    protocol.Show(Json::object());
    protocol.update = [&](ZuRest::RequestInfo const&, Json const&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
    };
    Start();
    TestConnection& changer = Connect();
    changer.Write("PUT /controls/x HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n{}");
    EXPECT_TRUE(started.Wait());
    for (unsigned i = 0; i < 10; ++i) // more than there are workers
    {
        Connect().Write("GET /controls/x HTTP/1.1\r\nHost: localhost\r\n\r\n");
        Connect().Write("PUT /controls/y HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n{}");
    }

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);
    EXPECT_EQ(Connect().Send("GET", "/controls/y")->status, 200U);
    finish.Open();

    EXPECT_EQ(changer.ReadAnswer()->status, 200U);
    auto waiting = std::next(connections.begin());
    for (unsigned i = 0; i < 20; ++i, ++waiting)
    {
        EXPECT_EQ(waiting->ReadAnswer()->status, 200U);
    }
}

TEST_F(HttpServerTest, AsksTheGatekeeper)
{
    gatekeeper.token.Set("secret");
    Place("/health").Show(Json::object());
    Start();

    auto const refused = Connect().Send("GET", "/thing");
    EXPECT_EQ(refused->status, 401U);
    EXPECT_TRUE(refused->Has("WWW-Authenticate: Bearer"));
    EXPECT_EQ(Connect().Send("GET", "/thing", "", "Authorization: Bearer wrong\r\n")->status, 401U);
    EXPECT_EQ(Connect().Send("PUT", "/health", "{}")->status, 401U);
    EXPECT_EQ(Connect().Send("GET", "/health")->status, 200U);
    EXPECT_EQ(Connect().Send("GET", "/thing", "", "Authorization: Bearer secret\r\n")->status, 200U);
}

TEST_F(HttpServerTest, EndsTheStreamsOfCallersThatHaveEnded)
{
    FakeResource& events = Place("/events");
    events.isStreamable = true;
    Start();
    TestConnection& client = Connect();
    client.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    ASSERT_EQ(client.ReadAnswer()->status, 200U);

    gatekeeper.EndedSignal().Fire(); // for another caller
    events.receivers.at(0)->Receive(Json{{"type", 4}});
    EXPECT_EQ(client.ReadUntil("\n\n"), "id: 1\ndata: {\"type\":4}\n\n");
    gatekeeper.areCallersCurrent = false;
    gatekeeper.EndedSignal().Fire();

    EXPECT_TRUE(client.IsClosed());
}

TEST_F(HttpServerTest, WritesNothingToACallerThatHasEnded)
{
    FakeResource& events = Place("/events");
    events.isStreamable = true;
    Start();
    TestConnection& client = Connect();
    client.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    ASSERT_EQ(client.ReadAnswer()->status, 200U);

    gatekeeper.areCallersCurrent = false; // by its time: no signal tells
    events.receivers.at(0)->Receive(Json{{"type", 4}});

    EXPECT_TRUE(client.IsClosed());
}

TEST_F(HttpServerTest, SlowsWrongTokensDown)
{
    gatekeeper.token.Set("secret");
    Start();
    uint64 const beginUsec = wTime_NowUsec();
    for (uint64 i = 0; i <= WrongTokens::PROMPT_REFUSALS; ++i)
    {
        Connect().Write("GET /thing HTTP/1.1\r\nHost: localhost\r\nAuthorization: Bearer wrong\r\n\r\n");
    }
    for (TestConnection& client : connections)
    {
        EXPECT_EQ(client.ReadAnswer()->status, 401U);
    }

    EXPECT_GE(wTime_NowUsec() - beginUsec, WrongTokens::PERIOD_USEC);
    EXPECT_EQ(server.WrongTokenCount(), WrongTokens::PROMPT_REFUSALS + 1);
}

TEST_F(HttpServerTest, ServesTheRightTokenAtOnceBesideWrongOnes)
{
    gatekeeper.token.Set("secret");
    Start();
    for (uint64 i = 0; i < 3 * WrongTokens::PROMPT_REFUSALS; ++i)
    {
        Connect().Write("GET /thing HTTP/1.1\r\nHost: localhost\r\nAuthorization: Bearer wrong\r\n\r\n");
    }
    uint64 const beginUsec = wTime_NowUsec();

    EXPECT_EQ(Connect().Send("GET", "/thing", "", "Authorization: Bearer secret\r\n")->status, 200U);
    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 401U) << "without a token";

    EXPECT_LT(wTime_NowUsec() - beginUsec, WrongTokens::PERIOD_USEC);
}

TEST_F(HttpServerTest, SendsABodyInParts)
{
    router.Register("/feed", feed);
    Start();
    TestConnection& client = Connect();
    client.Write("GET /feed HTTP/1.1\r\nHost: localhost\r\n\r\n");
    auto const head = client.ReadAnswer(false);
    ASSERT_TRUE(head.has_value());
    EXPECT_TRUE(head->Has("Transfer-Encoding: chunked")) << head->head;
    ASSERT_TRUE(feed.isOpen.Wait());

    feed.sink->Send("abc");
    EXPECT_EQ(client.ReadUntil("abc\r\n"), "3\r\nabc\r\n");
    feed.sink->Send("d");
    feed.sink->End();

    EXPECT_EQ(client.ReadUntil("0\r\n\r\n"), "1\r\nd\r\n0\r\n\r\n");
    EXPECT_TRUE(client.IsClosed());
    EXPECT_FALSE(feed.sink->IsOpen());
}

TEST_F(HttpServerTest, SendsPartsWithoutChunksToAClientOfHttp10)
{
    router.Register("/feed", feed);
    Start();
    TestConnection& client = Connect();
    client.Write("GET /feed HTTP/1.0\r\nHost: localhost\r\n\r\n");
    auto const head = client.ReadAnswer(false);
    ASSERT_TRUE(head.has_value());
    EXPECT_EQ(head->head.find("Transfer-Encoding"), std::string::npos) << head->head;
    ASSERT_TRUE(feed.isOpen.Wait());

    feed.sink->Send("abc");
    feed.sink->End();

    EXPECT_EQ(client.ReadUntil("abc"), "abc");
    EXPECT_TRUE(client.IsClosed());
}

TEST_F(HttpServerTest, TellsTheMakerOfABodyThatItsClientIsGone)
{
    router.Register("/feed", feed);
    Start();
    {
        TestConnection client(server.Port());
        client.Write("GET /feed HTTP/1.1\r\nHost: localhost\r\n\r\n");
        ASSERT_TRUE(feed.isOpen.Wait());
        EXPECT_TRUE(feed.sink->IsOpen());
    }
    uint64 const bound = wTime_AfterUsec(10'000'000);
    while (feed.sink->IsOpen() && wTime_NowUsec() < bound)
    {
        feed.sink->Send("x");
        std::this_thread::yield();
    }
    EXPECT_FALSE(feed.sink->IsOpen());
}

TEST_F(HttpServerTest, HoldsABodyOpenWithoutNews)
{
    settings.commentPeriodUsec = 10'000;
    router.Register("/feed", feed);
    Start();
    TestConnection& client = Connect();
    client.Write("GET /feed HTTP/1.1\r\nHost: localhost\r\n\r\n");
    ASSERT_TRUE(client.ReadAnswer(false).has_value());
    ASSERT_TRUE(feed.isOpen.Wait());
    TestConnection& other = Connect(); // some periods pass
    for (unsigned i = 0; i < 20; ++i)
    {
        EXPECT_EQ(other.Send("GET", "/thing")->status, 200U);
    }

    feed.sink->Send("abc");

    EXPECT_EQ(client.ReadUntil("abc\r\n"), "3\r\nabc\r\n"); // no comment came before it
}

TEST_F(HttpServerTest, AnswersHeadWithoutABody)
{
    router.Register("/feed", feed);
    Start();

    EXPECT_EQ(Connect().Send("HEAD", "/feed")->status, 200U);

    EXPECT_EQ(feed.sink, nullptr);
}

TEST_F(HttpServerTest, StreamsReportsAsEvents)
{
    FakeResource& events = Place("/events");
    events.isStreamable = true;
    Start();
    TestConnection& client = Connect();
    client.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    auto const head = client.ReadAnswer();
    ASSERT_TRUE(head.has_value());
    EXPECT_TRUE(head->Has("Content-Type: text/event-stream")) << head->head;

    events.receivers.at(0)->Receive(Json{{"type", 2}, {"path", "/a"}});
    EXPECT_EQ(client.ReadUntil("\n\n"), "id: 1\ndata: {\"path\":\"/a\",\"type\":2}\n\n");
    events.receivers.at(0)->Receive(Json{{"type", 4}});
    EXPECT_EQ(client.ReadUntil("\n\n"), "id: 2\ndata: {\"type\":4}\n\n");
}

TEST_F(HttpServerTest, SendsACommentWhenThereIsNoNews)
{
    settings.commentPeriodUsec = 100'000;
    Place("/events").isStreamable = true;
    Start();
    TestConnection& client = Connect();
    client.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(client.ReadAnswer()->status, 200U);

    EXPECT_EQ(client.ReadUntil("\n\n"), ": still here\n\n");
    EXPECT_EQ(client.ReadUntil("\n\n"), ": still here\n\n");
}

TEST_F(HttpServerTest, EndsTheStreamOfAClientThatIsGone)
{
    Latch stopped;
    class Watched final : public ZuRest::ResourceBase, public ZuRest::StreamResourceBase
    {
    public:
        explicit Watched(Latch& opened) : latch(opened)
        {
        }

        ZuRest::IStreamableResource* StreamableProvider() override
        {
            return this;
        }

        uint32 StartStream(ZuRest::IStreamReceiver* /*receiver*/, ZuRest::RequestInfo const& /*request*/) override
        {
            return 7;
        }

        void StopStream(uint32 streamId) override
        {
            EXPECT_EQ(streamId, 7U);
            latch.Open();
        }

    private:
        Latch& latch;
    } watched(stopped);
    router.Register("/watched", watched);
    Start();
    {
        TestConnection client(server.Port());
        client.Write("GET /watched HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_EQ(client.ReadAnswer()->status, 200U);
    }

    EXPECT_TRUE(stopped.Wait());
    server.Stop();
    router.Deregister("/watched", false);
}

TEST_F(HttpServerTest, SkipsASlowReaderToTheNewestState)
{
    FakeResource& state = resources["/thing"];
    state.isStreamable = true;
    Start();
    TestConnection& client = Connect();
    client.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\nAccept: text/event-stream\r\n\r\n");
    EXPECT_EQ(client.ReadAnswer()->status, 200U);

    unsigned constexpr REPORTS = 500;
    std::string const padding(64 * 1024, 'x');
    for (unsigned i = 1; i <= REPORTS; ++i) // much more than the socket buffers hold, before the client reads
    {
        state.receivers.at(0)->Receive(Json{{"number", i}, {"padding", padding}});
    }

    std::string const last = "id: " + std::to_string(REPORTS) + "\n";
    std::string const text = client.ReadUntil(last);
    EXPECT_TRUE(text.ends_with(last));
    EXPECT_LT(text.size(), REPORTS * padding.size() / 2);
}

TEST_F(HttpServerTest, LetsWhatIsUnderWayEndWhenItStops)
{
    Latch started;
    Latch finish;
    FakeResource& thing = resources["/thing"];
    thing.document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
        return Json{{"a", 5}};
    };
    FakeResource& events = Place("/events");
    events.isStreamable = true;
    Start();
    TestConnection& idle = Connect();
    TestConnection& stream = Connect();
    stream.Write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(stream.ReadAnswer()->status, 200U);
    TestConnection& busy = Connect();
    busy.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_TRUE(started.Wait());

    std::thread stopper([this] { server.Stop(); });
    EXPECT_TRUE(idle.IsClosed());
    EXPECT_TRUE(stream.IsClosed());
    finish.Open();
    auto const answer = busy.ReadAnswer();
    EXPECT_TRUE(busy.IsClosed());
    busy.EndWriting();
    stopper.join();

    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(Json::parse(answer->body).at("a"), 5);
    EXPECT_TRUE(answer->Has("Connection: close"));
    EXPECT_EQ(events.receivers, std::vector<ZuRest::IStreamReceiver*>{nullptr});
    EXPECT_EQ(server.Port(), 0U);
}

TEST_F(HttpServerTest, ClosesWhatDoesNotEndInTimeWhenTheClockIsSetBack)
{
    ZuTest::AdvancedCalendar const calendar(20);
    Latch started;
    Latch finish;
    resources["/thing"].document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        started.Open();
        EXPECT_TRUE(finish.Wait());
        return Json{{"a", 5}};
    };
    settings.stopPatienceUsec = 10'000;
    Start();
    TestConnection& busy = Connect();
    busy.Write(GET_THING);
    EXPECT_TRUE(started.Wait());
    uint64 const beginUsec = wTime_NowUsec();

    std::thread stopper([this] { server.Stop(); });
    EXPECT_TRUE(busy.IsClosed());
    uint64 const passedUsec = wTime_NowUsec() - beginUsec;
    finish.Open();
    stopper.join();

    EXPECT_GE(passedUsec, 10'000U);
    EXPECT_LT(passedUsec, 10'000'000U);
}

TEST_F(HttpServerTest, RefusesToListenWhereItCannotOrMayNot)
{
    Start();
    HttpServer other(processor, gatekeeper);
    std::string const port = std::to_string(server.Port());
    HttpServer::Settings taken;
    taken.port = server.Port();
    HttpServer::Settings plain;
    plain.address = "0.0.0.0";
    HttpServer::Settings noAddress;
    noAddress.address = "localhost";
    HttpServer::Settings foreign;
    foreign.address = "192.0.2.1"; // of documents, and of no machine
    foreign.isInsecure = true;

    EXPECT_EQ(
        ZuTest::RefusalOf([&] { other.Listen(taken); }),
        (ZuTest::Refusal{-976, "The REST service cannot listen on 127.0.0.1:" + port + ": Address already in use"}));
    EXPECT_EQ(
        ZuTest::RefusalOf([&] { other.Listen(plain); }),
        (ZuTest::Refusal{-997, "The REST service does not listen on 0.0.0.0:8080 without encryption: give --https "
                               "0.0.0.0:8080 in place of --http, or --insecure as well"}));
    EXPECT_EQ(
        ZuTest::RefusalOf([&] { other.Listen(noAddress); }),
        (ZuTest::Refusal{-997, "The REST service cannot listen on localhost:8080: the address is not an IP address"}));
    EXPECT_EQ(
        ZuTest::RefusalOf([&] { other.Listen(foreign); }),
        (ZuTest::Refusal{-997, "The REST service cannot listen on 192.0.2.1:8080: Cannot assign requested address"}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Listen(taken); }), (ZuTest::Refusal{-1000, ""}));
    EXPECT_EQ(other.Endpoint(), "");
    EXPECT_EQ(server.Endpoint(), "127.0.0.1:" + port);
}

TEST_F(HttpServerTest, KeepsClientsWaitingUntilItIsStarted)
{
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(); }), (ZuTest::Refusal{-1000, ""}));
    server.Listen(settings);
    TestConnection& client = Connect();
    client.Write("GET /thing HTTP/1.1\r\nHost: localhost\r\n\r\n");

    server.Start();

    EXPECT_EQ(client.ReadAnswer()->status, 200U);
    EXPECT_EQ(ZuTest::RefusalOf([&] { server.Start(); }), (ZuTest::Refusal{-1000, ""}));
}

TEST_F(HttpServerTest, LeavesTheAddressWithoutHavingBeenStarted)
{
    server.Listen(settings);
    settings.port = server.Port();
    server.Stop();

    Start();

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);
}

TEST_F(HttpServerTest, StopsAtAnyMomentBehindItsStart)
{
    for (unsigned i = 0; i < 200; ++i)
    {
        Start();
        if (i % 2 == 0)
        {
            Connect().Write(GET_THING); // the server may or may not have accepted it yet
        }
        server.Stop();
    }

    EXPECT_EQ(server.Port(), 0U);
}

TEST_F(HttpServerTest, StopsWithinItsPatienceWhenAClientDoesNotTakeItsAnswer)
{
    settings.stopPatienceUsec = 100'000;
    settings.writeTimeoutUsec = wTIMEOUT_INFINITE;
    Latch read;
    resources["/thing"].document = [&read](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        read.Open();
        return Json{{"text", std::string(16 * 1024 * 1024, 'x')}}; // more than the socket buffers hold
    };
    Start();
    TestConnection& client = Connect();
    client.Write(GET_THING);
    EXPECT_TRUE(read.Wait());

    std::promise<void> stopped;
    std::thread stopper([this, &stopped] {
        server.Stop();
        stopped.set_value();
    });
    bool const isInTime = stopped.get_future().wait_for(std::chrono::seconds(30)) == std::future_status::ready;
    client.EndWriting();
    connections.clear();
    stopper.join();

    EXPECT_TRUE(isInTime);
}

TEST_F(HttpServerTest, DropsARequestWhoseTurnComesTooLate)
{
    settings.answerTimeoutUsec = 200'000;
    constexpr unsigned READS = HttpServer::THREADS - 1; // the maximum of concurrent reads
    Latch finish;
    std::list<Latch> entered(READS);
    std::atomic<unsigned> reads = 0;
    Place("/slow").document = [&](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        std::next(entered.begin(), reads++)->Open();
        EXPECT_TRUE(finish.Wait());
        return Json();
    };
    std::atomic<bool> hasRun = false;
    resources["/thing"].document = [&hasRun](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        hasRun = true;
        return Json();
    };
    Start();
    for (Latch& one : entered)
    {
        Connect().Write(GET_SLOW);
        EXPECT_TRUE(one.Wait());
    }

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 503U);
    finish.Open();
    server.Stop(); // runs the waiting requests

    EXPECT_FALSE(hasRun);
}

TEST_F(HttpServerTest, ListensAgainAfterAStop)
{
    Start();
    server.Stop();
    Start();

    EXPECT_EQ(Connect().Send("GET", "/thing")->status, 200U);
}

} // namespace ZuHost
