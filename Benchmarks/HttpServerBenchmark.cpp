/// What a request costs the host's HTTP server, from the socket through router, resource and JSON and back, against a server of
/// Boost.Beast that sends a fixed text of the same length.
///
/// usage: HttpServerBenchmark [ROUNDS]      30 unless told otherwise
/// Figures are CPU nanoseconds of the server for a request, all its threads together.

#include "BeastServer.h"
#include "ServerContest.h"

#include "Host/Http/HttpServer.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <string>

namespace
{

using namespace ZuBench;

constexpr char const* REQUEST = "GET /thing HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: application/json\r\n\r\n";

/// A document such as that of a protocol.
class Thing final : public ZuRest::DocumentResourceBase
{
public:
    nlohmann::json Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/) override
    {
        return {{"name", "ModbusTcp"}, {"enabled", true}, {"status", 2}, {"port", 1502}, {"address", "127.0.0.1"}};
    }
};

struct OurServer
{
    OurServer()
    {
        router.Register("/thing", thing);
        ZuHost::HttpServer::Settings settings;
        settings.port = 0;
        server.Listen(settings);
        server.Start();
    }

    Thing thing;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    ZuHost::HttpServer server{processor};
};

std::shared_ptr<void> StartOurs(uint16& port)
{
    auto ours = std::make_shared<OurServer>();
    port = ours->server.Port();
    return ours;
}

/// Header and body, when the header is whole.
std::size_t LengthOf(std::string_view begun)
{
    constexpr std::string_view FIELD = "Content-Length: ";
    std::size_t const end = begun.find("\r\n\r\n");
    std::size_t const field = begun.find(FIELD);
    if (end == std::string_view::npos || field == std::string_view::npos || field > end)
    {
        return 0;
    }
    return end + 4 + std::strtoull(begun.data() + field + FIELD.size(), nullptr, 10);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    uint64 const rounds = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 30;
    ServerContest contest("HttpGet", REQUEST, LengthOf);
    std::string const answer = contest.Enter("Host", StartOurs);
    std::string const body = answer.substr(answer.find("\r\n\r\n") + 4);
    contest.Enter("Beast", [&body](uint16& port) { return StartBeastServer(body, port); });
    contest.Run(rounds);
}
