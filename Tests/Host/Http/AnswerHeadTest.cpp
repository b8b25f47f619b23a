#include "Host/Http/AnswerHead.h"

#include "ZuRest/Answer.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

constexpr char const* DATE = "Sun, 06 Nov 1994 08:49:37 GMT";

std::string TextOf(ZuRest::Answer const& answer, bool isLast, std::optional<uint64> contentBytes)
{
    std::string text = "|"; // `Append` keeps the present text
    AnswerHead::Append(text, answer, DATE, isLast, contentBytes);
    return text;
}

} // namespace

TEST(AnswerHead, TellsOfABody)
{
    ZuRest::Answer const answer{200, "application/json", "{}", {{"ETag", "\"1\""}, {"Cache-Control", "no-cache"}}};

    EXPECT_EQ(TextOf(answer, false, 2), "|HTTP/1.1 200 OK\r\n"
                                        "Date: Sun, 06 Nov 1994 08:49:37 GMT\r\n"
                                        "ETag: \"1\"\r\n"
                                        "Cache-Control: no-cache\r\n"
                                        "Content-Type: application/json\r\n"
                                        "X-Content-Type-Options: nosniff\r\n"
                                        "Content-Length: 2\r\n"
                                        "\r\n");
}

TEST(AnswerHead, TellsNoLengthWhereThereIsNone)
{
    EXPECT_EQ(TextOf({204, "", "", {}}, false, std::nullopt), "|HTTP/1.1 204 No Content\r\n"
                                                              "Date: Sun, 06 Nov 1994 08:49:37 GMT\r\n"
                                                              "\r\n");
}

TEST(AnswerHead, TellsThatTheConnectionCloses)
{
    EXPECT_EQ(TextOf({503, "", "", {}}, true, 0), "|HTTP/1.1 503 Service Unavailable\r\n"
                                                  "Date: Sun, 06 Nov 1994 08:49:37 GMT\r\n"
                                                  "Connection: close\r\n"
                                                  "Content-Length: 0\r\n"
                                                  "\r\n");
}

} // namespace ZuHost
