#include "Plugins/Common/TcpServer.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"
#include "Tests/Plugins/ModbusTcp/TestClient.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace ModbusTcp
{

using Bytes = TestClient::Bytes;
using Registers = TestClient::Registers;

/// Records the client counts that the server reports, and waits for a count.
class ClientCounts final
{
public:
    void Tell(uint64 count)
    {
        std::scoped_lock const guard(mutex);
        told.push_back(count);
        changed.notify_all();
    }

    /// Whether the last reported number becomes `count` within a bound.
    bool Becomes(uint64 count)
    {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, std::chrono::seconds(20), [&] { return !told.empty() && told.back() == count; });
    }

    std::vector<uint64> All()
    {
        std::scoped_lock const guard(mutex);
        return told;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<uint64> told;
};

/// Writable registers that hold their own address. Register 9999 throws.
class EchoModel final : public IRegisterModel
{
public:
    uint32 RegisterCount() const override
    {
        return 10000;
    }

    void Read(uint16 first, std::span<uint16> registers) override
    {
        if (first == 9999)
        {
            throw std::runtime_error("broken register");
        }
        for (std::size_t i = 0; i < registers.size(); ++i)
        {
            registers[i] = static_cast<uint16>(first + i);
        }
    }

    ModbusException Write(uint16, std::span<uint16 const>) override
    {
        return ModbusException::NONE;
    }

    ModbusException MaskWrite(uint16, uint16, uint16) override
    {
        return ModbusException::NONE;
    }

    uint16 ReadCoils() override
    {
        return 0;
    }

    ModbusException WriteCoils(uint16) override
    {
        return ModbusException::NONE;
    }

    MapIdentity Identity() override
    {
        return {};
    }
};

/// The server as the service makes it.
PluginCommon::TcpServer::Service Service(IRegisterModel& model, ModbusCounters& counters,
                                         std::function<void(uint64)> clientsChanged)
{
    return {.displayName = ModbusTcpProtocol::DISPLAY_NAME,
            .threadName = "ModbusTcp.Io",
            .makeConversation = [&model, &counters] { return std::make_unique<ModbusConversation>(model, counters); },
            .clientsChanged = std::move(clientsChanged),
            .writeTimeout = ModbusTcpProtocol::WRITE_TIMEOUT};
}

class ModbusServerTest : public testing::Test
{
protected:
    uint16 Start(uint64 maxClients = 16, uint64 idleTimeoutUsec = 60'000'000)
    {
        server.Start({"127.0.0.1", 0, maxClients, idleTimeoutUsec});
        return server.Port();
    }

    void ExpectServes(TestClient& client)
    {
        EXPECT_EQ(client.Read(150, 2), (Registers{150, 151}));
    }

    void ServeUntilOneIsDropped(TestClient& client)
    {
        auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (counters.droppedClients == 0 && std::chrono::steady_clock::now() < latest)
        {
            ExpectServes(client);
        }
        EXPECT_EQ(counters.droppedClients, 1u);
    }

    EchoModel model;
    ModbusCounters counters;
    ClientCounts counts;
    PluginCommon::TcpServer server{Service(model, counters, [this](uint64 count) { counts.Tell(count); }), counters};
};

TEST_F(ModbusServerTest, TellsThePortThatItTookWhenAnyWillDo)
{
    EXPECT_EQ(server.Endpoint(), "");
    EXPECT_EQ(server.Port(), 0);

    uint16 const port = Start();

    EXPECT_NE(port, 0);
    EXPECT_EQ(server.Endpoint(), "127.0.0.1:" + std::to_string(port));
    EXPECT_TRUE(server.IsRunning());
}

TEST_F(ModbusServerTest, ServesSeveralClientsAndTellsTheirNumber)
{
    uint16 const port = Start();
    {
        TestClient first(port);
        ExpectServes(first);
        TestClient second(port);
        ExpectServes(second);
        ExpectServes(first);
        EXPECT_EQ(counters.clients, 2u);
    }

    EXPECT_TRUE(counts.Becomes(0));
    EXPECT_EQ(counts.All(), (std::vector<uint64>{1, 2, 1, 0}));
    EXPECT_EQ(counters.acceptedClients, 2u);
    EXPECT_EQ(counters.droppedClients, 0u);
}

TEST_F(ModbusServerTest, AnswersEveryUnitUnderItsOwnNumber)
{
    TestClient client(Start());

    client.Send({0, 7, 0, 0, 0, 6, 0xF7, 4, 0, 3, 0, 1});

    EXPECT_EQ(client.Receive(11), (Bytes{0, 7, 0, 0, 0, 5, 0xF7, 4, 2, 0, 3}));
}

TEST_F(ModbusServerTest, AnswersInOrderWhatCameInOnePiece)
{
    TestClient client(Start());

    client.Send({0, 1, 0, 0, 0, 6, 1, 3, 0, 1, 0, 1, 0, 2, 0, 0, 0, 6, 1, 3, 0, 2, 0, 1});

    EXPECT_EQ(client.Receive(22), (Bytes{0, 1, 0, 0, 0, 5, 1, 3, 2, 0, 1, 0, 2, 0, 0, 0, 5, 1, 3, 2, 0, 2}));
}

TEST_F(ModbusServerTest, ClosesTheConnectionThatSendsNoFrameAndNoOther)
{
    uint16 const port = Start();
    TestClient good(port);
    ExpectServes(good);
    TestClient bad(port);

    bad.Send({0, 1, 0, 99, 0, 6});

    EXPECT_TRUE(bad.IsClosedByServer());
    ExpectServes(good);
    EXPECT_EQ(counters.droppedClients, 1u);
}

TEST_F(ModbusServerTest, DropsHalfAFrameFollowedBySilenceAndNoOther)
{
    uint16 const port = Start(16, 300'000);
    TestClient half(port);
    half.Send({0, 1, 0, 0, 0, 6, 1, 3});
    TestClient busy(port);
    std::thread watcher([&] { EXPECT_TRUE(half.IsClosedByServer()); });

    ServeUntilOneIsDropped(busy); // `busy` sends its next request well within the idle time
    watcher.join();

    ExpectServes(busy);
    EXPECT_EQ(counters.droppedClients, 1u);
    EXPECT_TRUE(counts.Becomes(1));
}

TEST_F(ModbusServerTest, DoesNotTakeSingleBytesForALivingClient)
{
    TestClient client(Start(16, 300'000));
    Bytes const request = {0, 1, 0, 0, 0, 6, 1, 3, 0, 1, 0, 1};

    // One byte at a time, each well within the idle time, the whole request well beyond it.
    auto due = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i + 1 < request.size() && counters.droppedClients == 0; ++i)
    {
        client.Send({request[i]});
        std::this_thread::sleep_until(due += std::chrono::milliseconds(80)); // the pace of the client
    }

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(counters.droppedClients, 1u);
    EXPECT_EQ(counters.requests, 0u);
}

TEST_F(ModbusServerTest, ClosesAtOnceWhoComesBeyondTheCap)
{
    uint16 const port = Start(2);
    TestClient first(port);
    ExpectServes(first);
    TestClient second(port);
    ExpectServes(second);

    TestClient third(port);

    EXPECT_TRUE(third.IsClosedByServer());
    EXPECT_EQ(counters.rejectedClients, 1u);
    ExpectServes(first);
    EXPECT_EQ(counts.All(), (std::vector<uint64>{1, 2}));
}

TEST_F(ModbusServerTest, TakesNewLimitsWhileItRuns)
{
    uint16 const port = Start(1);
    TestClient first(port);
    ExpectServes(first);

    server.Apply({"127.0.0.1", 0, 2, 60'000'000});

    TestClient second(port);
    ExpectServes(second);
}

TEST_F(ModbusServerTest, ServesOthersWhileAClientTakesNoAnswers)
{
    uint16 const port = Start();
    TestClient greedy(port);
    Bytes requests;
    for (int i = 0; i < 300; ++i)
    {
        requests.insert(requests.end(), {0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0, 125});
    }
    // The client sends as long as it can and reads nothing, so that all buffers between client and server fill up.
    std::thread sender([&] {
        try
        {
            for (int i = 0; i < 2000; ++i)
            {
                greedy.Send(requests);
            }
        }
        catch (std::runtime_error const&)
        {
            // expected: the server has dropped the client
        }
    });

    TestClient other(port);
    ServeUntilOneIsDropped(other);
    sender.join();
    ExpectServes(other);
}

TEST_F(ModbusServerTest, ClosesTheConnectionWhoseRequestFailsInsideAndServesOn)
{
    uint16 const port = Start();
    TestClient unlucky(port);
    TestClient other(port);

    unlucky.Send({0, 1, 0, 0, 0, 6, 1, 3, 0x27, 0x0F, 0, 1});

    EXPECT_TRUE(unlucky.IsClosedByServer());
    ExpectServes(other);
}

TEST_F(ModbusServerTest, SaysWhichPortIsTaken)
{
    OccupiedPort const taken;

    try
    {
        server.Start({"127.0.0.1", taken.Number(), 16, 1'000'000});
        FAIL() << "the port was free";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -976);
        EXPECT_EQ(std::string(exception.what()), "Modbus TCP cannot listen on 127.0.0.1:" +
                                                     std::to_string(taken.Number()) + ": Address already in use");
    }
    EXPECT_FALSE(server.IsRunning());
}

TEST_F(ModbusServerTest, StartsOnAPortThatHasBecomeFree)
{
    uint16 port = 0;
    {
        OccupiedPort const taken;
        port = taken.Number();
        EXPECT_THROW(server.Start({"127.0.0.1", port, 16, 1'000'000}), Zu::Exception);
    }

    server.Start({"127.0.0.1", port, 16, 60'000'000});

    TestClient client(port);
    ExpectServes(client);
}

struct AddressCase
{
    char const* name;
    char const* address;
    int32 status;
    char const* text;
};

class ModbusServerAddress : public testing::TestWithParam<AddressCase>
{
};

TEST_P(ModbusServerAddress, IsRefusedWithAReason)
{
    EchoModel model;
    ModbusCounters counters;
    PluginCommon::TcpServer server(Service(model, counters, [](uint64) {}), counters);

    try
    {
        server.Start({GetParam().address, 1502, 16, 1'000'000});
        FAIL() << "it listens on " << GetParam().address;
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), GetParam().status);
        EXPECT_STREQ(exception.what(), GetParam().text);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EveryFault, ModbusServerAddress,
    testing::Values(
        AddressCase{"Empty", "", -997, "Modbus TCP cannot listen on :1502: the address is not an IP address"},
        AddressCase{"Name", "plc.example", -997,
                    "Modbus TCP cannot listen on plc.example:1502: the address is not an IP address"},
        AddressCase{"Percent", "%s%n", -997, "Modbus TCP cannot listen on %s%n:1502: the address is not an IP address"},
        AddressCase{"NotOfThisMachine", "192.0.2.1", -997,
                    "Modbus TCP cannot listen on 192.0.2.1:1502: Cannot assign requested address"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ModbusServerTest, ClosesItsClientsWhenItStopsAndCanStartAgain)
{
    TestClient client(Start());
    ExpectServes(client);

    server.Stop();

    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_FALSE(server.IsRunning());
    EXPECT_EQ(counts.All().back(), 0u);
    EXPECT_EQ(counters.clients, 0u);
    server.Stop();
    TestClient again(Start());
    ExpectServes(again);
}

TEST_F(ModbusServerTest, RefusesASecondStart)
{
    Start();

    try
    {
        Start();
        FAIL() << "it started twice";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -1000);
    }
}

TEST_F(ModbusServerTest, ServesManyClientsThatAskAsFastAsTheyCan)
{
    constexpr int CLIENTS = 8;
    constexpr int READS = 300;
    uint16 const port = Start();
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < CLIENTS; ++i)
    {
        threads.emplace_back([&, first = static_cast<uint16>(i * 100)] {
            TestClient client(port);
            for (int read = 0; read < READS; ++read)
            {
                Registers const seen = client.Read(first, 100);
                wrong += seen.front() == first && seen.back() == first + 99 ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(counters.requests, static_cast<uint64>(CLIENTS * READS));
}

} // namespace ModbusTcp
