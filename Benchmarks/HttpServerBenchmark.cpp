/// Cost of a request to the host's HTTP server, from the socket through router and resource and back, compared with a
/// server built on Boost.Beast. All servers send the same body. The Beast server and one server of the host send a
/// fixed text; the other server of the host builds and serializes a document for each request. The same is measured over
/// TLS, on kept connections, with one certificate and one set of rules for all servers.
///
/// usage: HttpServerBenchmark [ROUNDS]      30 unless told otherwise
/// Figures are CPU nanoseconds of the server per request, all its threads together.

#include "BeastServer.h"
#include "ServerContest.h"

#include "Host/Http/HttpServer.h"
#include "Host/Security/Gatekeeper.h"
#include "Host/Tls/HttpsCertificate.h"
#include "Support/RecordingTrail.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/Answer.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace ZuBench;

constexpr char const* REQUEST = "GET /thing HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: application/json\r\n\r\n";
constexpr char const* ROUTE = "/thing";

/// A document like that of a protocol.
class Thing final : public ZuRest::DocumentResourceBase
{
public:
    nlohmann::json Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/) override
    {
        return {{"name", "ModbusTcp"}, {"enabled", true}, {"status", 2}, {"port", 1502}, {"address", "127.0.0.1"}};
    }
};

/// The same body, made once.
class Text final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    explicit Text(std::string newBody) : body(std::move(newBody))
    {
    }

    std::vector<std::string> ContentMethods() const override
    {
        return {"GET"};
    }

    ZuRest::Answer AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& /*info*/) override
    {
        return {ZuRest::HttpStatus::OK, "application/json", body, {}};
    }

private:
    std::string const body;
};

using Tls = std::shared_ptr<ZuTls::Context const>;

template <typename Resource>
struct OurServer
{
    template <typename... Arguments>
    explicit OurServer(Tls const& tls, Arguments&&... arguments) : resource(std::forward<Arguments>(arguments)...)
    {
        router.Register(ROUTE, resource);
        ZuHost::HttpServer::Settings settings;
        settings.port = 0;
        settings.httpsAddress = tls == nullptr ? "" : "127.0.0.1";
        settings.tls = tls;
        gatekeeper.SetBeyondLoopback(false);
        server.Listen(settings);
        server.Start();
    }

    Resource resource;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
    ZuTest::RecordingTrail trail;
    ZuHost::Gatekeeper gatekeeper{{}, trail, [](auto const&) { return std::string(); }}; // open, as on loopback
    ZuHost::HttpServer server{processor, gatekeeper};
};

template <typename Resource, typename... Arguments>
std::shared_ptr<void> StartOurs(uint16& port, Tls const& tls, Arguments&&... arguments)
{
    auto ours = std::make_shared<OurServer<Resource>>(tls, std::forward<Arguments>(arguments)...);
    port = tls == nullptr ? ours->server.Port() : ours->server.EncryptedPort();
    return ours;
}

/// The length of header and body; 0 until the header is complete.
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
    ZuTest::ScratchFolder const folder;
    ZuHost::HttpsCertificate const certificate(ZuHost::HttpsCertificate::OwnFiles{folder / "tls", "127.0.0.1"});
    Tls const tls = certificate.Current();
    ZuTls::Context const client(ZuTls::Side::CLIENT, {});

    ServerContest contest("HttpGet", REQUEST, LengthOf);
    std::string const answer =
        contest.Enter("HostDocument", [](uint16& port) { return StartOurs<Thing>(port, nullptr); });
    std::string const body = answer.substr(answer.find("\r\n\r\n") + 4);
    contest.Enter("Host", [&body](uint16& port) { return StartOurs<Text>(port, nullptr, body); });
    contest.Enter("Beast", [&body](uint16& port) { return StartBeastServer(body, port); });

    ServerContest overTls("HttpGetTls", REQUEST, LengthOf, client.Native());
    overTls.Enter("HostDocument", [&](uint16& port) { return StartOurs<Thing>(port, tls); });
    overTls.Enter("Host", [&](uint16& port) { return StartOurs<Text>(port, tls, body); });
    overTls.Enter("Beast", [&](uint16& port) { return StartBeastServer(body, port, tls->Native()); });

    contest.Run(rounds);
    overTls.Run(rounds);
}
