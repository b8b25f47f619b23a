#include "Plugins/AsciiTcp/AsciiServer.h"

#include "Plugins/AsciiTcp/AsciiConnection.h"
#include "Plugins/AsciiTcp/AsciiCounters.h"
#include "Plugins/Common/TcpServer.h"

namespace AsciiTcp
{

using PluginCommon::ITcpConnection;
using PluginCommon::TcpServer;

AsciiServer::AsciiServer(IAsciiService& service, DataFeed& feed, AsciiCounters& counters,
                         std::function<void(uint64)> whenClientsChanged)
    : server(std::make_unique<TcpServer>(
          TcpServer::Service{.displayName = "ASCII over TCP",
                             .threadName = "AsciiTcp.Io",
                             .makeConnection =
                                 [&service, &feed, &counters](auto socket, auto whenEnded) {
                                     return std::make_shared<AsciiConnection>(std::move(socket), service, feed,
                                                                              counters, std::move(whenEnded));
                                 },
                             .clientsChanged = std::move(whenClientsChanged)},
          counters))
{
}

AsciiServer::~AsciiServer() = default;

void AsciiServer::Start(Settings const& settings)
{
    server->Start(settings);
}

void AsciiServer::Apply(Settings const& wanted)
{
    server->Apply(wanted);
}

void AsciiServer::Stop() noexcept
{
    server->Stop();
}

bool AsciiServer::IsRunning() const
{
    return server->IsRunning();
}

std::string AsciiServer::Endpoint() const
{
    return server->Endpoint();
}

void AsciiServer::DataCame()
{
    ToEach([](AsciiConnection& connection) { connection.DataCame(); });
}

void AsciiServer::OperationEnded(uint64 ticket, bool isDone)
{
    ToEach([ticket, isDone](AsciiConnection& connection) { connection.OperationEnded(ticket, isDone); });
}

void AsciiServer::Answered(uint64 ticket, std::string_view line)
{
    ToEach([ticket, kept = std::string(line)](AsciiConnection& connection) { connection.Answered(ticket, kept); });
}

void AsciiServer::Tell(std::string_view line)
{
    ToEach([kept = std::string(line)](AsciiConnection& connection) { connection.Tell(kept); });
}

void AsciiServer::DisconnectAll()
{
    ToEach([](AsciiConnection& connection) { connection.Disconnect(); });
}

void AsciiServer::ToEach(std::function<void(AsciiConnection&)> visit)
{
    server->PostToEach([visit = std::move(visit)](ITcpConnection& connection) {
        visit(static_cast<AsciiConnection&>(connection)); // this server makes no other type
    });
}

} // namespace AsciiTcp
