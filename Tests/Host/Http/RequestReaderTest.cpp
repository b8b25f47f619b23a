#include "Host/Http/RequestReader.h"

#include "Host/Http/ByteBudget.h"
#include "Support/FakeGatekeeper.h"

#include <gtest/gtest.h>

#include <cstring>

namespace ZuHost
{

namespace
{

using Result = RequestReader::Result;

class RequestReaderTest : public testing::Test
{
protected:
    /// Hands over `bytes`, at most `step` at a time, until the reader needs no more.
    Result Feed(std::string_view bytes, std::size_t step = std::string_view::npos)
    {
        Result result = Result::NEEDS_BYTES;
        while (!bytes.empty() && result == Result::NEEDS_BYTES)
        {
            auto const room = reader.Room();
            std::size_t const count = std::min({bytes.size(), step, room.size()});
            std::memcpy(room.data(), bytes.data(), count);
            reader.Commit(count);
            bytes.remove_prefix(count);
            result = reader.Parse();
        }
        return result;
    }

    uint32 RefusalOf(std::string_view bytes)
    {
        return Feed(bytes) == Result::REFUSAL ? reader.TakeRefusal().status : 0;
    }

    /// Feeds `bytes` again and again until the reader refuses; returns the fed bytes.
    uint64 FeedUntilRefusal(std::string const& bytes)
    {
        uint64 fed = 0;
        for (Result result = Result::NEEDS_BYTES; result == Result::NEEDS_BYTES && fed < 100 * ALLOWANCE;)
        {
            result = Feed(bytes);
            fed += bytes.size();
        }
        return fed;
    }

    static constexpr uint64 ALLOWANCE = HttpServer::MAX_REQUEST_BYTES;
    static constexpr std::string_view CHUNKED =
        "PUT / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n";

    ZuTest::FakeGatekeeper gatekeeper;
    ByteBudget budget{3 * ALLOWANCE};
    RequestReader reader{gatekeeper, {{}, boost::asio::ip::make_address("127.0.0.1"), true, false}, budget};
};

} // namespace

TEST_F(RequestReaderTest, GivesTheSameRequestHoweverItsBytesArrive)
{
    constexpr std::string_view TEXT =
        "PUT /thing/a?b=c?d HTTP/1.1\r\nHost: localhost\r\nAccept: text/plain\r\n"
        "If-Match: \"1\"\r\nIf-None-Match: \"2\"\r\nPrefer: a\r\nContent-Length: 7\r\n\r\n{\"a\":1}";
    for (std::size_t step = 1; step <= TEXT.size(); ++step)
    {
        reader.Begin();
        ASSERT_EQ(Feed(TEXT, step), Result::REQUEST) << step;
        ZuRest::Request const request = reader.TakeRequest();
        EXPECT_EQ(request.method, "PUT");
        EXPECT_EQ(request.path, "/thing/a");
        EXPECT_EQ(request.query, "b=c?d");
        EXPECT_EQ(request.accept, "text/plain");
        EXPECT_EQ(request.ifMatch, "\"1\"");
        EXPECT_EQ(request.ifNoneMatch, "\"2\"");
        EXPECT_EQ(request.prefer, "a");
        EXPECT_EQ(request.body, "{\"a\":1}");
        EXPECT_TRUE(reader.KeepsAlive());
        EXPECT_FALSE(reader.IsHead());
        EXPECT_FALSE(reader.HasBytes());
    }
}

TEST_F(RequestReaderTest, KeepsTheBytesOfTheNextRequest)
{
    EXPECT_EQ(Feed("HEAD /a HTTP/1.1\r\nHost: localhost\r\n\r\nGET /b HTTP/1.0\r\n\r\n"), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().path, "/a");
    EXPECT_TRUE(reader.IsHead());
    EXPECT_TRUE(reader.HasBytes());

    reader.Begin();
    EXPECT_EQ(reader.Parse(), Result::REQUEST);

    EXPECT_EQ(reader.TakeRequest().path, "/b");
    EXPECT_FALSE(reader.KeepsAlive());
    EXPECT_FALSE(reader.HasBytes());
}

TEST_F(RequestReaderTest, TellsWhenTheClientWaitsForAContinue)
{
    EXPECT_EQ(Feed("PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\nExpect: 100-Continue\r\n\r\n"),
              Result::NEEDS_CONTINUE);
    EXPECT_TRUE(reader.HasHeader());
    EXPECT_EQ(reader.Parse(), Result::NEEDS_BYTES);
    EXPECT_EQ(Feed("[]"), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().body, "[]");
}

TEST_F(RequestReaderTest, RefusesTheEndInTheMiddleOfARequest)
{
    EXPECT_FALSE(reader.TakeEnd()) << "nothing has come";
    EXPECT_EQ(Feed("GET / HTTP/1.1\r\nHos"), Result::NEEDS_BYTES);
    EXPECT_TRUE(reader.TakeEnd());
    EXPECT_EQ(reader.TakeRefusal().status, 400U);

    reader.Begin();
    reader.Discard();
    EXPECT_EQ(Feed("PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n["), Result::NEEDS_BYTES);
    EXPECT_TRUE(reader.TakeEnd());
    EXPECT_EQ(reader.TakeRefusal().status, 400U);
}

TEST_F(RequestReaderTest, BoundsWhatWaitsForTheParser)
{
    constexpr std::string_view HEAD = "PUT / HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n";

    EXPECT_EQ(Feed(HEAD), Result::NEEDS_BYTES);
    EXPECT_EQ(RefusalOf("1;" + std::string(2 * RequestReader::MAX_BUFFERED_BYTES, 'x')), 431U) << "an extension";

    reader.Discard();
    reader.Begin();
    EXPECT_EQ(Feed(HEAD), Result::NEEDS_BYTES);
    EXPECT_EQ(RefusalOf("0\r\nX: " + std::string(2 * RequestReader::MAX_BUFFERED_BYTES, 'x')), 431U) << "a trailer";

    reader.Discard();
    reader.Begin();
    EXPECT_EQ(RefusalOf("GET / HTTP/1.1\r\nX: " + std::string(2 * RequestReader::MAX_BUFFERED_BYTES, 'x')), 431U);
}

TEST_F(RequestReaderTest, TakesABodyOfTheMostBytesAndNoMore)
{
    std::string const head = "PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: ";
    std::string const most = std::to_string(HttpServer::MAX_BODY_BYTES);

    EXPECT_EQ(Feed(head + most + "\r\n\r\n" + std::string(HttpServer::MAX_BODY_BYTES, ' ')), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().body.size(), HttpServer::MAX_BODY_BYTES);

    reader.Begin();
    EXPECT_EQ(RefusalOf(head + std::to_string(HttpServer::MAX_BODY_BYTES + 1) + "\r\n\r\n"), 413U);
}

TEST_F(RequestReaderTest, AsksTheGatekeeperBeforeItTakesABody)
{
    gatekeeper.token.Set("0123456789abcdef");
    constexpr std::string_view HEAD = "PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n";

    EXPECT_EQ(Feed(std::string(HEAD) + "\r\n"), Result::REFUSAL);
    ZuRest::Answer const refusal = reader.TakeRefusal();
    EXPECT_EQ(refusal.status, 401U);
    EXPECT_EQ(refusal.headers, (std::vector<std::pair<std::string, std::string>>{{"WWW-Authenticate", "Bearer"}}));

    reader.Begin();
    EXPECT_EQ(Feed(std::string(HEAD) + "Authorization: Bearer 0123456789abcdee\r\n\r\n{}"), Result::WRONG_TOKEN);
    EXPECT_EQ(reader.TakeRefusal().status, 401U);
    reader.Begin();
    reader.Discard();
    EXPECT_EQ(Feed(std::string(HEAD) + "Authorization: Bearer 0123456789abcdef\r\n\r\n{}"), Result::REQUEST);
}

TEST_F(RequestReaderTest, BoundsTheBytesOfARequestWithItsChunkExtensions)
{
    std::string const chunk = "1;" + std::string(16'000, 'x') + "\r\n \r\n";

    EXPECT_EQ(Feed(CHUNKED), Result::NEEDS_BYTES);
    uint64 const fed = FeedUntilRefusal(chunk);

    EXPECT_GT(fed, ALLOWANCE - chunk.size());
    EXPECT_LT(fed, ALLOWANCE + chunk.size());
    EXPECT_EQ(reader.TakeRefusal().status, 413U);
}

TEST_F(RequestReaderTest, TakesNoBodyWhereItAsksForNoToken)
{
    gatekeeper.token.Set("0123456789abcdef");
    constexpr std::string_view HEALTH = "GET /health HTTP/1.1\r\nHost: localhost\r\n";

    EXPECT_EQ(RefusalOf(std::string(HEALTH) + "Content-Length: 1\r\n\r\n"), 413U);
    reader.Begin();
    EXPECT_EQ(RefusalOf(std::string(HEALTH) + "Transfer-Encoding: chunked\r\n\r\n"), 413U);
    reader.Begin();
    EXPECT_EQ(Feed(std::string(HEALTH) + "Content-Length: 0\r\n\r\n"), Result::REQUEST);
}

TEST_F(RequestReaderTest, TakesAShortBodyOfKnownLengthFromStrangers)
{
    gatekeeper.token.Set("0123456789abcdef");
    gatekeeper.openBodyBytes = 2;
    constexpr std::string_view HEALTH = "GET /health HTTP/1.1\r\nHost: localhost\r\n";

    EXPECT_EQ(Feed(std::string(HEALTH) + "Content-Length: 2\r\n\r\n{}"), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().body, "{}");
    reader.Begin();
    EXPECT_EQ(RefusalOf(std::string(HEALTH) + "Content-Length: 3\r\n\r\n"), 413U);
    reader.Begin();
    EXPECT_EQ(RefusalOf(std::string(HEALTH) + "Transfer-Encoding: chunked\r\n\r\n"), 413U);
}

TEST_F(RequestReaderTest, GivesTheCallerWithItsRequest)
{
    constexpr std::string_view TEXT = "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";

    EXPECT_EQ(Feed(TEXT), Result::REQUEST);
    auto const caller = reader.TakeRequest().caller;

    ASSERT_NE(caller, nullptr);
    EXPECT_EQ(caller->name, "tester");
    EXPECT_EQ(caller->source, "127.0.0.1");
}

TEST_F(RequestReaderTest, HandsTheGatekeeperWhatTheHeaderShows)
{
    constexpr std::string_view TEXT = "POST http://localhost/a/b?c=d HTTP/1.1\r\nHost: localhost\r\n"
                                      "Cookie: session=1\r\nx-csrf-token: 2\r\nAuthorization: Bearer 3\r\n\r\n";

    EXPECT_EQ(Feed(TEXT), Result::REQUEST);

    EXPECT_EQ(gatekeeper.Last(), "POST /a/b c=d Bearer 3 session=1 2 127.0.0.1");
}

TEST_F(RequestReaderTest, LeadsABrowserToTheConsole)
{
    ASSERT_EQ(Feed("GET / HTTP/1.1\r\nHost: localhost\r\nAccept: text/html\r\n\r\n"), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().path, "/ui");
    EXPECT_EQ(gatekeeper.Last().substr(0, 7), "GET /ui") << "the role is that of the page";
}

TEST_F(RequestReaderTest, RefusesAnAddressWithANameOrPassword)
{
    EXPECT_EQ(RefusalOf("GET http://0123456789abcdef@localhost/ HTTP/1.1\r\nHost: localhost\r\n\r\n"), 400U);
    reader.Begin();
    EXPECT_EQ(Feed("GET http://localhost/a@b HTTP/1.1\r\nHost: localhost\r\n\r\n"), Result::REQUEST);
}

TEST_F(RequestReaderTest, DropsTrailers)
{
    EXPECT_EQ(Feed(std::string(CHUNKED) + "2\r\n[]\r\n0\r\nIf-Match: \"1\"\r\nAccept: text/plain\r\n"
                                          "Connection: close\r\nHost: evil.example\r\n\r\n"),
              Result::REQUEST);
    ZuRest::Request const request = reader.TakeRequest();

    EXPECT_EQ(request.body, "[]");
    EXPECT_EQ(request.ifMatch, "");
    EXPECT_EQ(request.accept, "");
    EXPECT_TRUE(reader.KeepsAlive());
}

TEST_F(RequestReaderTest, JoinsTheLinesOfOneField)
{
    EXPECT_EQ(Feed("GET / HTTP/1.1\r\nHost: localhost\r\nIf-Match: \"1\"\r\nif-match: \"2\"\r\n\r\n"), Result::REQUEST);
    EXPECT_EQ(reader.TakeRequest().ifMatch, "\"1\", \"2\"");
}

TEST_F(RequestReaderTest, BoundsTheBytesOfAllRequestsTogether)
{
    std::string const head = "PUT / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048576\r\n\r\n";
    EXPECT_TRUE(budget.Take(3 * ALLOWANCE - 100)); // by other readers

    EXPECT_EQ(Feed(head + std::string(100, ' ')), Result::NEEDS_BYTES);
    EXPECT_EQ(Feed(" "), Result::REFUSAL);
    ZuRest::Answer const refusal = reader.TakeRefusal();
    EXPECT_EQ(refusal.status, 503U);
    EXPECT_EQ(refusal.headers, (std::vector<std::pair<std::string, std::string>>{{"Retry-After", "1"}}));
    reader.Begin();
    EXPECT_EQ(Feed("GET /health HTTP/1.1\r\nHost: localhost\r\n\r\n"), Result::REQUEST) << "it has no body";

    reader.Begin();
    EXPECT_EQ(Feed(head + std::string(100, ' ')), Result::NEEDS_BYTES) << "the refused bytes count no more";
}

} // namespace ZuHost
