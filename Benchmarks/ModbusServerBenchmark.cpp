/// Cost of a read of 35 registers to the Modbus server, compared with the server of libmodbus and with a loop that
/// sends a prepared answer.
///
/// usage: ModbusServerBenchmark [ROUNDS]      30 unless told otherwise
/// Figures are CPU nanoseconds of the server per request.

#include "EchoServer.h"
#include "ServerContest.h"

#include "Plugins/Common/TcpServer.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "Plugins/ModbusTcp/RegisterImage.h"

#include <arpa/inet.h>
#include <modbus/modbus.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace
{

using namespace ZuBench;

constexpr uint16 REGISTERS = 35;
constexpr char REQUEST[] = {0, 1, 0, 0, 0, 6, 1, 3, 0, static_cast<char>(150), 0, REGISTERS};
constexpr std::size_t ANSWER_BYTES = 9 + 2 * REGISTERS;

/// The published image, as the plug-in shows it.
class ImageModel final : public ModbusTcp::IRegisterModel
{
public:
    uint32 RegisterCount() const override
    {
        return ModbusTcp::RegisterImage::REGISTER_COUNT;
    }

    void Read(uint16 first, std::span<uint16> registers) override
    {
        image.Read(first, registers);
    }

    ModbusTcp::ModbusException Write(uint16 /*first*/, std::span<uint16 const> /*values*/) override
    {
        return ModbusTcp::ModbusException::ILLEGAL_DATA_ADDRESS;
    }

    ModbusTcp::ModbusException MaskWrite(uint16 /*address*/, uint16 /*andMask*/, uint16 /*orMask*/) override
    {
        return ModbusTcp::ModbusException::ILLEGAL_DATA_ADDRESS;
    }

    uint16 ReadCoils() override
    {
        return 0;
    }

    ModbusTcp::ModbusException WriteCoils(uint16 /*ones*/) override
    {
        return ModbusTcp::ModbusException::ILLEGAL_DATA_ADDRESS;
    }

    ModbusTcp::MapIdentity Identity() override
    {
        return {};
    }

private:
    ModbusTcp::RegisterImage image;
};

struct OurServer
{
    ImageModel model;
    ModbusTcp::ModbusCounters counters;
    PluginCommon::TcpServer server{
        {.displayName = "Modbus TCP",
         .threadName = "ModbusTcp.Io",
         .makeConversation = [this] { return std::make_unique<ModbusTcp::ModbusConversation>(model, counters); },
         .clientsChanged = [](uint64) {}},
        counters};
};

std::shared_ptr<void> StartOurs(uint16& port)
{
    auto ours = std::make_shared<OurServer>();
    ours->server.Start({"127.0.0.1", 0, ServerContest::CLIENTS, 60'000'000});
    port = ours->server.Port();
    return ours;
}

/// One thread with `select`, as in the example of the library.
class LibmodbusServer final
{
public:
    LibmodbusServer()
    {
        context = modbus_new_tcp("127.0.0.1", 0);
        mapping = modbus_mapping_new(0, 0, ModbusTcp::RegisterImage::REGISTER_COUNT, 0);
        listener = modbus_tcp_listen(context, static_cast<int>(ServerContest::CLIENTS));
        if (context == nullptr || mapping == nullptr || listener < 0)
        {
            throw std::runtime_error("libmodbus does not listen");
        }
        std::thread([this] { Serve(); }).detach(); // it ends with the process
    }

    uint16 Port() const
    {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

private:
    void Serve()
    {
        fd_set known;
        FD_ZERO(&known);
        FD_SET(listener, &known);
        int last = listener;
        while (true)
        {
            fd_set ready = known;
            if (select(last + 1, &ready, nullptr, nullptr, nullptr) < 0)
            {
                return;
            }
            for (int socket = 0; socket <= last; ++socket)
            {
                if (!FD_ISSET(socket, &ready))
                {
                    continue;
                }
                if (socket == listener)
                {
                    int const client = accept(listener, nullptr, nullptr);
                    FD_SET(client, &known);
                    last = std::max(last, client);
                }
                else
                {
                    Answer(socket, known);
                }
            }
        }
    }

    void Answer(int socket, fd_set& known)
    {
        uint8 query[MODBUS_TCP_MAX_ADU_LENGTH];
        modbus_set_socket(context, socket);
        int const length = modbus_receive(context, query);
        if (length > 0)
        {
            modbus_reply(context, query, length, mapping);
        }
        else if (length < 0)
        {
            close(socket);
            FD_CLR(socket, &known);
        }
    }

    modbus_t* context = nullptr;
    modbus_mapping_t* mapping = nullptr;
    int listener = -1;
};

std::shared_ptr<void> StartLibmodbus(uint16& port)
{
    auto server = std::make_shared<LibmodbusServer>();
    port = server->Port();
    return server;
}

std::size_t LengthOf(std::string_view begun)
{
    return begun.size() >= 6
               ? 6 + (static_cast<std::size_t>(static_cast<uint8>(begun[4])) << 8) + static_cast<uint8>(begun[5])
               : 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    uint64 const rounds = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 30;
    std::string const request(REQUEST, sizeof REQUEST);
    ServerContest contest("ModbusRead", request, LengthOf);
    std::string const answer = contest.Enter("Server", StartOurs);
    std::string const theirs = contest.Enter("Libmodbus", StartLibmodbus);
    if (answer.size() != ANSWER_BYTES || answer != theirs)
    {
        std::fprintf(stderr, "ModbusServerBenchmark: the servers do not answer the same\n");
        return 1;
    }
    contest.Enter("Least", [&](uint16& port) { return EchoServer::Start(request.size(), answer, port); });
    contest.Run(rounds);
}
