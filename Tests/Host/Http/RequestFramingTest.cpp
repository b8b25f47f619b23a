#include "Host/Http/ByteBudget.h"
#include "Host/Http/RequestReader.h"
#include "Support/FakeGatekeeper.h"

#include <gtest/gtest.h>

#include <cstring>

namespace ZuHost
{

namespace
{

using Result = RequestReader::Result;

/// A message and the reading of it: each request as "METHOD path body", "100" for a continue, the status of a refusal,
/// "closes" behind the last request of a connection, "..." for an incomplete request.
struct Row
{
    std::string bytes;
    char const* reading;
};

/// Adds the reading of the requests in the reader's buffer. Returns false behind the last request of the connection.
bool ReadOn(RequestReader& reader, std::string& reading)
{
    auto const add = [&reading](std::string const& text) { reading += (reading.empty() ? "" : ", ") + text; };
    while (true)
    {
        switch (reader.Parse())
        {
        case Result::NEEDS_BYTES:
            return true;
        case Result::NEEDS_CONTINUE:
            add("100");
            break;
        case Result::REFUSAL:
        case Result::WRONG_TOKEN:
            add(std::to_string(reader.TakeRefusal().status));
            return false;
        case Result::REQUEST:
            ZuRest::Request const request = reader.TakeRequest();
            add(request.method + ' ' + request.path + (request.body.empty() ? "" : ' ' + request.body));
            if (!reader.KeepsAlive())
            {
                add("closes");
                return false;
            }
            reader.Begin();
            break;
        }
    }
}

/// Gives the reader up to `step` bytes at a time.
std::string ReadingOf(std::string_view bytes, std::size_t step)
{
    ZuTest::FakeGatekeeper gatekeeper;
    ByteBudget budget(HttpServer::MAX_BYTES_IN_ALL);
    RequestReader reader(gatekeeper, {{}, {}, true, false}, budget);
    std::string reading;
    bool goesOn = true;
    while (!bytes.empty() && goesOn)
    {
        auto const room = reader.Room();
        std::size_t const count = std::min({bytes.size(), step, room.size()});
        std::memcpy(room.data(), bytes.data(), count);
        reader.Commit(count);
        bytes.remove_prefix(count);
        goesOn = ReadOn(reader, reading);
    }
    return goesOn && reader.TakeEnd() ? reading + "..." : reading;
}

/// Checks each row twice: with its bytes at once, and one after the other.
void Check(std::initializer_list<Row> rows)
{
    for (Row const& row : rows)
    {
        EXPECT_EQ(ReadingOf(row.bytes, row.bytes.size()), row.reading) << testing::PrintToString(row.bytes);
        EXPECT_EQ(ReadingOf(row.bytes, 1), row.reading) << "one by one: " << testing::PrintToString(row.bytes);
    }
}

/// A request with these lines between Host and the empty line, and the bytes that follow.
std::string Put(std::string const& lines, std::string const& following = {})
{
    return "PUT /a HTTP/1.1\r\nHost: localhost\r\n" + lines + "\r\n" + following;
}

std::string Chunked(std::string const& body)
{
    return Put("Transfer-Encoding: chunked\r\n", body);
}

constexpr char const* NEXT = "GET /b HTTP/1.1\r\nHost: localhost\r\n\r\n";

} // namespace

// RFC 9112, section by section.

TEST(RequestFraming, Section2_2_MessageParsing)
{
    Check({
        {"GET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "GET /a"},
        {"\r\nGET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "GET /a"},
        {"\r\n\r\n\r\nGET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "GET /a"},
        {Put("Content-Length: 2\r\n", "[]\r\n") + NEXT, "PUT /a [], GET /b"}, // an old client's CRLF behind its body
        {"\r\n", ""},
        {"\nGET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"\rGET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {" GET /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\nHost: localhost\n\n\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\nHost: localhost\n\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\nHost: localhost\r\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\n Host: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\nHost: localhost\r\nX: a\rb\r\n\r\n", "400"},
    });
}

TEST(RequestFraming, Section2_3_Version)
{
    Check({
        {"GET /a HTTP/1.0\r\n\r\n", "GET /a, closes"},
        {"GET /a HTTP/2.0\r\nHost: localhost\r\n\r\n", "505"},
        {"GET /a HTTP/3.0\r\nHost: localhost\r\n\r\n", "505"},
        {"GET /a HTTP/1.2\r\nHost: localhost\r\n\r\n", "505"},
        {"GET /a HTTP/0.9\r\n\r\n", "505"},
        {"GET /a HTTP/9.9\r\n\r\n", "505"},
        {"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", "505"},
        {"GET /a http/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/11\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1.11\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1,1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTPS/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a\r\nHost: localhost\r\n\r\n", "400"},
    });
}

TEST(RequestFraming, Section3_RequestLine)
{
    Check({
        {"GET  /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a  HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1.1 \r\nHost: localhost\r\n\r\n", "400"},
        {"GET\t/a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a b HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {"G(T /a HTTP/1.1\r\nHost: localhost\r\n\r\n", "400"},
        {std::string("GET /a\0 HTTP/1.1\r\nHost: localhost\r\n\r\n", 37), "400"},
        {"GET http://localhost/a HTTP/1.1\r\nHost: other\r\n\r\n", "GET /a"},
        {"OPTIONS * HTTP/1.1\r\nHost: localhost\r\n\r\n", "OPTIONS *"},
    });
}

TEST(RequestFraming, Section3_2_Host)
{
    Check({
        {"GET /a HTTP/1.1\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\nHost: localhost\r\nHost: localhost\r\n\r\n", "400"},
        {"GET /a HTTP/1.1\r\nHost: localhost, localhost\r\n\r\n", "403"},
        {"GET /a HTTP/1.1\r\nHost:\r\n\r\n", "403"},
        {"GET /a HTTP/1.1\r\nhOST:localhost\t \r\n\r\n", "GET /a"},
    });
}

TEST(RequestFraming, Section5_FieldSyntax)
{
    Check({
        {Put("Content-Length : 2\r\n", "[]"), "400"},
        {Put("Content-Length\t: 2\r\n", "[]"), "400"},
        {Put(" Content-Length: 2\r\n", "[]"), "403"}, // a second line of the value of Host
        {Put(": 2\r\n"), "400"},
        {Put("no colon\r\n"), "400"},
        {Put("X\x01: 2\r\n"), "400"},
        {Put("X: \x01\r\n"), "400"},
        {Put("X: \x7F\r\n"), "400"},
        {Put("X: a\r\n b\r\n"), "PUT /a"},
        {Put("Content-Length:\r\n 2\r\n", "[]") + NEXT, "PUT /a [], GET /b"},
        {Put("Content_Length: 2\r\n") + NEXT, "PUT /a, GET /b"}, // another name
    });
}

TEST(RequestFraming, Section6_1_TransferEncoding)
{
    constexpr char const* BODY = "2\r\n[]\r\n0\r\n\r\n";
    auto const coded = [](std::string const& value) { return Put("Transfer-Encoding:" + value + "\r\n", BODY) + NEXT; };
    Check({
        {coded(" chunked"), "PUT /a [], GET /b"},
        {coded("chunked"), "PUT /a [], GET /b"},
        {coded(" \t chunked \t "), "PUT /a [], GET /b"},
        {coded(" CHUNKED"), "PUT /a [], GET /b"},
        {coded("\r\n chunked"), "PUT /a [], GET /b"},
        {coded(" gzip"), "501"},
        {coded(" identity"), "501"},
        {coded(" xchunked"), "501"},
        {coded(" chunkedx"), "501"},
        {coded(" gzip, chunked"), "501"},
        {coded(" chunked, gzip"), "501"},
        {coded(" chunked, identity"), "501"},
        {coded(" chunked, chunked"), "400"},
        {coded(" chunked,"), "400"},
        {coded(" , chunked"), "400"},
        {coded(""), "400"},
        {coded(" "), "400"},
        {coded(" ,"), "400"},
        {coded(" \"chunked\""), "400"},
        {coded(" chunked;q=1"), "400"},
        {coded(" chunked chunked"), "400"},
        {coded(" [chunked]"), "400"},
        {coded(" \x0B"
               "chunked"),
         "400"},
        {Put("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n", BODY) + NEXT, "501"},
        {Put("Transfer-Encoding: chunked\r\nTransfer-Encoding: gzip\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding: chunked\r\nTransfer-Encoding:\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding : chunked\r\n", BODY) + NEXT, "400"},
        {"PUT /a HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n[]\r\n0\r\n\r\n", "400"},
        {"PUT /a HTTP/1.0\r\nTransfer-Encoding: gzip\r\nConnection: keep-alive\r\n\r\n", "400"},
    });
}

TEST(RequestFraming, Section6_2_ContentLength)
{
    Check({
        {Put("Content-Length: 2\r\n", "[]") + NEXT, "PUT /a [], GET /b"},
        {Put("Content-Length: 0\r\n") + NEXT, "PUT /a, GET /b"},
        {Put("Content-Length: 002\r\n", "[]") + NEXT, "PUT /a [], GET /b"},
        {Put("Content-Length:\r\n") + NEXT, "400"},
        {Put("Content-Length: -2\r\n", "[]"), "400"},
        {Put("Content-Length: +2\r\n", "[]"), "400"},
        {Put("Content-Length: 0x2\r\n", "[]"), "400"},
        {Put("Content-Length: 2.0\r\n", "[]"), "400"},
        {Put("Content-Length: 1e1\r\n", "[]"), "400"},
        {Put("Content-Length: two\r\n", "[]"), "400"},
        {Put("Content-Length: 2 2\r\n", "[]"), "400"},
        {Put("Content-Length: \"2\"\r\n", "[]"), "400"},
        {Put("Content-Length: 18446744073709551616\r\n"), "400"},
        {Put("Content-Length: 18446744073709551615\r\n"), "413"},
        {Put("Content-Length: 1048577\r\n"), "413"},
        {Put("Content-Length: 3\r\n", "[]"), "..."},
    });
}

TEST(RequestFraming, Section6_3_MessageBodyLength)
{
    constexpr char const* BODY = "0\r\n\r\n";
    Check({
        {Put("") + NEXT, "PUT /a, GET /b"},
        {Put("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding: chunked\r\nContent-Length: 5\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding: gzip\r\nContent-Length: 5\r\n", BODY) + NEXT, "400"},
        {Put("Content-Length: 5\r\nTransfer-Encoding: gzip\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding: xchunked\r\nContent-Length: 5\r\n", BODY) + NEXT, "400"},
        {Put("Transfer-Encoding:\r\nContent-Length: 5\r\n", BODY) + NEXT, "400"},
        {Put("Content-Length: 2\r\nContent-Length: 2\r\n", "[]") + NEXT, "PUT /a [], GET /b"},
        {Put("Content-Length: 2, 2\r\n", "[]") + NEXT, "PUT /a [], GET /b"},
        {Put("Content-Length: 2\r\nContent-Length: 3\r\n", "[]") + NEXT, "400"},
        {Put("Content-Length: 3\r\nContent-Length: 2\r\n", "[]") + NEXT, "400"},
        {Put("Content-Length: 2, 3\r\n", "[]") + NEXT, "400"},
        {Put("Content-Length: 2,\r\n", "[]") + NEXT, "400"},
        {Put("Content-Length: , 2\r\n", "[]") + NEXT, "400"},
    });
}

TEST(RequestFraming, Section7_1_ChunkedCoding)
{
    Check({
        {Chunked("2\r\n[]\r\n0\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("1\r\n[\r\n1\r\n]\r\n0\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("0\r\n\r\n") + NEXT, "PUT /a, GET /b"},
        {Chunked("000\r\n\r\n") + NEXT, "PUT /a, GET /b"},
        {Chunked("0002\r\n[]\r\n0\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("a\r\n0123456789\r\nA\r\n0123456789\r\n0\r\n\r\n") + NEXT, "PUT /a 01234567890123456789, GET /b"},
        {Chunked("a\r\n012345678\r\n0\r\n\r\n") + NEXT, "400"},
        {Chunked("\r\n\r\n\r\n"), "400"},
        {Chunked("x\r\n\r\n"), "400"},
        {Chunked("-1\r\n\r\n"), "400"},
        {Chunked("+2\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("0x2\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked(" 2\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2 2\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2\r\n[]0\r\n\r\n"), "400"},
        {Chunked("2\r\n[]\n0\r\n\r\n"), "400"},
        {Chunked("3\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("10000000000000002\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("ffffffffffffffff\r\n"), "413"},
        {Chunked("100001\r\n"), "413"},
        {Chunked("2\r\n[]\r\n"), "..."},
        {Chunked("2\r\n[]\r\n0\r\n"), "..."},
    });
}

TEST(RequestFraming, Section7_1_1_ChunkExtensions)
{
    Check({
        {Chunked("2;a\r\n[]\r\n0;b\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("2;a=b;c=\"d;\"\r\n[]\r\n0\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("2 ; a = b\r\n[]\r\n0\r\n\r\n") + NEXT, "PUT /a [], GET /b"},
        {Chunked("2;\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2;a=\r\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2;a=\"b\r\n[]\r\n0\r\n\r\n"), "..."},
        {Chunked("2;a=\"b\r\n[]\r\n0\r\n\r\nGET /b HTTP/1.1\r\nX: \"\r\n\r\n"), "400"},
        {Chunked("2;a\n[]\r\n0\r\n\r\n"), "400"},
        {Chunked("2,a\r\n[]\r\n0\r\n\r\n"), "400"},
    });
}

TEST(RequestFraming, Section7_1_2_Trailers)
{
    Check({
        {Chunked("0\r\nX: 1\r\n\r\n") + NEXT, "PUT /a, GET /b"},
        {Chunked("0\r\nHost: evil.example\r\nIf-Match: \"1\"\r\n\r\n") + NEXT, "PUT /a, GET /b"},
        {Chunked("0\r\nConnection: close\r\n\r\n") + NEXT, "PUT /a, GET /b"},
        {Chunked("0\r\nContent-Length: 35\r\n\r\n") + NEXT, "400"},
        {Chunked("0\r\nTransfer-Encoding: chunked\r\n\r\n") + NEXT, "400"},
        {Chunked("0\r\nno colon\r\n\r\n") + NEXT, "400"},
        {Chunked("0\r\nX : 1\r\n\r\n") + NEXT, "400"},
        {Chunked("0\r\nX: 1\n\r\n\r\n") + NEXT, "400"},
    });
}

TEST(RequestFraming, Section9_Connections)
{
    Check({
        {Put("Connection: close\r\n") + NEXT, "PUT /a, closes"},
        {Put("Connection: x, Close\r\n") + NEXT, "PUT /a, closes"},
        {Put("Connection: keep-alive\r\n") + NEXT, "PUT /a, GET /b"},
        {"GET /a HTTP/1.0\r\nConnection: keep-alive\r\n\r\n", "GET /a"},
        {Put("Expect: 100-continue\r\nContent-Length: 2\r\n", "[]") + NEXT, "100, PUT /a [], GET /b"},
        {Put("Expect: 100-continue\r\nTransfer-Encoding: gzip\r\n"), "501"},
        {"PUT /a HTTP/1.0\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n[]", "PUT /a [], closes"},
        {Put("Expect: 100-continue\r\n") + NEXT, "PUT /a, GET /b"},
    });
}

} // namespace ZuHost
