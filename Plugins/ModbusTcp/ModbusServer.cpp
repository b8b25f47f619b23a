#include "Plugins/ModbusTcp/ModbusServer.h"

#include "Plugins/Common/TcpServer.h"
#include "Plugins/ModbusTcp/ModbusConnection.h"

namespace ModbusTcp
{

using PluginCommon::TcpServer;

ModbusServer::ModbusServer(IRegisterModel& model, ServerCounters& counters,
                           std::function<void(uint64)> whenClientsChanged)
    : server(std::make_unique<TcpServer>(TcpServer::Service{.displayName = "Modbus TCP",
                                                            .threadName = "ModbusTcp.Io",
                                                            .makeConnection =
                                                                [&model, &counters](auto socket, auto whenEnded) {
                                                                    return std::make_shared<ModbusConnection>(
                                                                        std::move(socket), model, counters,
                                                                        std::move(whenEnded));
                                                                },
                                                            .clientsChanged = std::move(whenClientsChanged)},
                                         counters))
{
}

ModbusServer::~ModbusServer() = default;

void ModbusServer::Start(Settings const& settings)
{
    server->Start(settings);
}

void ModbusServer::Stop() noexcept
{
    server->Stop();
}

bool ModbusServer::IsRunning() const
{
    return server->IsRunning();
}

void ModbusServer::Apply(Settings const& wanted)
{
    server->Apply(wanted);
}

std::string ModbusServer::Endpoint() const
{
    return server->Endpoint();
}

uint16 ModbusServer::Port() const
{
    return server->Port();
}

} // namespace ModbusTcp
