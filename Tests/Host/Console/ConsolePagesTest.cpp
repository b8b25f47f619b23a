#include "Host/Console/ConsolePages.h"

#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace ZuHost
{

namespace
{

constexpr std::array FILES{
    ConsoleFiles::File{"index.html", "text/html; charset=utf-8", "page", false},
    ConsoleFiles::File{"console-AB12.js", "text/javascript; charset=utf-8", "script", true},
};

std::string HeaderOf(ZuRest::Answer const& answer, std::string const& name)
{
    auto const found =
        std::ranges::find(answer.headers, name, [](auto const& header) -> std::string const& { return header.first; });
    return found != answer.headers.end() ? found->second : "";
}

class ConsolePagesTest : public testing::Test
{
protected:
    ZuRest::Answer Send(std::string const& path, std::string const& method = "GET", std::string const& ifNoneMatch = "")
    {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.ifNoneMatch = ifNoneMatch;
        return processor.Process(request).answer;
    }

    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
};

} // namespace

TEST_F(ConsolePagesTest, ServesTheBytesOfAFileCompressed)
{
    ConsolePages const pages(router, FILES);

    ZuRest::Answer const page = Send("/ui/index.html");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.body, "page");
    EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(HeaderOf(page, "Content-Encoding"), "gzip");
    EXPECT_EQ(HeaderOf(page, "Cache-Control"), "no-cache");
    ZuRest::Answer const script = Send("/ui/console-AB12.js");
    EXPECT_EQ(script.body, "script");
    EXPECT_EQ(HeaderOf(script, "Cache-Control"), "public, max-age=31536000, immutable");
}

TEST_F(ConsolePagesTest, ForbidsInlineCodeAndForeignSources)
{
    ConsolePages const pages(router, FILES);

    ZuRest::Answer const page = Send("/ui/index.html");

    EXPECT_EQ(HeaderOf(page, "Content-Security-Policy"),
              "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
              "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'; "
              "trusted-types 'none'");
    EXPECT_EQ(HeaderOf(page, "Referrer-Policy"), "no-referrer");
    EXPECT_EQ(HeaderOf(page, "X-Frame-Options"), "DENY");
    EXPECT_EQ(HeaderOf(page, "Cross-Origin-Opener-Policy"), "same-origin");
    EXPECT_EQ(HeaderOf(page, "Cross-Origin-Resource-Policy"), "same-origin");
}

TEST_F(ConsolePagesTest, SendsAKnownFileOnce)
{
    ConsolePages const pages(router, FILES);
    std::string const tag = HeaderOf(Send("/ui/index.html"), "ETag");

    ZuRest::Answer const again = Send("/ui/index.html", "GET", tag);

    EXPECT_EQ(again.status, 304);
    EXPECT_EQ(again.body, "");
    EXPECT_EQ(HeaderOf(again, "ETag"), tag);
    EXPECT_EQ(HeaderOf(again, "Content-Encoding"), "");
    EXPECT_EQ(Send("/ui/console-AB12.js", "GET", tag).status, 200);
}

TEST_F(ConsolePagesTest, LeadsFromTheFolderToThePage)
{
    ConsolePages const pages(router, FILES);

    ZuRest::Answer const answer = Send("/ui");

    EXPECT_EQ(answer.status, 303);
    EXPECT_EQ(HeaderOf(answer, "Location"), "/ui/");
}

TEST_F(ConsolePagesTest, RefusesOtherNamesAndMethods)
{
    ConsolePages const pages(router, FILES);

    EXPECT_EQ(Send("/ui/other.js").status, 404);
    EXPECT_EQ(Send("/ui/%2e%2e").status, 404);
    EXPECT_EQ(Send("/ui/..%2findex.html").status, 404);
    EXPECT_EQ(Send("/ui/index.html", "PUT").status, 405);
    EXPECT_EQ(Send("/ui/index.html", "HEAD").status, 200);
}

TEST_F(ConsolePagesTest, SaysWhatIsMissingInAHostWithoutConsole)
{
    ConsolePages const pages(router, {});

    for (char const* const path : {"/ui", "/ui/index.html"})
    {
        ZuRest::Answer const answer = Send(path);
        EXPECT_EQ(answer.status, 404);
        EXPECT_NE(answer.body.find("This host was built without the console"), std::string::npos) << answer.body;
    }
}

} // namespace ZuHost
